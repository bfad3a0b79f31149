// Reads arbitrary bytes as the two files in which applications tell where the data of their users is.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "tests/support/machinebuilder.h"

namespace {

using namespace roundup;

constexpr const char16_t* kProfiles = u"C:\\Users\\User\\AppData\\Roaming\\.minecraft\\launcher_profiles.json";
constexpr const char16_t* kPreferences = u"C:\\Users\\User\\AppData\\Roaming\\Thunderbird\\p\\prefs.js";

Machine& TheMachine() {
    static const std::unique_ptr<Machine> machine = [] {
        MachineBuilder builder;
        builder.File(kProfiles).File(kPreferences).Folder(u"D:\\Games");
        builder.File(u"C:\\Users\\User\\AppData\\Roaming\\Thunderbird\\profiles.ini", "[Profile0]\nPath=p\n");
        return builder.Build();
    }();
    static const MachineScope scope(*machine);
    return *machine;
}

void Write(const char16_t* path, const std::uint8_t* data, std::size_t size) {
    IFileSystem& files = TheMachine().Files();
    FileHandle file = kInvalidFile;
    std::uint32_t done = 0;
    if (files.Open(path, kGenericWrite, 0, kCreateAlways, file) != kErrorSuccess) std::abort();
    if (files.Write(file, data, static_cast<std::uint32_t>(size), done) != kErrorSuccess) std::abort();
    files.Close(file);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Write(kProfiles, data, size);
    Write(kPreferences, data, size);
    const CApp app;
    CAppRuleSet rules;
    if (Failed(LocateMinecraft(app, rules)) || Failed(LocateThunderbird(app, rules))) std::abort();
    for (const OwnedString& folder : rules.IncludedDirectories) {
        if (folder.IsEmpty() || folder.Length() > 1023) std::abort();
    }
    return 0;
}
