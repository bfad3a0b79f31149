// The files of a Wine prefix. What they are to give was compared with the answers of the prefix's own registry.
#include <gtest/gtest.h>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"
#include "tests/recorded/registryreading.h"
#include "tests/support/tempfolder.h"

namespace roundup {

namespace {

using namespace std::string_literals;

const std::string kMachine = "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\Machine\n\n#arch=win64\n\n";
const std::string kUser =
    "WINE REGISTRY Version 2\n;; All keys relative to REGISTRY\\\\User\\\\S-1-5-21-0-0-0-1000\n\n#arch=win64\n\n";

class RegistryWineTest : public testing::Test {
  protected:
    std::string Parse(const std::string& text) {
        const SourceStatus status = ParseWineText(m_store, std::as_bytes(std::span(text)), "x.reg");
        return status ? status->Text() : std::string();
    }
    std::u16string Seen(KeyHandle root, const char16_t* path, std::uint32_t view) {
        const OpenedKey key(m_registry, root, path, kKeyRead | view);
        return key.Error() == kErrorSuccess ? key.Text(u"") : u"absent";
    }

    RegistryStore m_store;
    RecordedRegistry m_registry{m_store};
};

TEST_F(RegistryWineTest, EveryFormOfAValue_ComesOutWithItsTypeAndBytes) {
    ASSERT_EQ(Parse(kMachine + R"([T] 1795550982
#time=1dd7c4fbe400dee
#class="x"
@="default"
"quoted"="C:\\a \"b\" [c]"
"escapes"="\x3a9\xd83d\xde00\x00e91\0A\00012\t\e\xd800"
"expand"=str(2):"%a%"
"multi"=str(7):"a\00012\0\x3e9\0"
"bin"=hex:01,02,\
  ff
"odd"=hex(7):41,00,42
)"),
              "");
    const OpenedKey key(m_registry, kHkeyLocalMachine, u"T");
    EXPECT_EQ(key.Text(u"quoted"), u"C:\\a \"b\" [c]");
    using namespace std::string_view_literals;
    EXPECT_EQ(key.Text(u"escapes"), std::u16string(u"\u03A9\xD83D\xDE00\u00E9"
                                                   u"1\0A\0"
                                                   u"12\t\x1B\xD800"sv));
    const std::tuple<const char16_t*, std::uint32_t, std::string> rows[] = {
        {u"expand", kRegExpandSz, "%\0a\0%\0\0\0"s},
        {u"multi", kRegMultiSz,
         "a\0\0\0"
         "1\0"
         "2\0\0\0\xE9\3\0\0\0\0"s},
        {u"bin", kRegBinary, "\1\2\xFF"},
        {u"odd", kRegMultiSz, "A\0B"s},
    };
    for (const auto& [name, type, bytes] : rows) EXPECT_EQ(key.Value(name), (std::pair{type, bytes})) << Shown(name);
}

TEST_F(RegistryWineTest, KeyNames_AreUnescapedAndSplitAtBackslashes) {
    ASSERT_EQ(Parse(kMachine +
                    "[T\\\\Zz\\[a\\]\"q\"\\\\\\x3a9mega\\xd83d\\xde00x1\\\\ \\xe9] 1795551024\n[T\\\\_b]\n[T\\\\A]\n"),
              "");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyLocalMachine, u"T\\Zz[a]\"q\"\\\u03A9mega\xD83D\xDE00x1\\ \u00E9").Error(),
              kErrorSuccess);
    // A wineserver lists by lower-cased names, so '_' stands before letters.
    EXPECT_EQ(OpenedKey(m_registry, kHkeyLocalMachine, u"T").Subkeys(), (Names{u"_b", u"A", u"Zz[a]\"q\""}));
}

TEST_F(RegistryWineTest, ViewsOfA64BitPrefix_FollowWow6432NodeAndTheLinks) {
    const auto link = [](const std::string& key, const std::string& target) {
        std::string bytes;
        for (const char c : "\\Registry\\Machine\\" + target) {
            char digits[8];
            std::snprintf(digits, sizeof(digits), "%02x,00,", static_cast<unsigned>(c));
            bytes += digits;
        }
        bytes.pop_back();
        return "[" + key + "] 1\n#link\n\"SymbolicLinkValue\"=hex(6):" + bytes + "\n";
    };
    ASSERT_EQ(Parse(kMachine +
                    "[Software\\\\Classes\\\\CLSID\\\\a]\n@=\"native\"\n"
                    "[Software\\\\Classes\\\\Wow6432Node\\\\CLSID\\\\a]\n@=\"wow\"\n" +
                    "[Software\\\\Classes\\\\AppId\\\\a]\n@=\"shared\"\n" +
                    link("Software\\\\Classes\\\\Wow6432Node\\\\AppId", "Software\\Classes\\AppId") +
                    "[Software\\\\Policies\\\\a]\n@=\"shared\"\n[Software\\\\Vendor]\n@=\"native\"\n" +
                    link("Software\\\\Wow6432Node\\\\Classes", "Software\\Classes\\Wow6432Node") +
                    link("Software\\\\Wow6432Node\\\\Policies", "Software\\Policies") +
                    "[Software\\\\Wow6432Node\\\\Vendor]\n@=\"wow\"\n"
                    "[System\\\\CurrentControlSet]\n@=\"one\"\n"),
              "");
    ASSERT_EQ(Parse(kUser + "[Software\\\\Vendor]\n@=\"user\"\n[Software\\\\Classes\\\\.user]\n@=\"user\"\n"), "");
    EXPECT_EQ(m_store.Layout(), RegistryLayout::Wine64);
    const std::tuple<KeyHandle, const char16_t*, const char16_t*, const char16_t*> rows[] = {
        {kHkeyLocalMachine, u"Software\\Vendor", u"native", u"wow"},
        {kHkeyLocalMachine, u"Software\\Policies\\a", u"shared", u"shared"},
        {kHkeyLocalMachine, u"Software\\Wow6432Node\\Policies\\a", u"shared", u"shared"},
        {kHkeyLocalMachine, u"Software\\Classes\\CLSID\\a", u"native", u"wow"},
        {kHkeyLocalMachine, u"Software\\Classes\\AppId\\a", u"shared", u"shared"},
        {kHkeyLocalMachine, u"Software\\Wow6432Node\\Classes\\CLSID\\a", u"wow", u"wow"},
        {kHkeyClassesRoot, u"CLSID\\a", u"native", u"wow"},
        {kHkeyClassesRoot, u".user", u"absent", u"absent"},
        {kHkeyLocalMachine, u"System\\CurrentControlSet", u"one", u"one"},
        {kHkeyCurrentUser, u"Software\\Vendor", u"user", u"user"},
    };
    for (const auto& [root, path, native, wow] : rows) {
        EXPECT_EQ(Seen(root, path, kKeyWow64Key64), native) << Shown(path);
        EXPECT_EQ(Seen(root, path, kKeyWow64Key32), wow) << Shown(path);
    }
    const OpenedKey software(m_registry, kHkeyLocalMachine, u"Software", kKeyRead | kKeyWow64Key32);
    EXPECT_EQ(software.Subkeys(), (Names{u"Classes", u"Policies", u"Vendor"}));
    KeyHandle made = 0;
    EXPECT_EQ(m_registry.CreateKey(kHkeyLocalMachine, u"Software\\New", kKeyAllAccess | kKeyWow64Key32, made), 0U);
    EXPECT_TRUE(m_store.HasKey(u"HKLM\\Software\\Wow6432Node\\New"));
}

TEST_F(RegistryWineTest, MalformedLines_AreToldWithFileAndLine) {
    const std::string key = kMachine + "[T] 1\n";
    const std::pair<std::string, const char*> rows[] = {
        {"", "x.reg:1: does not begin with \"WINE REGISTRY Version 2\""},
        {"WINE REGISTRY Version 2\n\n[T]\n", "x.reg:3: does not say to which key its keys belong"},
        {"WINE REGISTRY Version 2\n;; All keys relative to \\\\Device\n",
         "x.reg:2: keys that belong to neither the machine nor a user"},
        {kMachine + "T\n", "x.reg:6: a line that is neither a key nor a value"},
        {kMachine + "[T\n]\n", "x.reg:6: a key line without its closing bracket"},
        {kMachine + "[T] x\n", "x.reg:6: a key line with something else than a time behind the key"},
        {kMachine + "[" + std::string(256, 'k') + "]", "x.reg:6: a key name of more than 255 characters"},
        {key + "\"a\n", "x.reg:7: a value name without its closing quote"},
        {key + "\"a\"\"b\"\n", "x.reg:7: a value name without \"=\" behind it"},
        {key + "\"a\"=\"b\\", "x.reg:7: a text without its closing quote"},
        {key + "\"a\"=str(2):b\n", "x.reg:7: a text without its opening quote"},
        {key + "\"a\"=hex:01,\\\n", "x.reg:8: the file ends inside of hexadecimal data"},
        {key + "\"a\"=hex:01 02\n", "x.reg:7: hexadecimal data without a comma between two bytes"},
        {key + "\"a\"=hex:01,\n", "x.reg:7: hexadecimal data that ends with a comma"},
    };
    for (const auto& [text, message] : rows) EXPECT_EQ(Parse(text), message);
}

TEST_F(RegistryWineTest, Prefix_NeedsSystemRegAndSaysWhatIsMissing) {
    const TempFolder folder;
    EXPECT_NE(LoadWinePrefix(m_store, folder.Text())->Text().find("/system.reg: "), std::string::npos);
    folder.Write("system.reg", kMachine + "[Software\\\\A]\n@=\"machine\"\n");
    EXPECT_FALSE(LoadWinePrefix(m_store, folder.Text()));
    folder.Write("user.reg", kUser + "[Software\\\\A]\n@=\"user\"\n");
    EXPECT_FALSE(LoadWinePrefix(m_store, folder.Text()));
    EXPECT_EQ(Seen(kHkeyCurrentUser, u"Software\\A", 0), u"user");
    EXPECT_EQ(Seen(kHkeyLocalMachine, u"Software\\A", 0), u"machine");
}

}  // namespace

}  // namespace roundup
