// Closed libraries beside the host, and what stands in for them.
#include <string>

#include "platform/livemachine.h"
#include "platform/windows/liveclosedlibraries.h"
#include "platform/windows/winhandle.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class ClosedLibrariesTest : public MachineTest {
  protected:
    ClosedLibrariesTest() { Start(OpenLiveMachine()); }
    static std::u16string HostFolder() {
        wchar_t path[MAX_PATH] = {};
        ::GetModuleFileNameW(nullptr, path, MAX_PATH);
        const std::u16string text(FromWide(path));
        return text.substr(0, text.rfind(u'\\'));
    }
};

TEST_F(ClosedLibrariesTest, PresentOnes_AreCalled) {
    const auto libraries = MakeClosedLibrariesOf(HostFolder() + u"\\closed");
    IHearthRuntime* const runtime = libraries->OpenHearthRuntime();
    ASSERT_NE(runtime, nullptr);
    EXPECT_EQ(runtime->AddRef(), 2U);
    RuntimeRecord record;
    EXPECT_TRUE(runtime->ClassifyApp(nullptr, &record));
    EXPECT_EQ(record.year, 2008U);
    EXPECT_EQ(record.opaque[4159], 9);
    std::uint32_t in = 41, out = 0;
    EXPECT_EQ(runtime->CheckApp(&in, nullptr, &out), 3);
    EXPECT_EQ(out, 42U);
    EXPECT_EQ(runtime->Release(), 1U);
    EXPECT_EQ(runtime->Release(), 0U);

    IProbeIO* const file = libraries->GetProbeIO();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Open(u"?", kGenericRead, 0, 0), -1);
    EXPECT_EQ(file->Open(u"a", kGenericWrite, kShareRead, kCreateAlways), 0x140000003);
    std::uint32_t done = 0;
    char text[8] = {};
    EXPECT_EQ(file->Write(0, "bytes", 5, &done), 0);
    EXPECT_EQ(file->Read(0, text, 8, &done), 0);
    EXPECT_EQ(std::string(text, done), "bytes");
    file->Close(0);
    file->Release();

    std::u16string expanded = u"former";
    EXPECT_TRUE(libraries->ExpandPathMask(u"C:\\a*", expanded, 1));
    EXPECT_EQ(expanded, u"found C:\\a*");
    EXPECT_FALSE(libraries->ExpandPathMask(u"?", expanded, 1));
    EXPECT_EQ(expanded, u"");
    // The texts of the library are given back: the heap would not bear them all.
    const std::u16string large(0x100000, u'x');
    for (int i = 0; i < 3000; ++i) ASSERT_TRUE(libraries->ExpandPathMask(large.c_str(), expanded, 1));
}

TEST_F(ClosedLibrariesTest, AbsentOnes_AreStoodInFor) {
    IClosedLibraries& libraries = CurrentMachine().ClosedLibraries();
    EXPECT_EQ(libraries.OpenHearthRuntime(), nullptr);
    IFileSystem& files = CurrentMachine().Files();
    const std::u16string path = HostFolder() + u"\\closed test.txt";
    IProbeIO* const file = libraries.GetProbeIO();
    ASSERT_NE(file, nullptr);
    EXPECT_NE(file->Open(path.c_str(), kGenericWrite, 0, kCreateAlways), -1);
    std::uint32_t done = 0;
    EXPECT_EQ(file->Write(0, "bytes", 5, &done), 0);
    EXPECT_EQ(file->Release(), 0U) << "closes what is open";
    std::u16string expanded;
    EXPECT_TRUE(libraries.ExpandPathMask((HostFolder() + u"\\closed t*.txt").c_str(), expanded, 1));
    EXPECT_EQ(expanded, path);
    EXPECT_EQ(files.Delete(path.c_str()), kErrorSuccess);
}

}  // namespace
}  // namespace roundup
