// Loads of the catalogue from cache files.
#include "appcenter/appeunm/appcache.h"

#include <algorithm>

#include "appcenter/appx/appx.h"
#include "platform/machine.h"
#include "tests/appcenter/catalogue_support.h"
#include "tests/support/faultmachine.h"
#include "utility/formattext.h"
#include "utility/sysinfo.h"
#include "utility/utf.h"

namespace roundup {
namespace {

using Texts = std::vector<std::string>;

std::string Stored(const IApp& app) {
    std::string bytes(app.GetSize(), '\0');
    std::uint32_t count = 0;
    EXPECT_TRUE(Succeeded(
        app.Serialize(reinterpret_cast<std::byte*>(bytes.data()), static_cast<std::uint32_t>(bytes.size()), count)));
    return bytes;
}

RefPtr<CApp> Named(std::u16string_view name) {
    auto app = RefPtr<CApp>::Adopt(new CApp);
    app->pwszName = OwnedString(name);
    app->pwszKeyString = OwnedString(name);
    return app;
}

std::string StoredAs(std::u16string_view name) { return Stored(*Named(name)); }

std::string StoredPackage(std::u16string_view name) {
    const auto package = RefPtr<CAppx>::Adopt(new CAppx);
    package->m_wzDisplayName = OwnedString(name);
    return Stored(*package);
}

class CacheTest : public CatalogueTest {
  protected:
    using Percents = std::vector<std::uint32_t>;

    // Loads the current machine from its cache.
    Texts LoadCached(Percents expected = {}) {
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        LoadRun run;
        EXPECT_TRUE(Succeeded(run.Load(*manager, true)));
        EXPECT_EQ(run.percents, expected);
        Texts names;
        for (const auto& app : manager->Applications()) names.push_back(ToUtf8(app->GetName()));
        for (const auto& package : manager->Packages()) names.push_back("package " + ToUtf8(package->GetName()));
        return names;
    }
    MachineBuilder& CacheFile(std::u16string_view name, std::string_view bytes) {
        return builder.HostFile(std::u16string(u"cache\\").append(name), bytes);
    }
};

TEST_F(CacheTest, Files_AreChosenByTheEndOfTheirNames) {
    Entry(kMachineKey, u"on the machine");
    CacheFile(u"two_E", StoredAs(u"two")).HostFolder(u"cache\\folder_E").HostFolder(u"cache\\_e");
    CacheFile(u"1_e", StoredAs(u"one")).HostFile(u"cache\\none", StoredAs(u"no ending"));
    CacheFile(u"E", StoredAs(u"short")).HostFile(u"cache\\x_E.bak", StoredAs(u"backup"));
    CacheFile(u"empty_E", "").HostFile(u"cache\\more_E", StoredAs(u"more") + "what follows is not looked at");
    CacheFile(u"broken_E", "APP").HostFile(u"cache\\other_EX", StoredAs(u"not a package"));
    CacheFile(u"pack_eX", StoredPackage(u"one")).HostFile(u"cache\\other_E", StoredPackage(u"no application"));
    Start();
    EXPECT_EQ(LoadCached(), (Texts{"one", "more", "two", "package one"}));
}

// What a cache file names is not this process's to delete.
TEST_F(CacheTest, RestoredApplication_LeavesTheFilesOfItsRecordOnDisk) {
    const auto top = Named(u"top");
    const auto below = Named(u"below");
    for (const auto& app : {top, below}) {
        for (const std::uint32_t type : {FileType::kConfig, FileType::kIndex, FileType::kFirstData}) {
            auto file = std::make_unique<CWFYFile>();
            file->pwszPath = OwnedString(FormatText(u"C:\\precious\\%s%u", app->pwszName, type));
            builder.File(file->pwszPath, "x");
            file->dwType = type;
            app->MakeGathered().Files.push_back(std::move(file));
        }
    }
    top->SubApps.emplace_back(RefPtr<CApp>(below));
    CacheFile(u"1_E", Stored(*top));
    for (const auto& app : {top, below}) {
        for (const auto& file : app->Gathered().Files) file->dwFlags = FileFlags::kStaysOnDisk;
    }
    Start();
    EXPECT_EQ(LoadCached(), Texts{"top"});
    for (const char16_t* const kept : {u"top0", u"top1", u"top4", u"below0", u"below1", u"below4"}) {
        const std::u16string path = FormatText(u"C:\\precious\\%s", kept);
        EXPECT_NE(CurrentMachine().Files().GetAttributes(path.c_str()), kInvalidAttributes) << ToUtf8(path);
    }
}

TEST_F(CacheTest, FileThatCannotBeOpened_EndsTheReadAndKeepsWhatWasRead) {
    Start();
    FixedText<260> folder;
    ASSERT_TRUE(GetCacheFolder(folder));
    CacheFile(u"1_E", StoredAs(u"one")).HostFile(u"cache\\3_E", StoredAs(u"three"));
    CacheFile(u"2_E", StoredAs(u"two")).DenyFile(FormatText(u"%s\\2_E", folder));
    Start();
    EXPECT_EQ(LoadCached({95}), Texts{"one"});
}

// Whatever fails, the lists hold a part of the cache in its order, and every handle is given back.
TEST_F(CacheTest, FailingFileOperations_LeaveAPartOfTheCache) {
    const Texts whole = {"a", "b", "c"};
    for (const char16_t* const name : {u"a", u"b", u"c"}) CacheFile(std::u16string(name) + u"_E", StoredAs(name));
    for (std::uint64_t n = 1;; ++n) {
        auto owned = std::make_unique<FaultInjectingMachine>(builder.Build());
        FaultInjectingMachine& machine = *owned;
        machine.FailOperation(Area::Files, n, kErrorAccessDenied);
        Start(std::move(owned));
        const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
        LoadRun run;
        EXPECT_TRUE(Succeeded(run.Load(*manager, true)));
        Texts names;
        for (const auto& app : manager->Applications()) names.push_back(ToUtf8(app->GetName()));
        EXPECT_TRUE(std::includes(whole.begin(), whole.end(), names.begin(), names.end())) << n;
        EXPECT_LE(machine.HandlesHeld(), 1) << n << ": more than the log is open";
        if (machine.HasFired()) continue;
        EXPECT_EQ(names, whole);
        EXPECT_GT(n, 15U);
        break;
    }
}

}  // namespace
}  // namespace roundup
