#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

constexpr const char16_t* kFile = u"C:\\Set\\one.ini";

std::string Utf16(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (const char16_t c : text) {
        bytes.push_back(static_cast<char>(c & 0xFF));
        bytes.push_back(static_cast<char>(c >> 8));
    }
    return bytes;
}

class ProfileContract : public ContractTest {
  protected:
    void SetUp() override {
        builder
            .File(kFile,
                  "lost=before any section\r\n"
                  "; comment=no key\r\n"
                  "  [First]  \r\n"
                  "plain = value with blanks  \r\n"
                  "double=\"quoted \" \r\n"
                  "single=' quoted'\n"
                  "mixed=\"not quoted'\r\n"
                  "quotes=\"\"\r\n"
                  "one=\"\r\n"
                  "noequals\r\n"
                  "; note=hidden\r\n"
                  "plain=second is not seen\r\n"
                  "empty=\r\n"
                  "equals=a=b\r\n"
                  "[Second]\r\n"
                  "key=2\r\n"
                  "[first]\r\n"
                  "late=not reached\r\n"
                  "[unclosed\r\n")
            .File(u"C:\\Set\\wide.ini", Utf16(u"[\u00DCber]\r\nn\u00E4me=\u4E2D\u6587\r\n"))
            .File(u"C:\\Set\\utf8.ini", "\xEF\xBB\xBF[s]\nk=\xC3\xA4\n")
            .File(u"C:\\Set\\ansi.ini", "[s]\nk=\xE4\x80\n");
    }
    std::u16string Get(const char16_t* section, const char16_t* key, const char16_t* path = kFile,
                       const char16_t* fallback = u"none  ") {
        char16_t buffer[200];
        const std::uint32_t length = CurrentMachine().Profile().GetString(section, key, fallback, buffer, 200, path);
        // Of lists the zeros between the texts are shown as "|".
        std::u16string text(buffer, length);
        std::replace(text.begin(), text.end(), u'\0', u'|');
        return text;
    }
    std::string Bytes(const char16_t* path) { return ReadFile(CurrentMachine().Files(), path); }
};

TEST_P(ProfileContract, GetString_FollowsTheRulesOfProfiles) {
    struct Case {
        const char16_t* section;
        const char16_t* key;
        const char16_t* value;
        const char16_t* path = kFile;
    };
    const Case cases[] = {
        {u"First", u"plain", u"value with blanks"},
        {u"FIRST", u" Plain ", u"value with blanks"},
        {u"First", u"double", u"quoted "},
        {u"First", u"single", u" quoted"},
        {u"First", u"mixed", u"\"not quoted'"},
        {u"First", u"quotes", u""},
        {u"First", u"one", u"\""},
        {u"First", u"noequals", u"none"},
        {u"First", u"; note", u"none"},
        {u"First", u"empty", u""},
        {u"First", u"equals", u"a=b"},
        {u"First", u"late", u"none"},
        {u"Second", u"key", u"2"},
        {u"", u"lost", u"none"},
        {u"absent", u"key", u"none"},
        {nullptr, nullptr, u"First|Second|first|"},
        {u"Second", nullptr, u"key|"},
        {u"First", nullptr, u"plain|double|single|mixed|quotes|one|plain|empty|equals|"},
        {u"\u00FCBER", u"N\u00C4ME", u"\u4E2D\u6587", u"C:\\Set\\wide.ini"},
        {u"s", u"k", u"\u00E4", u"C:\\Set\\utf8.ini"},
        {u"s", u"k", u"\u00E4\u20AC", u"C:\\Set\\ansi.ini"},
        {u"s", u"k", u"none", u"C:\\Set\\absent.ini"},
        {nullptr, nullptr, u"none", u"C:\\Set\\absent.ini"},
    };
    StartKind();
    for (const Case& one : cases) EXPECT_EQ(Get(one.section, one.key, one.path), one.value);
    EXPECT_EQ(Get(u"First", u"absent", kFile, nullptr), u"");
}

TEST_P(ProfileContract, SmallBuffers_CutTextsAndLists) {
    struct Case {
        const char16_t* key;
        std::uint32_t size;
        std::u16string_view buffer;  // all of it, with what must not be touched behind
        std::uint32_t result;
    };
    using namespace std::literals;
    const Case cases[] = {
        {u"plain", 6, u"value\0#"sv, 5}, {u"plain", 1, u"\0######"sv, 0}, {u"plain", 0, u"#######"sv, 0},
        {nullptr, 7, u"plain\0\0"sv, 5}, {nullptr, 5, u"pla\0\0##"sv, 3}, {nullptr, 2, u"\0\0#####"sv, 0},
        {nullptr, 1, u"\0######"sv, 0},
    };
    IProfile& profile = StartKind().Profile();
    for (const Case& one : cases) {
        std::u16string buffer(7, u'#');
        EXPECT_EQ(profile.GetString(u"First", one.key, u"", buffer.data(), one.size, kFile), one.result);
        EXPECT_EQ(buffer.substr(0, one.size == 7 ? 7 : one.size + 1),
                  one.buffer.substr(0, one.size == 7 ? 7 : one.size + 1));
    }
    char16_t whole[8];
    EXPECT_EQ(profile.GetString(u"Second", nullptr, u"", whole, 8, kFile), 4U);
    EXPECT_EQ(std::u16string_view(whole, 5), u"key\0\0"sv);
}

TEST_P(ProfileContract, WriteString_ChangesItsLineAlone) {
    IProfile& profile = StartKind().Profile();
    const char16_t* path = u"C:\\Set\\new.ini";
    EXPECT_TRUE(profile.WriteString(u"gone", u"key", nullptr, path));
    EXPECT_EQ(Bytes(path), "error 2");
    EXPECT_TRUE(profile.WriteString(u"A", u"x", u"1", path));
    EXPECT_TRUE(profile.WriteString(u"B", u"y", u"\u00E4", path));
    EXPECT_TRUE(profile.WriteString(u"a", u"z", u"2", path));
    EXPECT_TRUE(profile.WriteString(u"A", u"X", u"11", path));
    EXPECT_EQ(Bytes(path), "[A]\r\nx=11\r\nz=2\r\n[B]\r\ny=\xC3\xA4\r\n");
    EXPECT_TRUE(profile.WriteString(u"A", u"x", nullptr, path));
    EXPECT_TRUE(profile.WriteString(u"b", nullptr, nullptr, path));
    EXPECT_TRUE(profile.WriteString(u"absent", nullptr, nullptr, path));
    EXPECT_EQ(Bytes(path), "[A]\r\nz=2\r\n");
    EXPECT_FALSE(profile.WriteString(nullptr, nullptr, nullptr, path));
    EXPECT_FALSE(profile.WriteString(u"A", u"x", u"1", u"C:\\absent\\new.ini"));
}

TEST_P(ProfileContract, WriteString_KeepsEncodingCommentsAndLastLine) {
    IProfile& profile = StartKind().Profile();
    EXPECT_TRUE(profile.WriteString(u"\u00DCber", u"k", u"v", u"C:\\Set\\wide.ini"));
    EXPECT_EQ(Bytes(u"C:\\Set\\wide.ini"), Utf16(u"[\u00DCber]\r\nn\u00E4me=\u4E2D\u6587\r\nk=v\r\n"));
    EXPECT_TRUE(profile.WriteString(u"s", u"K", u"\u20AC\u4E2D", u"C:\\Set\\ansi.ini"));
    EXPECT_EQ(Bytes(u"C:\\Set\\ansi.ini"), "[s]\nk=\x80?\n");
    EXPECT_TRUE(profile.WriteString(u"Second", u"more", u"3", kFile));
    const std::string bytes = Bytes(kFile);
    EXPECT_NE(bytes.find("[Second]\r\nkey=2\r\nmore=3\r\n[first]"), std::string::npos);
    EXPECT_EQ(bytes.find("lost=before"), 0U);
}

INSTANTIATE_TEST_SUITE_P(Machines, ProfileContract,
                         ::testing::Values(MachineKind::InMemory, MachineKind::RecordedFolder), KindName);

}  // namespace
}  // namespace roundup
