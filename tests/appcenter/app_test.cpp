#include "appcenter/app/app.h"

#include <string>
#include <tuple>
#include <vector>

#include "tests/support/machinetest.h"
#include "utility/stringcontainers.h"

namespace roundup {
namespace {

class AppTest : public MachineTest {
  protected:
    static RefPtr<CApp> NewApp(std::u16string_view name = {}) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        if (!name.empty()) app->pwszName = OwnedString(name);
        return app;
    }
    static std::unique_ptr<CWFYFile> NewFile(std::u16string_view path, std::uint32_t type, std::uint32_t flags = 0) {
        auto file = std::make_unique<CWFYFile>();
        if (!path.empty()) file->pwszPath = OwnedString(path);
        file->dwType = type;
        file->dwFlags = flags;
        return file;
    }
    // A chain of so many applications, each the only sub-application of the one above; last is the deepest.
    static RefPtr<CApp> Chain(int length, CApp** last) {
        RefPtr<CApp> top = NewApp(u"top");
        CApp* end = top.Get();
        for (int i = 1; i < length; ++i) {
            RefPtr<CApp> next = NewApp(u"x");
            CApp* const raw = next.Get();
            end->SubApps.push_back(std::move(next));
            end = raw;
        }
        *last = end;
        return top;
    }
};

// Recursion over a forest that a hostile registry nests would end the process.
TEST_F(AppTest, DeepForest_IsWalkedAndDestroyedWithoutDeepStack) {
    Start();
    CApp* last = nullptr;
    RefPtr<CApp> top = Chain(100000, &last);
    EXPECT_FALSE(top->IsGathered());
    EXPECT_FALSE(top->HasLocation());
    EXPECT_EQ(top->GetSize(), 0U) << "too deep for a record";
    last->pwszMsiPath = OwnedString(u"C:\\a.msi");
    last->pwszKeyString = OwnedString(u"deepest");
    last->MakeGathered().Files.push_back(NewFile(u"C:\\a", FileType::kOrdinary));
    AppRecordEx record{};
    CopyBounded(record.wzKeyString, u"DEEPEST", kRecordTextSize);
    EXPECT_TRUE(top->IsSameOrHolds(record));
    EXPECT_TRUE(top->IsGathered());
    EXPECT_TRUE(top->HasLocation());
    top->ResolveRealLocation();
    top->UnGather();
    EXPECT_FALSE(top->IsGathered());
    top.Reset();
}

TEST_F(AppTest, Drives_AreThoseOfBothSetsWithoutUncPaths) {
    RefPtr<CApp> app = NewApp();
    app->MakeGathered().Directories.Add(u"C:\\Tool\\");
    app->MakeGathered().Directories.Add(u"c:\\Other\\");
    app->MakeGathered().Directories.Add(u"\\\\server\\share\\");
    app->MakeGathered().SystemDirectories.Add(u"D:\\Windows\\");
    CStringSet drives;
    app->GetDrives(drives);
    EXPECT_EQ(drives.size(), 2U);
    EXPECT_TRUE(drives.Contains(u"C:"));
    EXPECT_TRUE(drives.Contains(u"D:"));
    EXPECT_TRUE(std::u16string(app->GetDirectory(1)) == u"c:\\Other\\" ||
                std::u16string(app->GetDirectory(1)) == u"C:\\Tool\\");
    EXPECT_EQ(app->GetDirectory(3), nullptr);
}

// The store's pair is handed out through its own pointers and must not be listed among the application's files.
TEST_F(AppTest, FilesAndDirectories_LeaveTheStoreFilesOut) {
    Start();
    RefPtr<CApp> app = NewApp();
    app->MakeGathered().Files.push_back(NewFile(u"C:\\a.cfg", FileType::kConfig, FileFlags::kStaysOnDisk));
    app->MakeGathered().Files.push_back(NewFile(u"C:\\a.exe", FileType::kOrdinary));
    app->MakeGathered().Files.push_back(NewFile(u"C:\\a.idx", FileType::kIndex, FileFlags::kStaysOnDisk));
    app->MakeGathered().Directories.Add(u"C:\\Tool\\");
    std::vector<IWFYFile*> files{nullptr};
    CStringVec directories;
    directories.Add(u"kept");
    app->GetFilesAndDirectories(files, directories);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(files[0], app->Gathered().Files[1].get());
    EXPECT_EQ(app->Gathered().pConfigFile, app->Gathered().Files[0].get());
    EXPECT_EQ(app->Gathered().pIndexFile, app->Gathered().Files[2].get());
    EXPECT_EQ(directories.size(), 2U);
}

// A gathered file that belongs to the application must never be deleted with its object.
TEST_F(AppTest, FileObject_DeletesTemporaryFilesAlone) {
    const struct {
        std::uint32_t type;
        std::uint32_t flags;
        bool stays;
    } cases[] = {{0, 0, false},          {1, 0, false},   {2, 0, true},          {3, 0, true},
                 {4, 0, false},          {17, 0, false},  {18, 0, true},         {0xFFFFFFFE, 0, true},
                 {0xFFFFFFFF, 0, false}, {0, 0x80, true}, {4, 0x80 | 0x1, true}, {4, 0x1, false}};
    for (const auto& c : cases) {
        MachineBuilder machine;
        machine.File(u"C:\\Tool\\a.bin", "x");
        IFileSystem& files = Start(machine.Build()).Files();
        NewFile(u"C:\\Tool\\a.bin", c.type, c.flags).reset();
        const bool stays = files.GetAttributes(u"C:\\Tool\\a.bin") != kInvalidAttributes;
        EXPECT_EQ(stays, c.stays) << c.type << " " << c.flags;
    }
    NewFile(u"", FileType::kConfig).reset();
    NewFile(u"C:\\gone", FileType::kConfig).reset();
}

TEST_F(AppTest, RealLocation_FollowsMountPointsAndNormalises) {
    builder.Folder(u"D:\\Store\\Tool").File(u"C:\\Apps\\Tool\\tool.exe", "x").Folder(u"C:\\Plain\\Sub");
    builder.Reparse(u"C:\\Link", u"D:\\Store");
    Start();
    const std::tuple<std::u16string_view, std::u16string_view, std::u16string_view> cases[] = {
        {u"C:\\Link\\Tool", u"C:\\Link\\Tool", u"D:\\Store\\Tool"},
        {u"C:\\Plain\\\\Sub\\", u"C:\\Plain\\Sub", u"C:\\Plain\\Sub"},
        {u"\"C:\\Apps\\Tool\\tool.exe\" /x", u"C:\\Apps\\Tool", u"C:\\Apps\\Tool"},
        {u"C:\\Gone\\tool.exe", u"C:\\Gone\\tool.exe", u"C:\\Gone\\tool.exe"},
        {u"C:\\", u"", u""},
        {u"C:\\Windows", u"", u""},
    };
    for (const auto& [given, location, real] : cases) {
        RefPtr<CApp> app = NewApp();
        RefPtr<CApp> below = NewApp();
        below->pwszInstallLoc = OwnedString(given);
        CApp* const raw = below.Get();
        app->SubApps.push_back(std::move(below));
        app->ResolveRealLocation();
        EXPECT_TRUE(raw->pwszInstallLoc.View() == location) << OwnedString(given).Length();
        EXPECT_TRUE(raw->pwszRealInstallLoc.View() == real) << OwnedString(given).Length();
    }
}

}  // namespace
}  // namespace roundup
