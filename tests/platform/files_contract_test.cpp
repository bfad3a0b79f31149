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
            .Reparse(u"C:\\Tool\\circle", u"C:\\Tool\\circle\\again")
            .Volume(u'D', u"FAT32");
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
        {u"c:/TOOL/program.EXE", 0x20, 0},
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
        {u"C:\\Tool\\absent", kInvalidAttributes, 2},
        {u"C:\\absent\\file", kInvalidAttributes, 3},
        {u"C:\\Tool\\read.me\\below", kInvalidAttributes, 3},
        {u"C:\\Tool\\re*d.me", kInvalidAttributes, 123},
        {u"C:\\Tool\\read.me:stream", kInvalidAttributes, 123},
        {u"Tool\\read.me", kInvalidAttributes, 3},
        {u"\\Tool\\read.me", kInvalidAttributes, 3},
        {u"C:Tool\\read.me", kInvalidAttributes, 3},
        {u"C:", kInvalidAttributes, 3},
        {u"", kInvalidAttributes, 3},
        {u"E:\\", kInvalidAttributes, 3},
        {u"D:\\", 0x10, 0},
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
        {u"C:\\Tool\\*.e*", {u"Program.exe"}},
        {u"C:\\Tool\\?????.???", {u".", u"data", u"empty", u"read.me", u"\u00C4rger.TXT"}},
        {u"C:\\Tool\\read.??", {u"read.me"}},
        {u"C:\\Tool\\READ.ME", {u"read.me"}},
        {u"C:\\Tool\\empty\\*", {u".", u".."}},
        {u"C:\\LONGFO~1\\*~1*", {u"long file name.txt"}},
        {u"C:\\LONGFO~1", {u"Long Folder Name"}},
        {u"C:\\Tool\\mounted\\d*", {u"deep"}},
        {u"C:\\Tool\\*x*y", {}, 2},
        {u"C:\\Tool\\absent", {}, 2},
        {u"C:\\Tool\\", {}, 2},
        {u"C:\\", {}, 2},
        {u"C:\\absent\\*", {}, 3},
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

TEST_P(FilesContract, Reading_MovesThePositionAndStopsAtTheEnd) {
    IFileSystem& files = StartKind().Files();
    FileHandle file = kInvalidFile;
    ASSERT_EQ(files.Open(u"C:\\Tool\\Program.exe", kGenericRead, kShareRead, kOpenExisting, file), kErrorSuccess);
    char bytes[8] = {};
    std::uint32_t done = 0;
    EXPECT_EQ(files.Read(file, bytes, 2, done), kErrorSuccess);
    EXPECT_EQ(std::string(bytes, done), "MZ");
    EXPECT_EQ(files.Read(file, bytes, 8, done), kErrorSuccess);
    EXPECT_EQ(std::string(bytes, done), "123");
    EXPECT_EQ(files.Read(file, bytes, 8, done), kErrorSuccess);
    EXPECT_EQ(done, 0U);
    EXPECT_EQ(files.SetPosition(file, 1), kErrorSuccess);
    EXPECT_EQ(files.Read(file, bytes, 1, done), kErrorSuccess);
    EXPECT_EQ(bytes[0], 'Z');
    std::uint64_t size = 0;
    EXPECT_EQ(files.GetSize(file, size), kErrorSuccess);
    EXPECT_EQ(size, 5U);
    EXPECT_EQ(files.Write(file, bytes, 1, done), kErrorAccessDenied);
    files.Close(file);
    EXPECT_EQ(files.Read(file, bytes, 1, done), kErrorInvalidHandle);
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

TEST_P(FilesContract, Dispositions_DoAsTheyAreTold) {
    IFileSystem& files = StartKind().Files();
    for (const std::u16string& folder : {std::u16string(u"C:\\Tool\\"), TempPath(u"")}) {
        const std::u16string path = folder + u"roundup-new.tmp";
        SCOPED_TRACE(::testing::PrintToString(path));
        (void)files.Delete(path.c_str());
        EXPECT_EQ(WriteFile(files, path, kOpenExisting, "a"), kErrorFileNotFound);
        EXPECT_EQ(WriteFile(files, path, kCreateNew, "abc"), kErrorSuccess);
        EXPECT_EQ(WriteFile(files, path, kCreateNew, "a"), kErrorFileExists);
        EXPECT_EQ(WriteFile(files, path, kOpenAlways, "x"), kErrorSuccess);
        EXPECT_EQ(ReadFile(files, path), "xbc");
        EXPECT_EQ(WriteFile(files, folder + u"ROUNDUP-NEW.TMP", kCreateAlways, "new"), kErrorSuccess);
        EXPECT_EQ(ReadFile(files, path), "new");
        EXPECT_EQ(WriteFile(files, path, 5, "a"), kErrorInvalidParameter);
        EXPECT_EQ(files.Delete(path.c_str()), kErrorSuccess);
        EXPECT_EQ(files.Delete(path.c_str()), kErrorFileNotFound);
        EXPECT_EQ(ReadFile(files, path), "error 2");
    }
}

TEST_P(FilesContract, Folders_AreNoFiles) {
    IFileSystem& files = StartKind().Files();
    EXPECT_EQ(ReadFile(files, u"C:\\Tool"), "error 5");
    EXPECT_EQ(WriteFile(files, u"C:\\Tool", kCreateAlways, "a"), kErrorAccessDenied);
    EXPECT_EQ(files.Delete(u"C:\\Tool\\empty"), kErrorAccessDenied);
    EXPECT_EQ(WriteFile(files, u"C:\\absent\\file", kCreateAlways, "a"), kErrorPathNotFound);
    EXPECT_EQ(files.CreateDirectory(u"C:\\Tool\\empty"), kErrorAlreadyExists);
    EXPECT_EQ(files.CreateDirectory(u"C:\\absent\\below"), kErrorPathNotFound);
    EXPECT_EQ(files.CreateDirectory(u"C:\\Tool\\fresh"), kErrorSuccess);
    EXPECT_EQ(WriteFile(files, u"C:\\Tool\\Fresh\\one", kCreateNew, "1"), kErrorSuccess);
    EXPECT_EQ(List(files, u"C:\\Tool\\fresh\\*"), (Names{u".", u"..", u"one"}));
    EXPECT_EQ(List(files, u"C:\\Tool\\f*"), Names{u"fresh"});
}

TEST_P(FilesContract, DeletedFile_IsGoneAndMayComeAgain) {
    IFileSystem& files = StartKind().Files();
    EXPECT_EQ(files.Delete(u"C:\\tool\\read.me"), kErrorSuccess);
    EXPECT_EQ(files.GetAttributes(u"C:\\Tool\\read.me"), kInvalidAttributes);
    EXPECT_EQ(List(files, u"C:\\Tool\\r*"), Names{});
    EXPECT_EQ(WriteFile(files, u"C:\\Tool\\Read.Me", kCreateNew, "again"), kErrorSuccess);
    EXPECT_EQ(List(files, u"C:\\Tool\\r*"), Names{u"Read.Me"});
}

TEST_P(FilesContract, Sharing_IsAskedForByBothSides) {
    struct Case {
        std::uint32_t firstAccess, firstShare, access, share;
        Win32Error error;
    };
    const Case cases[] = {
        {kGenericRead, kShareRead, kGenericRead, kShareRead, kErrorSuccess},
        {kGenericRead, 0, kGenericRead, kShareRead, kErrorSharingViolation},
        {kGenericRead, kShareRead, kGenericWrite, kShareRead, kErrorSharingViolation},
        {kGenericWrite, kShareRead | kShareWrite, kGenericWrite, kShareRead | kShareWrite, kErrorSuccess},
        {kGenericWrite, kShareRead | kShareWrite, kGenericRead, kShareRead, kErrorSharingViolation},
    };
    IFileSystem& files = StartKind().Files();
    for (const Case& one : cases) {
        FileHandle first = kInvalidFile;
        FileHandle second = kInvalidFile;
        ASSERT_EQ(files.Open(u"C:\\Tool\\noending", one.firstAccess, one.firstShare, kOpenExisting, first), 0U);
        EXPECT_EQ(files.Open(u"C:\\TOOL\\noending", one.access, one.share, kOpenExisting, second), one.error);
        EXPECT_EQ(files.Delete(u"C:\\Tool\\noending"), kErrorSharingViolation);
        files.Close(first);
        if (one.error == kErrorSuccess) files.Close(second);
    }
    EXPECT_EQ(files.Delete(u"C:\\Tool\\noending"), kErrorSuccess);
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

TEST_P(FilesContract, Volumes_TellTheirFileSystem) {
    IFileSystem& files = StartKind().Files();
    char16_t name[16] = {};
    EXPECT_EQ(files.GetVolumeFileSystem(u"c:\\", name, 16), kErrorSuccess);
    EXPECT_EQ(std::u16string_view(name), u"NTFS");
    EXPECT_EQ(files.GetVolumeFileSystem(u"D:\\", name, 16), kErrorSuccess);
    EXPECT_EQ(std::u16string_view(name), u"FAT32");
    EXPECT_EQ(files.GetVolumeFileSystem(u"D:\\", name, 5), kErrorMoreData);
    EXPECT_EQ(files.GetVolumeFileSystem(u"E:\\", name, 16), kErrorPathNotFound);
    EXPECT_EQ(files.GetVolumeFileSystem(u"C:\\Tool", name, 16), kErrorPathNotFound);
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
