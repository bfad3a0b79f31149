#include "externfuncinc/externfunccall.h"
#include "tests/externfuncinc/scripted.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

constexpr std::u16string_view kEntries = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr std::u16string_view kEntries32 = u"SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
constexpr std::u16string_view kBooks = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\";
constexpr std::u16string_view kFamilies =
    u"HKCU\\Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository"
    u"\\Families\\";

std::u16string operator+(std::u16string_view a, std::u16string_view b) { return std::u16string(a).append(b); }

// A store package as far as the registry is asked for it.
class FakePackage final : public CApp {
  public:
    std::int32_t IsAppx() const override { return 1; }
};

class AppPresenceTest : public MachineTest {
  protected:
    // The command of the one application; "-" when there is none.
    std::u16string CommandOf(CApp& app, std::uint8_t& hidden) {
        auto manager = RefPtr<ScriptedManager>::Adopt(new ScriptedManager);
        manager->found.push_back(RefPtr<CApp>::Share(&app));
        CExternFuncCall bridge{RefPtr<IAppManager>(RefPtr<ScriptedManager>(manager))};
        EXPECT_TRUE(bridge.Load([](std::uint32_t, void*) -> std::uint8_t { return 1; }, nullptr));
        OwnedString command;
        const bool known = bridge.GetUninstallCommand(0, command, hidden);
        EXPECT_TRUE(bridge.IsIndexPresent(0) || !known);
        return known ? std::u16string(command.View()) : u"-";
    }
    static bool IsPresent(const CApp& app) { return CExternFuncCall(nullptr).IsAppPresent(app); }

    static RefPtr<CApp> NewApp(std::u16string_view key, std::uint64_t flags) {
        auto app = RefPtr<CApp>::Adopt(new CApp);
        app->pwszKeyString = OwnedString(key);
        app->qwFlags = flags;
        return app;
    }
};

// An entry counts where it was read from, and nowhere else.
TEST_F(AppPresenceTest, Entry_IsLookedForInItsRootAndView) {
    builder.Key(u"HKLM\\" + kEntries + u"machine64").Key(u"HKLM\\" + kEntries32 + u"machine32");
    builder.Key(u"HKCU\\" + kEntries + u"user");
    Start();
    const std::tuple<std::u16string_view, std::uint64_t, bool> cases[] = {
        {u"machine64", AppFlags::k64BitView, true},
        {u"machine64", 0, false},
        {u"machine32", 0, true},
        {u"user", AppFlags::kCurrentUser, true},
        {u"machine64", AppFlags::kCurrentUser | AppFlags::k64BitView, false},
        {u"MACHINE32", 0, true},
    };
    for (const auto& [key, flags, present] : cases) {
        EXPECT_EQ(IsPresent(*NewApp(key, flags)), present) << key.size() << " " << flags;
    }
}

TEST_F(AppPresenceTest, Product_IsLookedForInTheBooksOfEveryAccount) {
    builder.Key(kBooks + u"S-1-5-18\\Products\\00000000000000000000000000000001");
    builder.Key(kBooks + u"S-1-5-21-1\\Products\\57D02000000000000C00000000000064");
    builder.Key(kBooks + u"S-1-5-21-2");
    Start();
    const std::pair<std::u16string_view, bool> cases[] = {
        {u"{00020D75-0000-0000-C000-000000000046}", true},
        {u"{00020d75-0000-0000-c000-000000000046}", true},
        {u"{00020D76-0000-0000-C000-000000000046}", false},
        {u"00020D75-0000-0000-C000-000000000046", false},
    };
    for (const auto& [key, present] : cases) {
        EXPECT_EQ(IsPresent(*NewApp(key, AppFlags::kWindowsInstaller)), present) << key.size();
    }
}

TEST_F(AppPresenceTest, BadIndex_AnswersNothing) {
    Start();
    CExternFuncCall bridge(nullptr);
    OwnedString command;
    std::uint8_t hidden = 0;
    _RoundupAppInfo_ record;
    for (const std::int32_t index : {-1, 0, 0x7FFFFFFF}) {
        EXPECT_FALSE(bridge.IsIndexPresent(index) || bridge.GetUninstallCommand(index, command, hidden));
        EXPECT_FALSE(bridge.FillRecord(&record, index));
        EXPECT_TRUE(bridge.GetIconData(index) == nullptr && bridge.GetIconSize(index) == 0);
    }
}

TEST_F(AppPresenceTest, UninstallCommand_IsThatOfTheInstallerTechnology) {
    constexpr std::u16string_view kCode = u"{00020D75-0000-0000-C000-000000000046}";
    const std::u16string raw = u"\"%ProgramFiles%\\Tool\\u.exe\" /S  ";
    builder.Text(u"HKLM\\" + kEntries + u"tool", u"UninstallString", raw)
        .Text(u"HKLM\\" + kEntries + u"empty", u"UninstallString", u"")
        .Key(u"HKLM\\" + kEntries + u"none")
        .Key(kBooks + u"S-1-5-18\\Products\\57D02000000000000C00000000000064")
        .Key(kFamilies + u"Maker.Tool_abc");
    Start();
    std::uint8_t hidden = 9;
    EXPECT_TRUE(CommandOf(*NewApp(u"tool", AppFlags::k64BitView), hidden) == raw) << "unchanged";
    EXPECT_EQ(hidden, 0);
    EXPECT_TRUE(CommandOf(*NewApp(u"empty", AppFlags::k64BitView), hidden).empty());
    EXPECT_TRUE(CommandOf(*NewApp(u"none", AppFlags::k64BitView), hidden) == u"-");
    EXPECT_TRUE(CommandOf(*NewApp(u"tool", 0), hidden) == u"-") << "gone from its view";
    EXPECT_TRUE(CommandOf(*NewApp(kCode, AppFlags::kWindowsInstaller), hidden) == u"msiexec.exe /X" + kCode);
    EXPECT_EQ(hidden, 0);
    auto package = RefPtr<CApp>::Adopt(new FakePackage);
    package->pwszTypeDes = OwnedString(u"Maker.Tool_abc");
    package->pwszKeyString = OwnedString(u"Maker.Tool_1_x64__abc");
    package->qwFlags = AppFlags::kStorePackage;
    EXPECT_TRUE(CommandOf(*package, hidden) == u"PowerShell Remove-AppxPackage -Package Maker.Tool_1_x64__abc");
    EXPECT_EQ(hidden, 1);
}

}  // namespace
}  // namespace roundup
