#include <cstring>

#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

using Names = std::vector<std::u16string>;

class FilesContract : public ContractTest {
  protected:
    void SetUp() override {
        builder.File(u"C:\\Tool\\Program.exe", "MZ123")
            .File(u"C:\\Tool\\read.me", "text")
            .File(u"C:\\Tool\\noending", "")
            .File(u"C:\\Tool\\data\\deep\\leaf.txt", "leaf")
            .File(u"C:\\Tool\\\u00C4rger.TXT", "umlaut")
            .Folder(u"C:\\Tool\\empty")
            .Folder(u"C:\\Long Folder Name")
            .File(u"C:\\Long Folder Name\\long file name.txt", "long")
            .Short(u"C:\\Long Folder Name\\long file name.txt", u"C:\\LONGFO~1\\LONGFI~1.TXT")
            .Attributes(u"C:\\Tool\\read.me", 0x22)
            .Reparse(u"C:\\Tool\\mounted", u"C:\\Tool\\data")
            .Reparse(u"C:\\Tool\\circle", u"C:\\Tool\\circle\\again");
    }
};

TEST_P(FilesContract, Attributes_FollowPathRules) {
    struct Case {
        const char16_t* path;
        std::uint32_t attributes;  // kInvalidAttributes: error tells why
        Win32Error error;
    };
    const Case cases[] = {
        {u"C:\\Tool\\Program.exe", 0x20, 0},
        {u"C:\\Tool\\\u00E4RGER.txt", 0x20, 0},
        {u"C:\\\\Tool\\\\.\\data\\..\\Program.exe", 0x20, 0},
        {u"C:\\..\\..\\Tool", 0x10, 0},
        {u"C:\\", 0x10, 0},
        {u"\\\\?\\C:\\Tool\\read.me", 0x22, 0},
        {u"\\\\?\\C:\\Tool\\.\\read.me", kInvalidAttributes, 3},
        {u"\\\\?\\C:\\Tool/read.me", kInvalidAttributes, 123},
        {u"C:\\Tool\\read.me. .", 0x22, 0},
        {u"C:\\Tool.\\read.me", 0x22, 0},
        {u"C:\\Tool \\read.me", kInvalidAttributes, 3},
        {u"C:\\Tool\\", 0x10, 0},
        {u"C:\\Tool\\read.me\\", kInvalidAttributes, 123},
        {u"C:\\absent\\file", kInvalidAttributes, 3},
        {u"C:\\Tool\\read.me\\below", kInvalidAttributes, 3},
        {u"C:\\Tool\\re*d.me", kInvalidAttributes, 123},
        {u"Tool\\read.me", kInvalidAttributes, 3},
        {u"C:", kInvalidAttributes, 3},
        {u"E:\\", kInvalidAttributes, 3},
        {u"\\\\server\\share\\file", kInvalidAttributes, 3},
        {u"C:\\Tool\\mounted", 0x410, 0},
        {u"C:\\Tool\\mounted\\deep\\leaf.txt", 0x20, 0},
        {u"C:\\Tool\\circle", 0x410, 0},
        {u"C:\\Tool\\circle\\x", kInvalidAttributes, 1920},
        {u"C:\\longfo~1\\longfi~1.txt", 0x20, 0},
        {u"C:\\Long Folder Name\\LONGFI~1.TXT", 0x20, 0},
    };
    IFileSystem& files = StartKind().Files();
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.path));
        EXPECT_EQ(files.GetAttributes(one.path), one.attributes);
        if (one.error != 0) {
            EXPECT_EQ(CurrentMachine().System().GetLastFailure(), one.error);
        }
        FileInfo info;
        EXPECT_EQ(files.GetInfo(one.path, info), one.error);
    }
}

TEST_P(FilesContract, FindFirst_ListsByUpperCaseOrTellsWhyNothingIsFound) {
    const Names all = {u".",       u"..",       u"circle",      u"data",    u"empty",
                       u"mounted", u"noending", u"Program.exe", u"read.me", u"\u00C4rger.TXT"};
    struct Case {
        const char16_t* pattern;
        Names names;
        Win32Error error = 0;
    };
    const Case cases[] = {
        {u"C:\\Tool\\*", all},
        {u"C:\\Tool\\*.*", all},
        {u"C:\\Tool\\*.", {u"circle", u"data", u"empty", u"mounted", u"noending"}},
        {u"C:\\Tool\\?????.???", {u".", u"data", u"empty", u"read.me", u"\u00C4rger.TXT"}},
        {u"C:\\LONGFO~1\\*~1*", {u"long file name.txt"}},
        {u"C:\\LONGFO~1", {u"Long Folder Name"}},
        {u"C:\\Tool\\mounted\\d*", {u"deep"}},
        {u"C:\\Tool\\", {}, 2},
        {u"C:\\", {}, 2},
        {u"C:\\Tool\\read.me\\*", {}, 3},
        {u"C:\\Tool\\mounted\\no\\*", {}, 3},
        {u"E:\\*", {}, 3},
        {u"*", {}, 3},
        {u"C:\\Tool\\<bad>*", {}, 123},
        {u"C:\\Tool\\circle\\*", {}, 1920},
    };
    IFileSystem& files = StartKind().Files();
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.pattern));
        EXPECT_EQ(List(files, one.pattern), one.names);
        FindHandle find = 0;
        FindData data;
        EXPECT_EQ(files.FindFirst(one.pattern, find, data), one.error);
        EXPECT_EQ(find == kInvalidFile, one.error != 0);
        if (one.error == 0) files.FindClose(find);
    }
}

TEST_P(FilesContract, Writing_ShadowsTheFileAndKeepsItsName) {
    IFileSystem& files = StartKind().Files();
    FileHandle file = kInvalidFile;
    ASSERT_EQ(files.Open(u"C:\\TOOL\\PROGRAM.EXE", kGenericRead | kGenericWrite, kShareRead, kOpenExisting, file),
              kErrorSuccess);
    std::uint32_t done = 0;
    ASSERT_EQ(files.SetPosition(file, 2), kErrorSuccess);
    ASSERT_EQ(files.Write(file, "xy", 2, done), kErrorSuccess);
    ASSERT_EQ(files.SetEnd(file), kErrorSuccess);
    files.Close(file);
    EXPECT_EQ(ReadFile(files, u"C:\\Tool\\Program.exe"), "MZxy");
    EXPECT_EQ(List(files, u"C:\\Tool\\prog*"), Names{u"Program.exe"});
    FileInfo info;
    EXPECT_EQ(files.GetInfo(u"C:\\Tool\\Program.exe", info), kErrorSuccess);
    EXPECT_EQ(info.size, 4U);
}

TEST_P(FilesContract, PathForms_KeepWhatHasNoOtherName) {
    struct Case {
        const char16_t* path;
        const char16_t* longPath;
        const char16_t* shortPath;
        const char16_t* fullPath;
    };
    const Case cases[] = {
        {u"c:\\longfo~1\\longfi~1.txt", u"c:\\Long Folder Name\\long file name.txt", u"c:\\LONGFO~1\\LONGFI~1.TXT",
         u"c:\\longfo~1\\longfi~1.txt"},
        {u"C:/long folder name/", u"C:/Long Folder Name/", u"C:/LONGFO~1/", u"C:\\long folder name\\"},
        {u"C:\\tool\\program.exe", u"C:\\Tool\\Program.exe", u"C:\\tool\\program.exe", u"C:\\tool\\program.exe"},
        {u"C:\\Tool\\.\\data\\..\\empty. ", u"C:\\Tool\\empty", u"C:\\Tool\\empty", u"C:\\Tool\\empty"},
        {u"C:\\absent\\x", u"", u"", u"C:\\absent\\x"},
        {u"\\\\.\\C:\\absent\\..\\x", u"", u"", u"\\\\.\\C:\\x"},
        {u"relative", u"", u"", u""},
        {u"\\\\server\\share\\..\\x\\", u"", u"", u"\\\\server\\share\\x\\"},
        {u"C:\\", u"C:\\", u"C:\\", u"C:\\"},
    };
    IFileSystem& files = StartKind().Files();
    const auto check = [](std::u16string_view expected, std::uint32_t length, const char16_t* buffer) {
        EXPECT_EQ(length, expected.size());
        EXPECT_EQ(length != 0 ? std::u16string_view(buffer) : std::u16string_view(), expected);
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(::testing::PrintToString(one.path));
        char16_t buffer[260] = {};
        check(one.longPath, files.GetLongPath(one.path, buffer, 260), buffer);
        check(one.shortPath, files.GetShortPath(one.path, buffer, 260), buffer);
        check(one.fullPath, files.GetFullPath(one.path, buffer, 260), buffer);
    }
    char16_t small[5] = u"keep";
    EXPECT_EQ(files.GetLongPath(u"C:\\Tool", small, 5), 8U);
    EXPECT_EQ(std::u16string_view(small), u"keep");
}

TEST_P(FilesContract, ReparsePoint_IsAMountPointBuffer) {
    IFileSystem& files = StartKind().Files();
    alignas(8) unsigned char data[256] = {};
    std::uint32_t done = 0;
    ASSERT_EQ(files.ReadReparsePoint(u"C:\\Tool\\mounted", data, sizeof data, done), kErrorSuccess);
    // Tag, length, reserved, substitute name at 0 with 32 bytes, shown name behind it with 24 bytes, the names.
    const unsigned char head[16] = {0x03, 0, 0, 0xA0, 60 + 8, 0, 0, 0, 0, 0, 32, 0, 34, 0, 24, 0};
    EXPECT_EQ(std::memcmp(data, head, sizeof head), 0);
    EXPECT_EQ(done, 8U + 68U);
    EXPECT_EQ(std::memcmp(data + 16, u"\\??\\C:\\Tool\\data\0C:\\Tool\\data\0", 60), 0);
    EXPECT_EQ(files.ReadReparsePoint(u"C:\\Tool\\data", data, sizeof data, done), kErrorNotAReparsePoint);
    EXPECT_EQ(files.ReadReparsePoint(u"C:\\Tool\\none", data, sizeof data, done), kErrorFileNotFound);
    EXPECT_EQ(files.ReadReparsePoint(u"C:\\Tool\\mounted", data, 20, done), kErrorMoreData);
}

TEST_P(FilesContract, VeryLongPaths_AreAbsentOrNoPath) {
    IFileSystem& files = StartKind().Files();
    for (const std::size_t length : {260U, 520U, 32767U}) {
        std::u16string path = u"C:\\Tool\\" + std::u16string(length - 8, u'x');
        EXPECT_EQ(files.GetAttributes(path.c_str()), kInvalidAttributes);
        EXPECT_EQ(CurrentMachine().System().GetLastFailure(), kErrorFileNotFound);
        path = u"C:";
        while (path.size() + 2 <= length) path += u"\\x";
        EXPECT_EQ(files.GetAttributes(path.c_str()), kInvalidAttributes);
        EXPECT_EQ(CurrentMachine().System().GetLastFailure(), kErrorPathNotFound);
        std::u16string roundabout = u"C:";
        while (roundabout.size() + 12 <= length) roundabout += u"\\Tool\\..";
        EXPECT_EQ(files.GetAttributes((roundabout + u"\\Tool").c_str()), 0x10U);
    }
    const std::u16string tooLong(32768, u'x');
    EXPECT_EQ(files.GetAttributes((u"C:\\" + tooLong).c_str()), kInvalidAttributes);
    EXPECT_EQ(CurrentMachine().System().GetLastFailure(), kErrorInvalidName);
}

INSTANTIATE_TEST_SUITE_P(Machines, FilesContract, ::testing::Values(MachineKind::InMemory, MachineKind::RecordedFolder),
                         KindName);

}  // namespace
}  // namespace roundup
