// A gather from end to end on built machines: what goes to whom, the store pair, and every operation failing in turn.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appconifgfile/appconfigstore.h"
#include "appcenter/appfile/removerepeatreg.h"
#include "tests/appcenter/rules_support.h"
#include "tests/support/faultmachine.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

std::string Image(char magicHigh) {
    std::string bytes(0x200, '\0');
    bytes.replace(0, 2, "MZ");
    bytes[0x3C] = 0x40;
    bytes.replace(0x40, 2, "PE");
    bytes[0x58] = 0x0B;
    bytes[0x59] = magicHigh;
    return bytes;
}

RefPtr<CApp> MakeApp(std::u16string_view key, std::u16string_view location) {
    auto app = RefPtr<CApp>::Adopt(new CApp);
    app->pwszName = OwnedString(key);
    app->pwszKeyString = OwnedString(key);
    app->pwszInstallLoc = OwnedString(location);
    return app;
}

// "size type flags path", sorted.
std::vector<std::string> FilesOf(const CApp& app) {
    std::vector<std::string> lines;
    for (const auto& file : app.Gathered().Files) {
        if (file->dwType < FileType::kOrdinary) continue;
        lines.push_back(std::to_string(file->llSize) + " " + std::to_string(file->dwType) + " " +
                        std::to_string(file->dwFlags) + " " + ToUtf8(file->pwszPath));
    }
    std::ranges::sort(lines);
    return lines;
}

std::string DirectoriesOf(const CStringSet& directories) {
    std::string text;
    for (const OwnedString& path : directories) text += ToUtf8(path) + ";";
    return text;
}

// The types and sizes of the index, which must lead through the whole ".cfg" file.
std::string StoreOf(const CApp& app) {
    std::vector<std::byte> index, data;
    for (const auto& file : app.Gathered().Files) {
        if (file->dwType >= FileType::kOrdinary) continue;
        auto& bytes = file->dwType == FileType::kIndex ? index : data;
        EXPECT_TRUE(ReadWholeFile(file->pwszPath.Text(), 1 << 20, bytes));
    }
    std::string text;
    std::uint64_t at = 0;
    for (std::size_t i = 0; i + sizeof(StoreIndexEntry) <= index.size(); i += sizeof(StoreIndexEntry)) {
        StoreIndexEntry entry;
        std::memcpy(&entry, index.data() + i, sizeof entry);
        EXPECT_EQ(entry.magic, StoreIndexEntry::kMagic);
        EXPECT_EQ(entry.offset, at);
        at += entry.size;
        text += std::to_string(entry.type) + ":" + std::to_string(entry.size) + " ";
    }
    EXPECT_EQ(at, data.size());
    return text;
}

class GatherTest : public RulesTest {
  protected:
    void SetUp() override {
        Config(u"Quixo.INC", u"DIR:[..]\\Extra\r\nFILE:[WindowsVolume]\\One\\alone.exe\r\nREG:HKLM, SOFTWARE\\Quixo");
        Config(u"Quixo.EXC", u"DIR:[]\\cache");
        builder.File(u"C:\\Apps\\Quixo\\quixo.exe", Image(2))
            .File(u"C:\\Apps\\Quixo\\deep\\er\\old.dll", Image(1))
            .File(u"C:\\Apps\\Quixo\\cache\\left.out", "no")
            .File(u"C:\\Apps\\Quixo\\part\\part.txt", "four")
            .File(u"C:\\Apps\\Extra\\extra.bin", "sixsix")
            .File(u"C:\\One\\alone.exe", Image(1))
            .Reparse(u"C:\\Apps\\Quixo\\loop", u"C:\\Apps\\Quixo")
            .Text(u"HKLM\\SOFTWARE\\Quixo", u"v", u"x")
            .Key(u"HKLM\\SOFTWARE\\Quixo\\a")
            .Key(u"HKLM\\SOFTWARE\\Quixo\\b")
            .Text(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\Quixo", u"DisplayName", u"Quixo");
    }
    static RefPtr<CApp> Tree() {
        auto app = MakeApp(u"Quixo", u"C:\\Apps\\Quixo");
        auto part = MakeApp(u"Quixo Part", u"C:\\Apps\\Quixo\\part");
        part->pwszUnInstallProgram = OwnedString(u"C:\\Apps\\Quixo\\part\\part.txt");
        app->SubApps.push_back(std::move(part));
        auto patch = MakeApp(u"Quixo Fix", u"");
        patch->pwszMsiPath = OwnedString(u"C:\\Gone\\fix.MSP");
        app->SubApps.push_back(std::move(patch));
        return app;
    }
};

TEST_F(GatherTest, Tree_FeedsItsRootAndKeepsItsStores) {
    Start();
    const RefPtr<CApp> app = Tree();
    ASSERT_TRUE(Succeeded(app->Gather(nullptr, nullptr)));
    // The included file lies below no walked folder; the part was walked first, and its file counts once.
    EXPECT_EQ(FilesOf(*app), (std::vector<std::string>{
                                 "0 3 0 C:\\Gone\\fix.MSP", "4 2 0 C:\\Apps\\Quixo\\part\\part.txt",
                                 "512 2 0 C:\\One\\alone.exe", "512 2 1 C:\\Apps\\Quixo\\quixo.exe",
                                 "512 2 8 C:\\Apps\\Quixo\\deep\\er\\old.dll", "6 2 0 C:\\Apps\\Extra\\extra.bin"}));
    EXPECT_EQ(DirectoriesOf(app->Gathered().Directories),
              "C:\\Apps\\Extra\\;C:\\Apps\\Quixo\\;C:\\Apps\\Quixo\\part\\;C:\\One\\;");
    EXPECT_EQ(app->qwFlags & (AppFlags::k64Bit | AppFlags::k32BitImages), AppFlags::k64Bit);
    EXPECT_GE(app->llGatheredSize, 1546);
    EXPECT_EQ(app->llEstimatedSize, app->llGatheredSize);
    const auto& part = static_cast<const CApp&>(*app->SubApps[0]);
    EXPECT_EQ(FilesOf(part), std::vector<std::string>{"4 2 0 C:\\Apps\\Quixo\\part\\part.txt"});
    // The part's name leads to the key of the whole; what it wrote down is not written again: an end mark stands alone.
    EXPECT_EQ(StoreOf(part), "4:242 10:4 ");
    EXPECT_EQ(StoreOf(*app), "4:4 10:72 ");

    const std::int64_t size = app->llGatheredSize;
    ASSERT_TRUE(Succeeded(app->Gather(nullptr, nullptr)));
    EXPECT_EQ(app->llGatheredSize, size);
    const std::u16string pair(app->Gathered().Files.back()->pwszPath.View());
    EXPECT_NE(CurrentMachine().Files().GetAttributes(pair.c_str()), kInvalidAttributes);
    app->UnGather();
    EXPECT_EQ(CurrentMachine().Files().GetAttributes(pair.c_str()), kInvalidAttributes);
    ASSERT_TRUE(Succeeded(app->Gather(nullptr, nullptr)));
    EXPECT_EQ(app->llGatheredSize, size);
}

TEST_F(GatherTest, FolderOfThePublisher_IsNarrowedAndItsComponentsAreKept) {
    builder.File(u"C:\\Apps\\Maker\\Tool\\tool.exe", "tool")
        .File(u"C:\\Apps\\Maker\\other.txt", "other")
        .Text(
            u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\Components\\"
            u"00000000000000000000000000000001",
            u"00000000000000000000000000000002", u"C:\\Apps\\Maker\\Tool\\tool.exe");
    Start();
    const RefPtr<CApp> app = MakeApp(u"Tool", u"C:\\Apps\\Maker\\");
    ASSERT_TRUE(Succeeded(app->Gather(nullptr, nullptr)));
    EXPECT_EQ(FilesOf(*app), std::vector<std::string>{"4 2 0 C:\\Apps\\Maker\\Tool\\tool.exe"});
    EXPECT_EQ(StoreOf(*app).substr(0, 2), "4:");
}

TEST_F(GatherTest, WhatCannotBeGathered_EndsWithItsCodeAndLeavesNoFile) {
    const struct {
        std::u16string_view key, location;
        SmallCode code;
    } cases[] = {
        {u"", u"C:\\Apps\\Quixo", SmallCode::ObjectAllocation},
        {u"a:b*?", u"C:\\Apps\\Quixo", SmallCode::BadHandle},
        {u"Zyxwab", u"C:\\Nowhere", SmallCode::GeneralFailure},
        {u"Zyxwab", u"C:\\Windows", SmallCode::GeneralFailure},
    };
    for (const auto& one : cases) {
        Start();
        const RefPtr<CApp> app = MakeApp(one.key, one.location);
        const ResultCode rc = app->Gather(nullptr, nullptr);
        EXPECT_TRUE(Failed(rc));
        EXPECT_EQ(Small(rc), one.code) << ToUtf8(one.key);
        EXPECT_TRUE(app->Gathered().Files.empty());
    }
}

TEST_F(GatherTest, PathsOfTheSink_CountOnceAndHaveALimit) {
    Start();
    CApp app;
    const std::u16string start = u"C:\\" + std::u16string(250, u'a') + u"\\" + std::u16string(250, u'b') + u"\\";
    EXPECT_TRUE(Succeeded(app.AddFile((start + std::u16string(519 - start.size(), u'c')).c_str(), 1, 2)));
    EXPECT_EQ(Small(app.AddFile((start + std::u16string(520 - start.size(), u'c')).c_str(), 1, 2)),
              SmallCode::BadArgument);
    EXPECT_EQ(Small(app.AddFile(u"", 1, 2)), SmallCode::BadArgument);
    EXPECT_TRUE(Succeeded(app.AddFile(u"X:\\gone.txt", 5, 2)));
    EXPECT_TRUE(Succeeded(app.AddFile(u"x:\\GONE.TXT", 5, 2)));
    EXPECT_EQ(app.Gathered().Files.size(), 2U);
    EXPECT_EQ(app.llGatheredSize, 6);
    for (const char16_t* folder : {u"X:\\Tool", u"X:\\Tool\\", u"C:\\Windows"}) {
        EXPECT_TRUE(Succeeded(app.AddFile(folder, 0, FileType::kDirectory)));
    }
    EXPECT_EQ(DirectoriesOf(app.Gathered().Directories) + DirectoriesOf(app.Gathered().SystemDirectories),
              "X:\\Tool\\;C:\\Windows\\;");
}

TEST_F(GatherTest, RepeatFilter_TellsItemsApartByWhatItIsToldToAndNoMore) {
    Start();
    const auto filter = RefPtr<CRemoveRepeatReg>::Adopt(new CRemoveRepeatReg);
    const std::uint32_t root = 0x80000002U;
    const std::u16string stem(519, u'p');
    const std::vector<std::int32_t> answers{
        filter->IsKeySeen(&root, u"k", false),          filter->IsKeySeen(&root, u"k", false),
        filter->IsKeySeen(&root, u"K", false),          filter->IsKeySeen(&root, u"k", true),
        filter->IsKeySeen(nullptr, u"k", false),        filter->IsValueSeen(&root, u"k", u"", false),
        filter->IsItemSeen(root, u"k", false, false),   filter->IsItemSeen(root, u"k", false, true),
        filter->IsItemSeen(root, u"k", false, true),    filter->IsDirectorySeen((stem + u"1").c_str()),
        filter->IsDirectorySeen((stem + u"2").c_str()), filter->IsDirectorySeen(stem.substr(1).c_str())};
    EXPECT_EQ(answers, (std::vector<std::int32_t>{0, 1, 0, 0, 0, 0, 0, 0, 1, 0, 1, 0}));
}

// A failing operation costs what it would have told and nothing else.
TEST_F(GatherTest, EveryOperationFailingInTurn_FindsNoMoreThanThereIs) {
    Start();
    const RefPtr<CApp> whole = Tree();
    ASSERT_TRUE(Succeeded(whole->Gather(nullptr, nullptr)));
    std::vector<std::string> all = FilesOf(*whole);
    all.emplace_back("C:\\Apps\\Quixo\\cache\\left.out");  // rules that cannot be read exclude nothing
    for (const Area area : {Area::Files, Area::Registry, Area::ClosedLibraries, Area::System, Area::Shell}) {
        for (std::uint64_t n = 1;; n += 1 + n / 80) {
            auto owned = std::make_unique<FaultInjectingMachine>(builder.Build());
            FaultInjectingMachine& machine = *owned;
            machine.FailOperation(area, n, kErrorAccessDenied);
            Start(std::move(owned));
            RefPtr<CApp> app = Tree();
            EXPECT_EQ(Succeeded(app->Gather(nullptr, nullptr)) && app->Gathered().Files.empty(), false);
            for (const std::string& line : FilesOf(*app)) {
                const std::string path = line.substr(line.find('\\') - 2);
                EXPECT_TRUE(std::ranges::any_of(all, [&](const auto& one) { return one.ends_with(path); })) << line;
            }
            // Of the two keys below another one a failure costs one at most.
            if (area == Area::Registry) {
                EXPECT_NE(StoreOf(static_cast<const CApp&>(*app->SubApps[0])), "4:122 10:4 ") << n;
            }
            app = nullptr;
            if (!machine.HasFired()) break;
        }
    }
}

}  // namespace
}  // namespace roundup
