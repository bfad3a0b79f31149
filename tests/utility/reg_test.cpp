#include "utility/reg.h"

#include <string>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

using namespace std::string_literals;

constexpr char16_t kTool[] = u"SOFTWARE\\Tool";
constexpr std::u16string_view kToolPath = u"HKLM\\SOFTWARE\\Tool";

class RegTest : public MachineTest {
  protected:
    // A key of the test, opened as the sources do.
    void OpenTool(bool write = false) { ASSERT_TRUE(Succeeded(key.Open(kHkeyLocalMachine, kTool, true, write))); }

    CWFYRegKey key;
};

// A length taken for the terminator's place, a type test, or what the last read left in the buffer.
TEST_F(RegTest, GetString_ReadsForeignBytesAsText) {
    const struct {
        const char16_t* name;
        std::uint32_t type;
        std::string bytes;
        std::u16string text;
        std::size_t count;
    } cases[] = {
        {u"unterminated", kRegSz, "A\0B\0"s, u"AB", 2},
        {u"half a character", kRegSz, "A\0B"s, u"AB", 1},
        {u"zero inside", kRegSz, "A\0\0\0B\0\0\0"s, u"A", 4},
        {u"not expanded", kRegExpandSz, "%\0x\0%\0"s, u"%x%", 3},
        {u"binary of one byte", kRegBinary, "A"s, u"A", 0},
        {u"list without its ends", kRegMultiSz, "A\0\0\0B\0"s, u"A\0B"s, 3},
        {u"list with half a character", kRegMultiSz, "A\0B"s, u"A", 1},
    };
    builder.Value(kToolPath, u"filler", kRegSz, std::string(200, 'x'));
    for (const auto& c : cases) builder.Value(kToolPath, c.name, c.type, c.bytes);
    Start();
    OpenTool();
    for (const auto& c : cases) {
        OwnedString text;
        std::size_t count = 99;
        ASSERT_TRUE(Succeeded(key.GetString(u"filler", text)));
        ASSERT_TRUE(Succeeded(key.GetString(c.name, text, &count)));
        EXPECT_EQ(text.View(), c.text) << std::string(c.name, c.name + 4);
        EXPECT_EQ(text.IsNull(), c.text.empty());
        EXPECT_EQ(count, c.count);
    }
}

TEST_F(RegTest, LongestValueWithoutTerminator_EndsAtItsLastByte) {
    for (const std::size_t bytes : {1U, 630U, 633U, 638U, 640U, 641U, 65535U, 1048577U}) {
        builder = {};
        builder.Value(kToolPath, u"v", kRegSz, std::string(bytes, 'x'));
        Start();
        CWFYRegKey tool;
        ASSERT_TRUE(Succeeded(tool.Open(kHkeyLocalMachine, kTool, true, false)));
        OwnedString text;
        std::size_t count = 0;
        ASSERT_TRUE(Succeeded(tool.GetString(u"v", text, &count)));
        EXPECT_EQ(text.Length(), (bytes + 1) / 2);
        EXPECT_EQ(count, bytes / 2);
    }
}

TEST_F(RegTest, Numbers_TakeAnyTypeButNothingLonger) {
    builder.Dword(kToolPath, u"dword", 0x12345678).Qword(kToolPath, u"qword", 0x1122334455667788U);
    builder.Binary(kToolPath, u"byte", "\x7F").Binary(kToolPath, u"nine", "123456789");
    Start();
    OpenTool();
    const struct {
        const char16_t* name;
        Win32Error dwordError;
        std::uint32_t dword;
        Win32Error qwordError;
        std::uint64_t qword;
    } cases[] = {
        {u"dword", 0, 0x12345678, 0, 0x12345678},
        {u"qword", kErrorMoreData, 0, 0, 0x1122334455667788U},
        {u"byte", 0, 0x7F, 0, 0x7F},
        {u"nine", kErrorMoreData, 0, kErrorMoreData, 0},
        {u"absent", kErrorFileNotFound, 0, kErrorFileNotFound, 0},
    };
    for (const auto& c : cases) {
        std::uint32_t dword = 7;
        std::uint64_t qword = 7;
        EXPECT_EQ(Win32Of(key.GetDword(c.name, dword)), c.dwordError);
        EXPECT_EQ(dword, c.dword);
        EXPECT_EQ(Win32Of(key.GetQword(c.name, qword)), c.qwordError);
        EXPECT_EQ(qword, c.qword);
    }
}

TEST_F(RegTest, Walk_GivesAllNamesThenNoMoreItems) {
    const std::u16string longName(255, u'k');
    builder.Key(u"HKLM\\SOFTWARE\\Tool\\b").Key(u"HKLM\\SOFTWARE\\Tool\\A");
    builder.Key(std::u16string(kToolPath) + u"\\" + longName);
    builder.Text(kToolPath, u"z", u"1").Dword(kToolPath, u"", 2).Text(kToolPath, std::u16string(300, u'n'), u"lost");
    builder.Text(kToolPath, u"y", u"3");
    Start();
    OpenTool();
    OwnedString name;
    for (const std::u16string& expected : {std::u16string(u"A"), std::u16string(u"b"), longName}) {
        ASSERT_TRUE(Succeeded(key.EnumKey(name)));
        EXPECT_EQ(name.View(), expected);
    }
    EXPECT_EQ(Small(key.EnumKey(name)), SmallCode::NoMoreItems);

    RegValueBlock block;
    ASSERT_TRUE(Succeeded(key.EnumValue(name, block)));
    EXPECT_EQ(name.View(), u"z");
    ASSERT_TRUE(Succeeded(key.EnumValue(name, block)));
    EXPECT_TRUE(name.IsNull());
    EXPECT_EQ(block.Type(), kRegDword);
    EXPECT_EQ(block.Size(), 4U);
    EXPECT_EQ(block.Data()[0], std::byte{2});
    EXPECT_EQ(Win32Of(key.EnumValue(name, block)), kErrorMoreData);  // the walk goes on behind the long name
    ASSERT_TRUE(Succeeded(key.EnumValue(name, block)));
    EXPECT_EQ(name.View(), u"y");
    EXPECT_EQ(Small(key.EnumValue(name, block)), SmallCode::NoMoreItems);
}

TEST_F(RegTest, AccessThatIsDenied_FallsBackToReadingOrFails) {
    builder.Text(kToolPath, u"v", u"text").ReadOnlyKey(kToolPath);
    builder.Key(u"HKLM\\SOFTWARE\\Locked").DenyKey(u"HKLM\\SOFTWARE\\Locked");
    Start();
    OpenTool(true);
    OwnedString text;
    EXPECT_TRUE(Succeeded(key.GetString(u"v", text)));
    const ResultCode set = key.SetValue(u"v", kRegSz, u"x", 4);
    EXPECT_EQ(Win32Of(set), kErrorAccessDenied);
    EXPECT_EQ(Win32Of(key.DeleteValue(u"v")), kErrorAccessDenied);
    EXPECT_EQ(Small(key.DeleteValue(nullptr)), SmallCode::GeneralFailure);

    CWFYRegKey failed;
    EXPECT_EQ(Win32Of(failed.Open(kHkeyLocalMachine, u"SOFTWARE\\Locked", true, true)), kErrorAccessDenied);
    EXPECT_EQ(Win32Of(failed.Open(kHkeyLocalMachine, u"SOFTWARE\\Absent", true, false)), kErrorFileNotFound);
    EXPECT_EQ(Small(failed.GetString(u"v", text)), SmallCode::GeneralFailure);
    EXPECT_EQ(Small(failed.EnumKey(text)), SmallCode::NoMoreItems);
}

TEST_F(RegTest, OpenOrCreate_WritesButDoesNotRead) {
    Start();
    ASSERT_TRUE(Succeeded(key.OpenOrCreate(kHkeyLocalMachine, kTool, true)));
    ASSERT_TRUE(Succeeded(key.SetValue(u"v", kRegSz, u"text", 10)));
    OwnedString text;
    RegValueBlock block;
    EXPECT_EQ(Small(key.GetString(u"v", text)), SmallCode::GeneralFailure);
    EXPECT_EQ(Small(key.QueryValue(u"v", block)), SmallCode::GeneralFailure);
    OpenTool();
    ASSERT_TRUE(Succeeded(key.QueryValue(u"v", block)));
    EXPECT_EQ(block.Size(), 10U);
}

}  // namespace
}  // namespace roundup
