// Files, and the process's place, on every machine: the tests bring along what they ask for, in the temporary folder.
#include <cerrno>

#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

using Names = std::vector<std::u16string>;

class ScratchContract : public ContractTest {
  protected:
    void SetUp() override {
        m_files = &StartKind().Files();
        m_folder = TempPath(u"roundup-scratch\\");
        (void)m_files->CreateDirectory(m_folder.c_str());
        for (const char16_t* folder : {u"data", u"data\\Deep", u"empty"})
            (void)m_files->CreateDirectory(At(folder).c_str());
        for (const char16_t* file :
             {u"Tool.exe", u"read.me", u"_first", u"[x]", u"noending", u"data\\Deep\\leaf.txt"}) {
            ASSERT_EQ(WriteFile(*m_files, At(file).c_str(), kCreateAlways, "12345"), kErrorSuccess);
        }
        (void)m_files->Delete(At(u"new.tmp").c_str());
    }
    // A path below the folder; one that has a drive already stays.
    std::u16string At(const char16_t* path) const {
        const std::u16string_view text(path);
        return text.find(u':') == 1 ? std::u16string(text) : m_folder + path;
    }

    IFileSystem* m_files = nullptr;
    std::u16string m_folder;
};

TEST_P(ScratchContract, Attributes_TellWhyThereAreNone) {
    struct Case {
        const char16_t* path;
        Win32Error error;
        bool folder = false;
        std::uint64_t size = 5;
    };
    const Case cases[] = {
        {u"Tool.exe", 0},        {u"TOOL.EXE", 0},          {u"data", 0, true, 0},
        {u"data\\", 0, true, 0}, {u"data\\..\\read.me", 0}, {u".\\data//deep/LEAF.txt", 0},
        {u"absent", 2},          {u"absent\\file", 3},      {u"read.me\\below", 3},
        {u"re*d.me", 123},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.path));
        const std::u16string path = At(one.path);
        FileInfo info;
        EXPECT_EQ(m_files->GetInfo(path.c_str(), info), one.error);
        const std::uint32_t attributes = m_files->GetAttributes(path.c_str());
        if (one.error != 0) {
            EXPECT_EQ(attributes, kInvalidAttributes);
            EXPECT_EQ(CurrentMachine().System().GetLastFailure(), one.error);
            continue;
        }
        EXPECT_EQ((attributes & kAttributeDirectory) != 0, one.folder);
        EXPECT_EQ(info.attributes, attributes);
        EXPECT_EQ(info.size, one.size);
    }
}

TEST_P(ScratchContract, FindFirst_ListsByUpperCaseOrTellsWhyNothingIsFound) {
    struct Case {
        const char16_t* pattern;
        Names names;
        Win32Error error = 0;
    };
    const Case cases[] = {
        {u"*", {u".", u"..", u"data", u"empty", u"noending", u"read.me", u"Tool.exe", u"[x]", u"_first"}},
        {u"*.exe", {u"Tool.exe"}},
        {u"READ.??", {u"read.me"}},
        {u"empty\\*", {u".", u".."}},
        {u"data\\d*", {u"Deep"}},
        {u"*x*y", {}, 2},
        {u"absent", {}, 2},
        {u"absent\\*", {}, 3},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.pattern));
        const std::u16string pattern = At(one.pattern);
        EXPECT_EQ(List(*m_files, pattern.c_str()), one.names);
        FindHandle find = 0;
        FindData data;
        EXPECT_EQ(m_files->FindFirst(pattern.c_str(), find, data), one.error);
        EXPECT_EQ(find == kInvalidFile, one.error != 0);
        if (one.error == 0) m_files->FindClose(find);
    }
}

TEST_P(ScratchContract, OpenFiles_KeepPositionSharingAndEnd) {
    const std::u16string path = At(u"Tool.exe");
    FileHandle file = kInvalidFile, second = 0;
    ASSERT_EQ(m_files->Open(path.c_str(), kGenericRead | kGenericWrite, kShareRead, kOpenExisting, file), 0U);
    EXPECT_EQ(m_files->Open(path.c_str(), kGenericRead, 0, kOpenExisting, second), kErrorSharingViolation);
    EXPECT_EQ(second, kInvalidFile);
    char bytes[8] = {};
    std::uint32_t done = 0;
    EXPECT_EQ(m_files->SetPosition(file, 3), kErrorSuccess);
    errno = ENOENT;  // of before: the end of a file is no error
    EXPECT_EQ(m_files->Read(file, bytes, 8, done), kErrorSuccess);
    EXPECT_EQ(std::string(bytes, done), "45");
    EXPECT_EQ(m_files->Read(file, bytes, 8, done), kErrorSuccess);
    EXPECT_EQ(done, 0U);
    EXPECT_EQ(m_files->SetPosition(file, 1), kErrorSuccess);
    EXPECT_EQ(m_files->Write(file, "xy", 2, done), kErrorSuccess);
    EXPECT_EQ(m_files->SetEnd(file), kErrorSuccess);
    std::uint64_t size = 0;
    EXPECT_EQ(m_files->GetSize(file, size), kErrorSuccess);
    EXPECT_EQ(size, 3U);
    m_files->Close(file);
    EXPECT_EQ(ReadFile(*m_files, path.c_str()), "1xy");
    ASSERT_EQ(m_files->Open(path.c_str(), kGenericRead, kShareRead, kOpenExisting, file), 0U);
    EXPECT_EQ(m_files->Write(file, "xy", 2, done), kErrorAccessDenied);
    m_files->Close(file);
}

TEST_P(ScratchContract, Dispositions_DoAsTheyAreTold) {
    const std::u16string path = At(u"new.tmp");
    const char16_t* name = path.c_str();
    EXPECT_EQ(WriteFile(*m_files, name, kOpenExisting, "a"), kErrorFileNotFound);
    EXPECT_EQ(WriteFile(*m_files, name, kCreateNew, "abc"), kErrorSuccess);
    EXPECT_EQ(WriteFile(*m_files, name, kCreateNew, "a"), kErrorFileExists);
    EXPECT_EQ(WriteFile(*m_files, name, kOpenAlways, "x"), kErrorSuccess);
    EXPECT_EQ(ReadFile(*m_files, name), "xbc");
    EXPECT_EQ(WriteFile(*m_files, name, kCreateAlways, "new"), kErrorSuccess);
    EXPECT_EQ(m_files->Delete(name), kErrorSuccess);
    EXPECT_EQ(m_files->Delete(name), kErrorFileNotFound);
    EXPECT_EQ(ReadFile(*m_files, name), "error 2");
    EXPECT_EQ(ReadFile(*m_files, At(u"data").c_str()), "error 5");
    EXPECT_EQ(m_files->Delete(At(u"empty").c_str()), kErrorAccessDenied);
    EXPECT_EQ(WriteFile(*m_files, At(u"absent\\file").c_str(), kCreateAlways, "a"), kErrorPathNotFound);
    EXPECT_EQ(m_files->CreateDirectory(At(u"empty").c_str()), kErrorAlreadyExists);
    EXPECT_EQ(m_files->CreateDirectory(At(u"absent\\below").c_str()), kErrorPathNotFound);
}

TEST_P(ScratchContract, PathForms_TellTheSizeThatTheyNeed) {
    const std::u16string path = At(u"DATA\\..\\data\\DEEP");
    char16_t buffer[300] = {};
    const std::uint32_t full = m_files->GetFullPath(path.c_str(), buffer, 300);
    EXPECT_EQ(std::u16string_view(buffer, full), m_folder + u"data\\DEEP");
    const std::u16string shown(buffer, full);
    const std::uint32_t length = m_files->GetLongPath(shown.c_str(), buffer, 300);
    EXPECT_TRUE(std::u16string_view(buffer, length).ends_with(u"roundup-scratch\\data\\Deep"));
    EXPECT_EQ(m_files->GetLongPath(shown.c_str(), buffer, 5), length + 1);
    EXPECT_EQ(m_files->GetLongPath(At(u"absent").c_str(), buffer, 300), 0U);
    EXPECT_NE(m_files->GetShortPath(shown.c_str(), buffer, 300), 0U);
    std::uint32_t done = 0;
    EXPECT_EQ(m_files->ReadReparsePoint(At(u"data").c_str(), buffer, 600, done), kErrorNotAReparsePoint);
    EXPECT_EQ(m_files->ReadReparsePoint(At(u"absent").c_str(), buffer, 600, done), kErrorFileNotFound);
    EXPECT_EQ(m_files->GetVolumeFileSystem(m_folder.substr(0, 3).c_str(), buffer, 300), kErrorSuccess);
}

TEST_P(ScratchContract, Texts_TellTheSizeThatTheyNeed) {
    ISystem& system = CurrentMachine().System();
    using Ask = std::uint32_t (ISystem::*)(char16_t*, std::uint32_t);
    for (const Ask ask : {&ISystem::GetComputerName, &ISystem::GetHostExecutable, &ISystem::GetTempFolder,
                          &ISystem::GetWindowsFolder}) {
        char16_t text[300] = {};
        const std::uint32_t length = (system.*ask)(text, 300);
        ASSERT_NE(length, 0U);
        EXPECT_EQ(std::char_traits<char16_t>::length(text), length);
        EXPECT_EQ((system.*ask)(text, length), length + 1);
        EXPECT_EQ((system.*ask)(text, length + 1), length);
    }
    char16_t folder[300] = {};
    EXPECT_EQ(folder[system.GetTempFolder(folder, 300)], u'\0');
    EXPECT_TRUE(std::u16string_view(folder).ends_with(u'\\'));
    EXPECT_NE(m_files->GetAttributes(folder) & kAttributeDirectory, 0U);
    char16_t root[300] = {};
    EXPECT_EQ(system.ExpandEnvironment(u"%SystemRoot%", root, 300), system.GetWindowsFolder(folder, 300) + 1);
    EXPECT_EQ(system.GetEnvironment(u"systemROOT", root, 2), system.GetEnvironment(u"SystemRoot", root, 300) + 1);
    EXPECT_EQ(system.GetEnvironment(u"RoundupAbsent", root, 300), 0U);
}

INSTANTIATE_TEST_SUITE_P(Machines, ScratchContract, ::testing::ValuesIn(AllMachineKinds()), KindName);

}  // namespace
}  // namespace roundup
