// A careless host and the shared library, which is unloaded behind it.
#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>

#include "tests/externfuncinc/flathost.h"
#include "tests/support/machinebuilder.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

TEST(ModuleMisuse, CarelessHost_DoesNoHarmAndUnloads) {
    const TempFolder folder;
    MachineBuilder builder;
    const std::u16string entry = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\FlatTool";
    builder.Text(entry, u"DisplayName", u"Flat Tool")
        .Text(entry, u"DisplayVersion", u"1.0")
        .Text(entry, u"Publisher", u"Otter Works")
        .Text(entry, u"LocalPackage", u"C:\\Windows\\Installer\\1.msi")
        .Text(entry, u"UninstallString", u"C:\\otter\\flat.exe");
    builder.WriteTo(folder.Text() + "/machine");
    // A copy of its own: other tests have the module loaded, with another machine.
    const std::string path = folder.Text() + "/libflat.so";
    std::filesystem::copy_file(ROUNDUP_MODULE, path);
    setenv("ROUNDUP_MACHINE", (folder.Text() + "/machine").c_str(), 1);
    for (int round = 0; round < 2; ++round) {
        void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module, nullptr) << dlerror();
        MisuseModule(reinterpret_cast<decltype(&GetImp)>(dlsym(module, "GetImp")), u"FlatTool");
        EXPECT_EQ(dlclose(module), 0);
        EXPECT_EQ(dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD), nullptr) << "it stays";
    }
    unsetenv("ROUNDUP_MACHINE");
}

}  // namespace
}  // namespace roundup
