// Registry exports: what they say, and what is told of those that are broken.
#include <gtest/gtest.h>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"
#include "tests/recorded/registryreading.h"
#include "tests/support/tempfolder.h"

namespace roundup {

namespace {

using namespace std::string_literals;

const std::string kVersion = "Windows Registry Editor Version 5.00\r\n\r\n";

std::span<const std::byte> BytesOf(const std::string& text) { return std::as_bytes(std::span(text)); }

std::string Utf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
    return bytes;
}

class RegistryTextTest : public testing::Test {
  protected:
    // The message about the text, empty when it is good.
    std::string Parse(const std::string& text) {
        const SourceStatus status = ParseRegText(m_store, BytesOf(text), "x.reg");
        return status ? status->Text() : std::string();
    }
    OpenedKey Key(const char16_t* path) { return OpenedKey(m_registry, kHkeyLocalMachine, path); }

    RegistryStore m_store;
    RecordedRegistry m_registry{m_store};
};

TEST_F(RegistryTextTest, EveryFormOfAValue_ComesOutWithItsTypeAndBytes) {
    ASSERT_EQ(Parse(kVersion + R"(; a comment
[HKEY_LOCAL_MACHINE\T]
@="default"
"text"="C:\\a \"b\""
"two
lines"="a
b"
"bin"=hex:01,02,\
  ff
"expand"=hex(2):25,00,00,00
"big"=hex(5):00,00,00,01
"multi"=hex(7):41,00,00,00,\
  42,00,\
  00,00,00,00
"qword"=hex(b):01,00,00,00,00,00,00,80
"driver"=hex(ffff0007): 1 , 2
)"),
              "");
    const OpenedKey key = Key(u"T");
    const std::tuple<const char16_t*, std::uint32_t, std::string> rows[] = {
        {u"", kRegSz, "d\0e\0f\0a\0u\0l\0t\0\0\0"s},
        {u"text", kRegSz, "C\0:\0\\\0a\0 \0\"\0b\0\"\0\0\0"s},
        {u"two\nlines", kRegSz, "a\0\n\0b\0\0\0"s},
        {u"bin", kRegBinary, "\1\2\xFF"},
        {u"expand", kRegExpandSz, "%\0\0\0"s},
        {u"big", kRegDwordBigEndian, "\0\0\0\1"s},
        {u"multi", kRegMultiSz, "A\0\0\0B\0\0\0\0\0"s},
        {u"qword", kRegQword, "\1\0\0\0\0\0\0\x80"s},
        {u"driver", 0xFFFF0007U, "\1\2"},
    };
    Names names;
    for (const auto& [name, type, bytes] : rows) {
        EXPECT_EQ(key.Value(name), (std::pair{type, bytes})) << Shown(name);
        names.emplace_back(name);
    }
    EXPECT_EQ(key.ValueNames(), names);
}

TEST_F(RegistryTextTest, LaterLinesAndFiles_OverwriteAndDelete) {
    ASSERT_EQ(Parse(kVersion + "[HKEY_LOCAL_MACHINE\\T]\n\"a\"=\"1\"\n\"b\"=\"1\"\n\"c\"=\"1\"\n"
                               "[HKEY_LOCAL_MACHINE\\T\\Gone\\Deep]\n[HKEY_LOCAL_MACHINE\\T\\Stays]\n"
                               "[HKEY_CURRENT_USER\\Software]\n"),
              "");
    ASSERT_EQ(Parse(kVersion + "[HKEY_LOCAL_MACHINE\\t]\n\"A\"=\"2\"\n\"b\"=-\n\"never\"=-\n@=-\n"
                               "[-HKEY_LOCAL_MACHINE\\T\\Gone]\n[-HKEY_LOCAL_MACHINE\\T\\Never]\n"
                               "[-HKEY_CURRENT_USER]\n"),
              "");
    EXPECT_EQ(Key(u"T").ValueNames(), (Names{u"a", u"c"}));
    EXPECT_EQ(Key(u"T").Text(u"a"), u"2");
    EXPECT_EQ(Key(u"T").Subkeys(), Names{u"Stays"});
    EXPECT_EQ(OpenedKey(m_registry, kHkeyCurrentUser, u"").Subkeys(), Names());
}

TEST_F(RegistryTextTest, Roots_LeadToThePlacesThatTheyStandFor) {
    ASSERT_EQ(Parse(kVersion + "[HKEY_CURRENT_USER\\Software\\Classes\\.u]\n[HKEY_CLASSES_ROOT\\.u]\n@=\"user\"\n"
                               "[HKEY_CLASSES_ROOT\\.m]\n[hkey_users\\.DEFAULT\\x]\n[HKEY_CURRENT_CONFIG\\y]\n"
                               "[HKEY_LOCAL_MACHINE\\SOFTWARE\\A]B]\n[HKEY_LOCAL_MACHINE]\n"),
              "");
    EXPECT_EQ(OpenedKey(m_registry, kHkeyUsers, u"S-1-5-21-0-0-0-1000\\Software\\Classes\\.u").Text(u""), u"user");
    EXPECT_TRUE(m_store.HasKey(u"HKLM\\SOFTWARE\\Classes\\.m"));
    EXPECT_TRUE(m_store.HasKey(u"HKU\\.Default\\x"));
    EXPECT_TRUE(m_store.HasKey(u"HKLM\\SYSTEM\\CurrentControlSet\\Hardware Profiles\\Current\\y"));
    EXPECT_TRUE(m_store.HasKey(u"HKLM\\SOFTWARE\\A]B"));
}

TEST_F(RegistryTextTest, Encodings_AreToldByTheMarkAndKeepEveryCharacter) {
    using namespace std::string_view_literals;
    const std::u16string head = u"Windows Registry Editor Version 5.00\r\n[HKEY_LOCAL_MACHINE\\";
    ASSERT_EQ(Parse(Utf16(head + u"A\u00E9\xD83D\xDE00]\r\n\"\xD800\"=\"\xDC00\"\r\n")), "");
    ASSERT_EQ(Parse(Utf16(head + std::u16string(u"N\0L]\n"sv))), "");
    ASSERT_EQ(Parse("\xEF\xBB\xBF" + kVersion + "[HKEY_LOCAL_MACHINE\\B\xC3\xA9]\n"), "");
    ASSERT_EQ(Parse(kVersion + "[HKEY_LOCAL_MACHINE\\C\xC3\xA9]"), "");
    EXPECT_EQ(Key(u"").Subkeys(), (Names{u"A\u00E9\xD83D\xDE00", u"B\u00E9", u"C\u00E9", std::u16string(u"N\0L"sv)}));
    EXPECT_EQ(Key(u"A\u00E9\xD83D\xDE00").Text(u"\xD800"), u"\xDC00");
}

TEST_F(RegistryTextTest, MalformedLines_AreToldWithFileAndLine) {
    const std::string key = kVersion + "[HKEY_LOCAL_MACHINE\\T]\r\n";
    const std::string longKey = "[HKEY_LOCAL_MACHINE\\" + std::string(16383, 'k') + "]";
    std::string deep = "[HKEY_LOCAL_MACHINE";
    for (int i = 0; i < 513; ++i) deep += "\\d";
    const std::pair<std::string, const char*> rows[] = {
        {"", "x.reg:1: does not begin with \"Windows Registry Editor Version 5.00\""},
        {"Windows Registry Editor Version 5.001\n", "x.reg:1: the first line goes on behind the version"},
        {kVersion + "nonsense", "x.reg:3: a line that is neither a key nor a value"},
        {kVersion + "[HKEY_LOCAL_MACHINE\\T\n", "x.reg:3: a key line without its closing bracket"},
        {kVersion + "[HKLM\\T]\n", "x.reg:3: a key that does not begin with one of the root keys"},
        {kVersion + "[-HKEY_LOCAL_MACHINE]\n", "x.reg:3: a root key cannot be deleted"},
        {kVersion + longKey, "x.reg:3: a key name of more than 255 characters"},
        {kVersion + deep + "]", "x.reg:3: a key more than 512 levels deep"},
        {kVersion + "[-HKEY_LOCAL_MACHINE\\T]\n\"a\"=\"b\"", "x.reg:4: a value that belongs to no key"},
        {key + "\"a", "x.reg:4: a text without its closing quote"},
        {key + "\"a\"=", "x.reg:4: a value that is no text, dword:, hex: or hex(n):"},
        {key + "\"a\"=\"C:\\new\"",
         "x.reg:4: a backslash in a text that is followed by neither a backslash nor a quote"},
        {key + "\"a\"=\"b\" c", "x.reg:4: something else behind the end of a value"},
        {key + "\"a\"=dword:123456789", "x.reg:4: a hexadecimal number of more than 8 digits"},
        {key + "\"a\"=hex(2:00", "x.reg:4: a value type without \"):\" behind it"},
        {key + "\"a\"=hex:01,\\\n  02,\n", "x.reg:5: hexadecimal data with something else than bytes of two digits"},
        {key + "\"a\"=hex:01,\\\n", "x.reg:5: the file ends inside of hexadecimal data"},
        {key + "\"a\"=hex:01,\\ 02", "x.reg:4: a backslash in hexadecimal data that does not end its line"},
        {key + "\"" + std::string(16384, 'v') + "\"=-", "x.reg:4: a value name of more than 16383 characters"},
        {key + "\"\xC3\"=-", "x.reg:4: neither UTF-16 with its mark nor valid UTF-8"},
        {"\xFF\xFEW", "x.reg: offset 0x2: UTF-16 text with half a character"},
    };
    for (const auto& [text, message] : rows) EXPECT_EQ(Parse(text), message);
}

class RegistryFilesTest : public RegistryTextTest {
  protected:
    void Write(const std::string& name, const std::string& text) { m_temp.Write("registry/" + name, text); }
    std::string Load() {
        const SourceStatus status = LoadRegTextFolder(m_store, (m_folder / "registry").string());
        return status ? status->Text() : std::string();
    }

    const TempFolder m_temp;
    const std::filesystem::path m_folder = m_temp.Path();
};

TEST_F(RegistryFilesTest, FilesOfAFolder_AreReadInNameOrderAndOthersLeftAlone) {
    const std::string key = kVersion + "[HKEY_LOCAL_MACHINE\\T]\n";
    Write("B.reg", key + "\"v\"=\"B\"\n");
    Write("a.reg", key + "\"v\"=\"a\"\n\"w\"=\"a\"\n");
    Write("_last.REG", key + "\"w\"=\"last\"\n");
    Write("z.txt", "no export");
    EXPECT_EQ(Load(), "");
    EXPECT_EQ(Key(u"T").Text(u"v"), u"B");
    EXPECT_EQ(Key(u"T").Text(u"w"), u"last");
}

TEST_F(RegistryFilesTest, SymbolicLinkToAPlaceOutside_IsNotReadButOneInsideIs) {
    std::error_code error;
    Write("target.txt", kVersion + "[HKEY_LOCAL_MACHINE\\Inside]\n");
    std::filesystem::create_symlink("target.txt", m_folder / "registry" / "inside.reg", error);
    if (error) GTEST_SKIP() << "no symbolic links here";
    EXPECT_EQ(Load(), "");
    EXPECT_TRUE(m_store.HasKey(u"HKLM\\Inside"));
    std::filesystem::create_symlink("/etc/passwd", m_folder / "registry" / "outside.reg");
    EXPECT_NE(Load().find("outside.reg: is a symbolic link to a place outside of its source"), std::string::npos);
    std::filesystem::remove(m_folder / "registry" / "outside.reg");
    std::filesystem::create_symlink("self.reg", m_folder / "registry" / "self.reg");
    EXPECT_NE(Load().find("self.reg: cannot be read"), std::string::npos);
}

}  // namespace

}  // namespace roundup
