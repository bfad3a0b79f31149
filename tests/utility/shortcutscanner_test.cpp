// The shortcuts of a machine: which folders are scanned, what each link opens.
#include "utility/shortcutscanner.h"

#include "tests/support/linkwriter.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

constexpr std::u16string_view kStart = u"C:\\Users\\User\\AppData\\Roaming\\Microsoft\\Windows\\Start Menu";
constexpr std::u16string_view kDesktop = u"C:\\Users\\User\\Desktop";

class ShortcutScannerTest : public MachineTest {
  protected:
    void Link(std::u16string_view folder, std::u16string_view name, const std::string& bytes) {
        builder.File(std::u16string(folder).append(u"\\").append(name), bytes);
    }
    static std::string To(std::u16string_view path) {
        LinkWriter link;
        link.idListPath = path;
        return link.Write();
    }
    static std::vector<std::u16string> LinksOf(std::u16string_view target) {
        std::vector<const ShortcutRecord*> records;
        std::vector<std::u16string> names;
        const bool found = ShortcutScanner::Instance().FindByTarget(target, records);
        EXPECT_EQ(found, !records.empty());
        for (const ShortcutRecord* record : records) {
            names.push_back(std::u16string(record->linkFolder).append(u"|").append(record->linkBaseName));
        }
        return names;
    }
};

TEST_F(ShortcutScannerTest, Folders_AreScannedAsDeepAsEachIsAndEachLinkOnce) {
    builder.File(u"C:\\Tool\\Tool.exe");
    const std::u16string programs = std::u16string(kStart) + u"\\Programs";
    Link(programs, u"one.lnk", To(u"C:\\Tool\\Tool.exe"));
    Link(programs + u"\\Sub", u"TWO.two.LNK", To(u"C:\\Tool\\tool.exe"));
    Link(kDesktop, u"desk.lnk", To(u"C:\\Tool\\Tool.exe"));
    Link(u"C:\\Users\\User\\AppData\\Roaming\\Microsoft\\Internet Explorer\\Quick Launch\\User Pinned\\TaskBar",
         u"bar.lnk", To(u"C:\\Tool\\Tool.exe"));
    // None of these is a shortcut that is shown.
    Link(std::u16string(kDesktop) + u"\\Sub", u"below.lnk", To(u"C:\\Tool\\Tool.exe"));
    Link(kDesktop, u"lnk", To(u"C:\\Tool\\Tool.exe"));
    Link(kDesktop, u"dangling.lnk", To(u"C:\\Tool\\gone.exe"));
    Link(kDesktop, u"broken.lnk", "no link");
    builder.Folder(std::u16string(kDesktop) + u"\\folder.lnk");
    builder.Reparse(std::u16string(kStart) + u"\\Loop", kStart).Reparse(std::u16string(kStart) + u"\\x.lnk", kDesktop);
    Start();
    EXPECT_EQ(LinksOf(u"c:\\tool\\TOOL.EXE"),
              (std::vector{programs + u"|one", programs + u"\\Sub|TWO.two", std::u16string(kDesktop) + u"|desk",
                           std::u16string(u"C:\\Users\\User\\AppData\\Roaming\\Microsoft\\Internet Explorer\\Quick "
                                          u"Launch\\User Pinned\\TaskBar|bar")}));
    EXPECT_EQ(ShortcutScanner::Instance().Targets().size(), 1U);
    EXPECT_TRUE(LinksOf(u"C:\\Tool\\other.exe").empty());
}

TEST_F(ShortcutScannerTest, Record_HoldsAllThatTheLinkSays) {
    builder.File(u"C:\\Program Files\\Tool\\tool.exe").File(u"C:\\Program Files\\Tool\\tool.ico");
    builder.Short(u"C:\\Program Files\\Tool", u"C:\\PROGRA~1\\TOOL~1").Short(u"C:\\Program Files", u"C:\\PROGRA~1");
    LinkWriter link;
    link.localPath = "C:\\Program Files\\Tool\\tool.exe";
    link.description = u"A tool";
    link.arguments = u"-a \"b\"";
    link.workingDirectory = u"C:\\PROGRA~1\\Tool";
    link.iconPath = u"C:\\PROGRA~1\\Tool\\tool.ico";
    link.iconIndex = -3;
    link.hotkey = 0x0654;
    link.showCommand = 7;
    Link(kDesktop, u"x.lnk", link.Write());
    Start();
    std::vector<const ShortcutRecord*> records;
    ASSERT_TRUE(ShortcutScanner::Instance().FindByTarget(u"C:\\Program Files\\Tool\\tool.exe", records));
    const ShortcutRecord& record = *records.front();
    EXPECT_EQ(record.description.View(), u"A tool");
    EXPECT_EQ(record.arguments.View(), u"-a \"b\"");
    EXPECT_EQ(record.workingDirectory.View(), u"C:\\Program Files\\Tool");
    EXPECT_EQ(record.iconPath.View(), u"C:\\Program Files\\Tool\\tool.ico");
    EXPECT_EQ(record.iconIndex, -3);
    EXPECT_EQ(record.hotkey, 0x0654);
    EXPECT_EQ(record.showCommand, 7);
    EXPECT_EQ(record.linkPath.View(), std::u16string(kDesktop) + u"\\x.lnk");
}

TEST_F(ShortcutScannerTest, Target_IsFoundWhereItReallyIs) {
    constexpr std::u16string_view kProduct = u"{00000001-0002-0003-0405-060708090A0B}";
    constexpr std::u16string_view kComponent = u"{FFFFFFFF-FFFF-FFFF-FFFF-FFFFFFFFFFFE}";
    builder.Text(std::u16string(u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData\\S-1-5-18\\"
                                u"Components\\")
                     .append(GuidText(ParseGuid(kComponent, GuidForm::Braced), GuidForm::Packed)),
                 GuidText(ParseGuid(kProduct, GuidForm::Braced), GuidForm::Packed), u"C:\\Adv\\adv.exe");
    builder.File(u"C:\\Adv\\adv.exe").File(u"C:\\Windows\\Installer\\icon.exe");
    builder.File(u"C:\\Program Files\\A\\a.exe").File(u"C:\\Program Files\\Common Files\\B\\b.exe");
    LinkWriter advertised;
    advertised.idListPath = u"C:\\Windows\\Installer\\icon.exe";
    advertised.descriptor = LinkWriter::Descriptor(kProduct, u"Main", kComponent);
    Link(kDesktop, u"adv.lnk", advertised.Write());
    // A product that is not installed leaves the link's own target.
    advertised.descriptor = LinkWriter::Descriptor(kComponent, u"Main", kProduct);
    Link(kDesktop, u"unadvertised.lnk", advertised.Write());
    Link(kDesktop, u"a.lnk", To(u"C:\\Program Files (x86)\\A\\a.exe"));
    Link(kDesktop, u"b.lnk", To(u"C:\\Program Files (x86)\\Common Files\\B\\b.exe"));
    Link(kDesktop, u"c.lnk", To(u"C:\\Other (x86)\\A\\a.exe"));
    Start();
    const auto on = [](std::u16string_view name) { return std::vector{std::u16string(kDesktop).append(name)}; };
    EXPECT_EQ(LinksOf(u"C:\\Adv\\adv.exe"), on(u"|adv"));
    EXPECT_EQ(LinksOf(u"C:\\Windows\\Installer\\icon.exe"), on(u"|unadvertised"));
    EXPECT_EQ(LinksOf(u"C:\\Program Files\\A\\a.exe"), on(u"|a"));
    EXPECT_EQ(LinksOf(u"C:\\Program Files\\Common Files\\B\\b.exe"), on(u"|b"));
    EXPECT_EQ(ShortcutScanner::Instance().Targets().size(), 4U);
}

}  // namespace
}  // namespace roundup
