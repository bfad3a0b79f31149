// Owned strings, fixed arrays, UTF-8 and the containers of texts.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "utility/fixedtext.h"
#include "utility/guid.h"
#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"
#include "utility/utf.h"

namespace roundup {
namespace {

TEST(OwnedString, PartOfItself_AssignsWithoutReadingFreedMemory) {
    OwnedString text(u"C:\\Tools\\one.exe");
    EXPECT_TRUE(text.Assign(text.View().substr(3, 5)));
    EXPECT_EQ(text.View(), u"Tools");
    EXPECT_TRUE(AssignConcat(text, text, text));
    EXPECT_EQ(text.View(), u"ToolsTools");
}

// What answers null, such as the name of an application, goes straight into the string functions.
TEST(OwnedString, NullPointer_CountsAsEmptyText) {
    const char16_t* const none = nullptr;
    OwnedString text(u"old");
    EXPECT_TRUE(AssignString(text, none));
    EXPECT_TRUE(AssignConcat3(text, u"a", none, u"c"));
    EXPECT_TRUE(text.IsNull());
    EXPECT_FALSE(EndsWithNoCase(none, u"a") || EndsWithNoCase(u"a", none));
    EXPECT_FALSE(ContainsNoCase(none, u"a") || ContainsNoCase(u"a", none));
    FixedText<4> array(u"old");
    CopyBounded(array.Data(), none, 4);
    EXPECT_TRUE(array.IsEmpty());
    EXPECT_EQ(CStringMap().Find(none), nullptr);
    EXPECT_TRUE(ParseGuid(none, GuidForm::Braced).IsNil());
}

TEST(OwnedString, MoreThanMemory_GivesNullAndFalse) {
    OwnedString text(u"old");
    EXPECT_FALSE(text.Allocate(std::u16string_view::npos));
    EXPECT_TRUE(text.IsNull());
    EXPECT_FALSE(text.Allocate(std::u16string_view::npos / 2));
}

TEST(CopyBounded, SourcesAroundTheSize_CutToTheArray) {
    for (const std::size_t length : {258U, 259U, 260U, 300U}) {
        char16_t array[261];
        std::fill(std::begin(array), std::end(array), u'#');
        CopyBounded(array, std::u16string(length, u'x'), 260);
        EXPECT_EQ(std::u16string_view(array).size(), std::min<std::size_t>(length, 259));
        EXPECT_EQ(array[260], u'#');
    }
    FixedText<4> text(u"ab\U0001F600");
    EXPECT_EQ(text.View(), u"ab");
    EXPECT_FALSE(text.Append(u"cd"));
    EXPECT_EQ(text.View(), u"abc");
}

TEST(NoCaseSearch, EndingsAndParts_AreFoundInAnyCaseAndEmptyTextsNever) {
    const std::tuple<std::u16string_view, std::u16string_view, bool, bool> rows[] = {
        {u"Setup.EXE", u".exe", true, true}, {u"Setup.EXE", u"SETUP", true, false},
        {u"exe", u".exe", false, false},     {u"\u00C9cole", u"\u00E9C", true, false},
        {u"a", u"", false, false},           {u"xabcx", u"bx", false, false},
    };
    for (const auto& [text, part, contains, ends] : rows) {
        EXPECT_EQ(ContainsNoCase(text, part), contains) << ToUtf8(text);
        EXPECT_EQ(EndsWithNoCase(text, part), ends) << ToUtf8(text);
    }
}

TEST(Utf, InvalidInput_BecomesReplacementCharactersByMaximalPieces) {
    struct Row {
        std::string_view bytes;
        std::u16string_view text;
        std::size_t fault;  // npos: valid
    };
    constexpr std::size_t kValid = std::string_view::npos;
    const Row rows[] = {
        {"a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80", u"a\u00E9\u20AC\U0001F600", kValid},
        {"\xF4\x8F\xBF\xBF\xED\x9F\xBF\xEE\x80\x80", u"\U0010FFFF\uD7FF\uE000", kValid},
        {"\xC0\xAF", u"\uFFFD\uFFFD", 0},            // overlong
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 0},  // surrogate
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},
        {"x\xE2\x82y", u"x\uFFFDy", 1},  // cut sequence: one piece
        {"\xE2\xE2\x82\xAC", u"\uFFFD\u20AC", 0},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(FromUtf8(row.bytes), row.text);
        std::u16string strict = u"before";
        std::size_t fault = kValid;
        EXPECT_EQ(FromUtf8Strict(row.bytes, strict, fault), row.fault == kValid);
        EXPECT_EQ(fault, row.fault);
        EXPECT_EQ(strict, row.fault == kValid ? row.text : u"before");
        EXPECT_EQ(ToUtf8(row.text) == row.bytes, row.fault == kValid);
    }
    const char16_t unpaired[] = {0xD800, u'a', 0xDC00, 0xD83D};
    EXPECT_EQ(ToUtf8({unpaired, 4}),
              "\xEF\xBF\xBD"
              "a"
              "\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(StringContainers, KeysThatDifferInCase_AreOneAndTheFirstStays) {
    CStringSet set;
    EXPECT_TRUE(set.Add(u"\u00C9cole"));
    EXPECT_TRUE(set.Add(u"\u00E9COLE"));
    EXPECT_TRUE(set.Add(u""));
    EXPECT_TRUE(set.Add(OwnedString(u"_")));
    EXPECT_TRUE(set.Add(u"A"));
    std::vector<std::u16string> order;
    for (const OwnedString& text : set) order.emplace_back(text);
    EXPECT_EQ(order, (std::vector<std::u16string>{u"", u"_", u"A", u"\u00C9cole"}));
    set.Remove(u"a");
    EXPECT_FALSE(set.Contains(u"A"));
}

TEST(StringMap, KeyThatIsThere_KeepsItsValueAndTellsWhetherTheNewOneIsTheSame) {
    CStringMap map;
    EXPECT_TRUE(map.Add(u"Key", u"Value"));
    EXPECT_TRUE(map.Add(u"KEY", u"VALUE"));
    EXPECT_FALSE(map.Add(u"key", u"other"));
    EXPECT_FALSE(map.Add(u"", u"value"));
    EXPECT_FALSE(map.Add(u"empty", u""));
    ASSERT_NE(map.Find(u"kEY"), nullptr);
    EXPECT_EQ(map.Find(u"kEY")->View(), u"Value");
    EXPECT_EQ(map.size(), 1U);
}

}  // namespace
}  // namespace roundup
