// Names of store packages that stand in the packages' own resource indexes.
#include <cstring>
#include <span>

#include "platform/recorded/resources/prifile.h"
#include "tests/support/machinetest.h"
#include "tests/support/priwriter.h"

namespace roundup {
namespace {

class PackageTextsTest : public MachineTest {
  protected:
    std::u16string Load(std::u16string_view source) {
        char16_t text[64] = {};
        const bool found = CurrentMachine().Shell().LoadIndirectString(std::u16string(source).c_str(), text, 64);
        return found ? text : u"-";
    }
    void Install(std::u16string_view folder, const PriWriter& pri) {
        builder.Text(
            u"HKCU\\Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\"
            u"Repository\\Packages\\Otter_1.0.0.0_x64__p",
            u"PackageRootFolder", folder);
        builder.File(std::u16string(folder).append(u"\\resources.pri"), pri.Write());
    }
};

PriWriter TwoLanguages() {
    return {.languages = {u"en-US", u"de-DE", u"fr"},
            .items = {{"Other", {u"o", u"o", u"o"}}, {"AppName", {u"Otter", u"Fischotter", u"Loutre"}}}};
}

TEST_F(PackageTextsTest, ResourceOfEachForm_IsTheOneForTheLanguage) {
    const struct {
        std::u16string_view language, text;
    } languages[] = {{u"", u"Otter"},       {u"de-DE", u"Fischotter"}, {u"de-AT", u"Fischotter"},
                     {u"fr-CA", u"Loutre"}, {u"ja-JP", u"Otter"},      {u"EN", u"Otter"}};
    for (int form = 0; form < 8; ++form) {
        PriWriter pri = TwoLanguages();
        pri.extended = (form & 1) != 0;
        pri.large = (form & 2) != 0;
        pri.dataItems = (form & 4) != 0;
        Install(u"C:\\Apps\\Otter", pri);
        for (const auto& [language, text] : languages) {
            builder.Text(u"HKCU\\Control Panel\\International", u"LocaleName", language);
            Start();
            EXPECT_EQ(Load(u"@{Otter_1.0.0.0_x64__p?ms-resource://Otter/Resources/AppName}"), text) << form;
        }
    }
    // A candidate for no language goes before those for others.
    PriWriter neutral = TwoLanguages();
    neutral.languages[1].clear();
    Install(u"C:\\Apps\\Otter", neutral);
    builder.Text(u"HKCU\\Control Panel\\International", u"LocaleName", u"ja-JP");
    Start();
    EXPECT_EQ(Load(u"@{Otter_1.0.0.0_x64__p?ms-resource://Otter/Resources/AppName}"), u"Fischotter");
}

TEST_F(PackageTextsTest, Source_NamesTheItemInOneOfItsForms) {
    Install(u"C:\\Apps\\Otter", TwoLanguages());
    builder.String(u"@{Otter_1.0.0.0_x64__p?ms-resource:Other}", u"as told");
    Start();
    const std::pair<std::u16string_view, std::u16string_view> cases[] = {
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:AppName}", u"Otter"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:Other}", u"as told"},
        {u"@{OTTER_1.0.0.0_x64__p?ms-resource:///resources/APPNAME}", u"Otter"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource://Otter/AppName}", u"Otter"},
        {u"@{C:\\Apps\\Otter\\resources.pri?ms-resource:/Resources/AppName}", u"Otter"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:AppNam}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:x/AppName}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:Resources}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p?file:AppName}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p\\..\\Otter_1.0.0.0_x64__p?ms-resource:AppName}", u"-"},
        {u"@{Lost_1.0.0.0_x64__p?ms-resource:AppName}", u"-"},
        {u"@{?ms-resource:AppName}", u"-"},
        {u"@{Otter_1.0.0.0_x64__p", u"-"},
        {u"@{Otter_1.0.0.0_x64__p?ms-resource:AppName)", u"-"},
        {u"@shell32.dll,-1", u"-"},
    };
    for (const auto& [source, text] : cases) EXPECT_EQ(Load(source), text) << source.size();
}

// Cut at every byte, and with each 16-bit field in turn as large as it can be, 0, or one more: whatever is answered is
// one of the texts, or less than one, and reading stays within the file.
TEST_F(PackageTextsTest, DamagedIndex_AnswersNoMoreThanItHolds) {
    for (const bool dataItems : {false, true}) {
        PriWriter pri = TwoLanguages();
        pri.large = pri.dataItems = dataItems;
        const std::string whole = pri.Write();
        const auto ask = [](const std::string& bytes) {
            PriFile file;
            if (!file.Open(ByteView(std::as_bytes(std::span(bytes))))) return std::size_t{0};
            return file.FindText(u"Resources/AppName", u"de").value_or(u"").size();
        };
        EXPECT_EQ(ask(whole), 10U);
        for (std::size_t size = 0; size < whole.size(); ++size) EXPECT_LE(ask(whole.substr(0, size)), 10U);
        for (std::size_t at = 0; at + 2 <= whole.size(); ++at) {
            for (const int value : {0xFFFF, 0, 1}) {
                std::string damaged = whole;
                const auto field = static_cast<std::uint16_t>(value == 1 ? damaged[at] + 1 : value);
                std::memcpy(damaged.data() + at, &field, 2);
                EXPECT_LE(ask(damaged), whole.size());
            }
        }
    }
}

}  // namespace
}  // namespace roundup
