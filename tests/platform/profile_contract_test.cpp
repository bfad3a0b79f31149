#include "tests/platform/contracttest.h"

namespace roundup {
namespace {

using namespace std::literals;

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
        StartKind();
        m_folder = TempPath(u"roundup-set\\");
        (void)CurrentMachine().Files().CreateDirectory(m_folder.c_str());
        (void)CurrentMachine().Files().Delete(At(u"C:\\Set\\new.ini").c_str());
        Put(kFile,
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
            "[unclosed\r\n");
        Put(u"C:\\Set\\wide.ini", Utf16(u"[\u00DCber]\r\nn\u00E4me=\u4E2D\u6587\r\n"));
        Put(u"C:\\Set\\utf8.ini", "\xEF\xBB\xBF[s]\nk=\xC3\xA4\n");
        Put(u"C:\\Set\\ansi.ini", "[s]\nk=\xE4\x80\n");
    }
    // The tests' folder lies in the temporary one.
    std::u16string At(std::u16string_view path) const {
        constexpr std::u16string_view kFolder = u"C:\\Set\\";
        return path.starts_with(kFolder) ? m_folder + std::u16string(path.substr(kFolder.size()))
                                         : std::u16string(path);
    }
    void Put(const char16_t* path, const std::string& bytes) {
        ASSERT_EQ(WriteFile(CurrentMachine().Files(), At(path), kCreateAlways, bytes), kErrorSuccess);
    }
    std::u16string Get(const char16_t* section, const char16_t* key, const char16_t* path = kFile,
                       const char16_t* fallback = u"none  ") {
        char16_t buffer[200];
        const std::uint32_t length =
            CurrentMachine().Profile().GetString(section, key, fallback, buffer, 200, At(path).c_str());
        // Of lists the zeros between the texts are shown as "|".
        std::u16string text(buffer, length);
        std::replace(text.begin(), text.end(), u'\0', u'|');
        return text;
    }
    static bool IsLive() { return GetParam() == MachineKind::Live; }
    std::string Bytes(const char16_t* path) { return ReadFile(CurrentMachine().Files(), At(path)); }

    std::u16string m_folder;
};

TEST_P(ProfileContract, GetString_FollowsTheRulesOfProfiles) {
    struct Case {
        const char16_t* section;
        const char16_t* key;
        const char16_t* value;
        const char16_t* path = kFile;
        bool asWine = true;  // Wine answers this too (docs/wine.md)
    };
    const Case cases[] = {
        {u"First", u"plain", u"value with blanks"},
        {u"FIRST", u" Plain ", u"value with blanks"},
        {u"First", u"double", u"quoted "},
        {u"First", u"single", u" quoted"},
        {u"First", u"quotes", u""},
        {u"First", u"one", u"\""},
        {u"First", u"noequals", u"none"},
        {u"First", u"; note", u"none", kFile, false},
        {u"First", u"equals", u"a=b"},
        {u"First", u"late", u"none"},
        {u"", u"lost", u"none", kFile, false},
        {nullptr, nullptr, u"First|Second|first|"},
        {u"First", nullptr, u"plain|double|single|mixed|quotes|one|plain|empty|equals|"},
        {u"\u00FCBER", u"N\u00C4ME", u"\u4E2D\u6587", u"C:\\Set\\wide.ini", false},
        {u"s", u"k", u"\u00E4", u"C:\\Set\\utf8.ini"},
        {u"s", u"k", u"\u00E4\u20AC", u"C:\\Set\\ansi.ini"},
        {u"s", u"k", u"none", u"C:\\Set\\absent.ini"},
    };
    for (const Case& one : cases) {
        if (IsLive() && !one.asWine) continue;
        EXPECT_EQ(Get(one.section, one.key, one.path), one.value);
    }
    EXPECT_EQ(Get(u"First", u"absent", kFile, nullptr), u"");
}

TEST_P(ProfileContract, SmallBuffers_CutTextsAndLists) {
    struct Case {
        const char16_t* key;
        std::uint32_t size;
        std::u16string_view buffer;  // all of it, with what must not be touched behind
        std::uint32_t result;
    };
    const Case cases[] = {
        {u"plain", 6, u"value\0#"sv, 5}, {u"plain", 1, u"\0######"sv, 0}, {u"plain", 0, u"#######"sv, 0},
        {nullptr, 7, u"plain\0\0"sv, 5}, {nullptr, 5, u"pla\0\0##"sv, 3}, {nullptr, 2, u"\0\0#####"sv, 0},
        {nullptr, 1, u"\0######"sv, 0},
    };
    IProfile& profile = CurrentMachine().Profile();
    for (const Case& one : cases) {
        // Of a list that has no room Wine ends the first text alone.
        if (IsLive() && one.key == nullptr && one.size == 2) continue;
        std::u16string buffer(7, u'#');
        EXPECT_EQ(profile.GetString(u"First", one.key, u"", buffer.data(), one.size, At(kFile).c_str()), one.result);
        EXPECT_EQ(buffer.substr(0, one.size == 7 ? 7 : one.size + 1),
                  one.buffer.substr(0, one.size == 7 ? 7 : one.size + 1));
    }
}

TEST_P(ProfileContract, WriteString_ChangesItsLineAlone) {
    IProfile& profile = CurrentMachine().Profile();
    const char16_t* path = u"C:\\Set\\new.ini";
    EXPECT_TRUE(profile.WriteString(u"gone", u"key", nullptr, At(path).c_str()));
    EXPECT_EQ(Bytes(path), "error 2");
    EXPECT_TRUE(profile.WriteString(u"A", u"x", u"1", At(path).c_str()));
    EXPECT_TRUE(profile.WriteString(u"B", u"y", u"\u00E4", At(path).c_str()));
    EXPECT_TRUE(profile.WriteString(u"a", u"z", u"2", At(path).c_str()));
    EXPECT_TRUE(profile.WriteString(u"A", u"X", u"11", At(path).c_str()));
    EXPECT_EQ(Bytes(path), "[A]\r\nx=11\r\nz=2\r\n[B]\r\ny="s + (IsLive() ? "\xE4" : "\xC3\xA4") + "\r\n");
    EXPECT_TRUE(profile.WriteString(u"A", u"x", nullptr, At(path).c_str()));
    EXPECT_TRUE(profile.WriteString(u"b", nullptr, nullptr, At(path).c_str()));
    EXPECT_TRUE(profile.WriteString(u"absent", nullptr, nullptr, At(path).c_str()));
    EXPECT_EQ(Bytes(path), "[A]\r\nz=2\r\n");
    EXPECT_FALSE(profile.WriteString(nullptr, nullptr, nullptr, At(path).c_str()));
    EXPECT_FALSE(profile.WriteString(u"A", u"x", u"1", At(u"C:\\absent\\new.ini").c_str()));
}

TEST_P(ProfileContract, WriteString_KeepsEncodingCommentsAndLastLine) {
    IProfile& profile = CurrentMachine().Profile();
    EXPECT_TRUE(profile.WriteString(u"\u00DCber", u"k", u"v", At(u"C:\\Set\\wide.ini").c_str()));
    EXPECT_EQ(Bytes(u"C:\\Set\\wide.ini"), Utf16(u"[\u00DCber]\r\nn\u00E4me=\u4E2D\u6587\r\nk=v\r\n"));
    EXPECT_TRUE(profile.WriteString(u"s", u"K", u"\u20AC\u4E2D", At(u"C:\\Set\\ansi.ini").c_str()));
    // Wine writes its own line ends throughout.
    EXPECT_EQ(Bytes(u"C:\\Set\\ansi.ini"), IsLive() ? "[s]\r\nk=\x80?\r\n" : "[s]\nk=\x80?\n");
    EXPECT_TRUE(profile.WriteString(u"Second", u"more", u"3", At(kFile).c_str()));
    const std::string bytes = Bytes(kFile);
    EXPECT_NE(bytes.find("[Second]\r\nkey=2\r\nmore=3\r\n[first]"), std::string::npos);
    EXPECT_EQ(bytes.find("lost=before"), 0U);
}

INSTANTIATE_TEST_SUITE_P(Machines, ProfileContract, ::testing::ValuesIn(AllMachineKinds()), KindName);

}  // namespace
}  // namespace roundup
