// What only a machine in memory can have: denied and read-only files, a disk that gets full, real folders.
#include "tests/support/machinetest.h"
#include "tests/support/tempfolder.h"

namespace roundup {
namespace {

class MemoryMachine : public MachineTest {
  protected:
    static Win32Error Open(IFileSystem& files, const char16_t* path, std::uint32_t access) {
        FileHandle file = kInvalidFile;
        const Win32Error error = files.Open(path, access, kShareRead, kOpenExisting, file);
        if (error == kErrorSuccess) files.Close(file);
        return error;
    }
};

TEST_F(MemoryMachine, DeniedAndReadOnlyFiles_AnswerError5) {
    builder.File(u"C:\\denied.txt", "x").File(u"C:\\fixed.txt", "x").Folder(u"C:\\closed");
    builder.DenyFile(u"C:\\denied.txt").ReadOnlyFile(u"C:\\fixed.txt").DenyFile(u"C:\\closed");
    IFileSystem& files = Start().Files();
    EXPECT_EQ(files.GetAttributes(u"C:\\denied.txt"), 0x20U);
    EXPECT_EQ(files.GetAttributes(u"C:\\fixed.txt"), 0x21U);
    EXPECT_EQ(Open(files, u"C:\\denied.txt", kGenericRead), kErrorAccessDenied);
    EXPECT_EQ(Open(files, u"C:\\fixed.txt", kGenericRead), kErrorSuccess);
    EXPECT_EQ(Open(files, u"C:\\fixed.txt", kGenericWrite), kErrorAccessDenied);
    EXPECT_EQ(files.Delete(u"C:\\fixed.txt"), kErrorAccessDenied);
    EXPECT_EQ(files.Delete(u"C:\\denied.txt"), kErrorAccessDenied);
    FindHandle find = kInvalidFile;
    FindData data;
    EXPECT_EQ(files.FindFirst(u"C:\\closed\\*", find, data), kErrorAccessDenied);
}

TEST_F(MemoryMachine, FullDisk_FailsWritesToDrivesAndRealFolders) {
    const TempFolder folder;
    builder.RealTempFolder(folder.Text()).WriteLimit(10);
    IFileSystem& files = Start().Files();
    for (const char16_t* path : {u"C:\\a", u"C:\\Users\\User\\AppData\\Local\\Temp\\b"}) {
        FileHandle file = kInvalidFile;
        std::uint32_t done = 0;
        ASSERT_EQ(files.Open(path, kGenericWrite, 0, kCreateNew, file), kErrorSuccess);
        EXPECT_EQ(files.Write(file, "12345", 5, done), kErrorSuccess);
        EXPECT_EQ(files.Write(file, "123456", 6, done), kErrorDiskFull);
        EXPECT_EQ(done, 0U);
        files.Close(file);
    }
    EXPECT_EQ(folder.Read("b"), "12345");
}

TEST_F(MemoryMachine, GroupsAndAccounts_AreThoseOfTheSettings) {
    builder.Group(u"Administrators", {u"BOX\\Ann", u"BOX\\Bob"}).Group(u"Guests", {});
    builder.File(u"C:\\Data\\base.mdf").Accounts(u"C:\\Data\\base.mdf", {u"Ann", u"SYSTEM"});
    builder.Key(u"HKLM\\SOFTWARE\\Wow6432Node\\Base").Accounts(u"MACHINE\\SOFTWARE\\WOW6432Node\\Base", {u"Bob"});
    Machine& machine = Start();
    ISecurity& security = machine.Security();
    std::vector<std::u16string> names;
    EXPECT_EQ(security.GetLocalGroups(names), kErrorSuccess);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"Administrators", u"Guests"}));
    EXPECT_EQ(security.GetGroupMembers(u"administrators", names), kErrorSuccess);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"BOX\\Ann", u"BOX\\Bob"}));
    EXPECT_EQ(security.GetGroupMembers(u"absent", names), 1376U);
    EXPECT_EQ(security.GetFileAccounts(u"c:/data/BASE.mdf", names), kErrorSuccess);
    EXPECT_EQ(names, (std::vector<std::u16string>{u"Ann", u"SYSTEM"}));
    EXPECT_EQ(security.GetFileAccounts(u"C:\\Data", names), kErrorSuccess);
    EXPECT_TRUE(names.empty());
    EXPECT_EQ(security.GetFileAccounts(u"C:\\none", names), kErrorFileNotFound);
    KeyHandle key = 0;
    ASSERT_EQ(machine.Registry().OpenKey(kHkeyLocalMachine, u"SOFTWARE\\Base", kKeyRead | kKeyWow64Key32, key), 0U);
    EXPECT_EQ(security.GetKeyAccounts(key, names), kErrorSuccess);
    EXPECT_EQ(names, std::vector<std::u16string>{u"Bob"});
    machine.Registry().CloseKey(key);
    EXPECT_EQ(security.GetKeyAccounts(key, names), kErrorInvalidHandle);
}

TEST_F(MemoryMachine, PathMasks_BecomeTheFirstExistingPath) {
    builder.File(u"C:\\App\\v1\\old.txt").File(u"C:\\App\\v2\\bin\\tool.exe").File(u"C:\\App\\v3\\bin\\tool.exe");
    builder.File(u"C:\\App\\v0", "a file, no folder");
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"C:\\App\\v*\\bin\\tool.exe", u"C:\\App\\v2\\bin\\tool.exe"},
        {u"C:\\App\\v?\\*.txt", u"C:\\App\\v1\\old.txt"},
        {u"C:\\App\\*", u"C:\\App\\v0"},
        {u"C:\\App\\v3\\bin\\tool.exe", u"C:\\App\\v3\\bin\\tool.exe"},
        {u"C:\\App\\*\\none", u""},
        {u"C:\\*\\*\\*\\*", u"C:\\App\\v2\\bin\\tool.exe"},
    };
    IClosedLibraries& libraries = Start().ClosedLibraries();
    for (const auto& [mask, path] : cases) {
        std::u16string expanded = u"left over";
        EXPECT_EQ(libraries.ExpandPathMask(mask, expanded, 1), *path != u'\0');
        EXPECT_EQ(expanded, path);
    }
}

TEST_F(MemoryMachine, FileObject_ServesOneFileAtATime) {
    builder.File(u"C:\\one", "first").File(u"C:\\two", "second");
    Machine& machine = Start();
    IProbeIO* object = machine.ClosedLibraries().GetProbeIO();
    ASSERT_NE(object, nullptr);
    char bytes[10] = {};
    std::uint32_t done = 0;
    EXPECT_EQ(object->Open(u"C:\\none", kGenericRead, kShareRead, kOpenExisting), -1);
    EXPECT_NE(object->Read(0, bytes, 10, &done), 0);
    EXPECT_NE(object->Open(u"C:\\one", kGenericRead, 0, kOpenExisting), -1);
    EXPECT_NE(object->Open(u"C:\\two", kGenericRead, 0, kOpenExisting), -1);
    EXPECT_EQ(object->Read(0, bytes, 10, &done), 0);
    EXPECT_EQ(std::string(bytes, done), "second");
    EXPECT_EQ(machine.Files().Delete(u"C:\\one"), kErrorSuccess);
    EXPECT_EQ(machine.Files().Delete(u"C:\\two"), kErrorSharingViolation);
    EXPECT_EQ(object->Release(), 0U);
    EXPECT_EQ(machine.Files().Delete(u"C:\\two"), kErrorSuccess);
}

// Questions about one path after the other: each must be answered as if it were the first one.
TEST_F(MemoryMachine, QuestionsInARow_SeeEveryChangeOfNames) {
    builder.File(u"C:\\Apps\\Tool\\tool.exe").File(u"C:\\Apps\\Toolbox\\box.exe").File(u"D:\\Real\\in.txt");
    builder.Folder(u"C:\\Jump").Reparse(u"C:\\Jump", u"D:\\Real").Short(u"C:\\Apps\\Toolbox", u"C:\\Apps\\TOOLBO~1");
    IFileSystem& files = Start().Files();
    for (int round = 0; round < 2; ++round) {
        for (const char16_t* file :
             {u"C:\\Apps\\Toolbox\\box.exe", u"C:\\Apps\\TOOLBO~1\\BOX.EXE", u"C:\\Jump\\in.txt"}) {
            EXPECT_EQ(files.GetAttributes(file), 0x20U);
        }
        EXPECT_EQ(files.GetAttributes(u"C:\\Apps\\Tool\\..\\Toolbox"), 0x10U);
        EXPECT_EQ(files.GetAttributes(u"C:\\Apps\\Tool\\tool.exe\\more"), kInvalidAttributes);
    }

    EXPECT_EQ(files.GetAttributes(u"C:\\Apps\\Tool\\tool.exe"), 0x20U);
    EXPECT_EQ(files.Delete(u"C:\\Apps\\Tool\\tool.exe"), kErrorSuccess);
    EXPECT_EQ(files.GetAttributes(u"C:\\Apps\\Tool\\tool.exe"), kInvalidAttributes);
    EXPECT_EQ(files.CreateDirectory(u"C:\\Apps\\Tool\\tool.exe"), kErrorSuccess);
    EXPECT_EQ(files.GetAttributes(u"C:\\Apps\\Tool\\tool.exe"), 0x10U);
    // The same question to another machine, which lies where the former one may have lain.
    Start();
    EXPECT_EQ(CurrentMachine().Files().GetAttributes(u"C:\\Apps\\Tool\\tool.exe"), 0x20U);
}

}  // namespace
}  // namespace roundup
