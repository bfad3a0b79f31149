#include "utility/ininumber.h"

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class IniNumberTest : public MachineTest {};

// The platform's own readings of texts that are no plain number.
TEST_F(IniNumberTest, Values_ReadAsThePlatformReadsThem) {
    const struct {
        const char* value;
        std::uint32_t number;
    } cases[] = {
        {"0", 0},     {"17", 17},        {"+8", 8},     {"-1", 0xFFFFFFFF}, {"0x1F", 31}, {"0b101", 5},
        {"0o17", 15}, {"12 apples", 12}, {"apples", 0}, {"4294967297", 1},  {"-", 0},     {"0x", 0},
        {"\"7\"", 7}, {"1.9", 1},        {"- 4", 0},    {"", 99},           {"0X10", 0},  {"08", 8},
    };
    std::string text = "[s]\r\n";
    for (std::size_t i = 0; i < std::size(cases); ++i) text += "k" + std::to_string(i) + "=" + cases[i].value + "\r\n";
    builder.File(u"C:\\n.ini", text);
    Start();
    for (std::size_t i = 0; i < std::size(cases); ++i) {
        std::u16string key = u"k";
        for (const char c : std::to_string(i)) key += static_cast<char16_t>(c);
        EXPECT_EQ(ReadIniNumber(u"s", key.c_str(), 99, u"C:\\n.ini"), cases[i].number) << cases[i].value;
    }
    EXPECT_EQ(ReadIniNumber(u"s", u"absent", 99, u"C:\\n.ini"), 99U);
    EXPECT_EQ(ReadIniNumber(u"s", u"k1", 99, u"C:\\absent.ini"), 99U);
}

}  // namespace
}  // namespace roundup
