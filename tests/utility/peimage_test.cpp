#include "utility/peimage.h"

#include <string>

#include "tests/support/machinetest.h"

namespace roundup {
namespace {

class PeImageTest : public MachineTest {};

std::string Word(std::uint32_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(value >> (8 * i));
    return text;
}

// An image of size bytes whose second header stands at offset.
std::string Image(std::uint32_t magic, std::size_t size = 1024, std::size_t offset = 64) {
    std::string image =
        "MZ" + std::string(58, '\0') + Word(static_cast<std::uint32_t>(offset), 4) + std::string(size, '\0');
    if (offset + 26 <= image.size()) image.replace(offset, 4, Word(17744, 4)).replace(offset + 24, 2, Word(magic, 2));
    image.resize(size);
    return image;
}

TEST_F(PeImageTest, Magic_DecidesAndBrokenFilesAreNeither) {
    const struct {
        std::u16string_view path;
        std::string bytes;
        bool is32, is64;
    } cases[] = {
        {u"C:\\t\\32.EXE", Image(267), true, false},
        {u"C:\\t\\64.dll", Image(523), false, true},
        {u"C:\\t\\32.txt", Image(267), false, false},
        {u"C:\\t\\at the end.exe", Image(267, 1024, 1024 - 264), true, false},
        {u"C:\\t\\cut.exe", Image(267, 1024, 1024 - 263), false, false},
        {u"C:\\t\\beyond.sys", Image(267, 1024, 0xFFFFFF00U), false, false},
        {u"C:\\t\\overlapping.com", Image(267, 1024, 0), false, false},
        {u"C:\\t\\empty.com", "", false, false},
        {u"C:\\Windows\\System32\\any.cpl", "x", false, true},
        {u"C:\\Windows\\SysWOW64\\any.cpl", "x", true, false},
        {u"C:\\Windows\\System32\\32.exe", Image(267), true, true},
    };
    for (const auto& c : cases) builder.File(c.path, c.bytes);
    builder.Folder(u"C:\\t\\folder.exe");
    Start();
    for (const auto& c : cases) {
        const std::u16string path(c.path);
        EXPECT_EQ(IsPe32(path.c_str()), c.is32) << std::string(path.begin(), path.end());
        EXPECT_EQ(IsPe32Plus(path.c_str()), c.is64) << std::string(path.begin(), path.end());
    }
    for (const char16_t* path : {u"C:\\Windows\\SysWOW64\\none.exe", u"C:\\t\\none.exe", u"C:\\t\\folder.exe", u""}) {
        EXPECT_FALSE(IsPe32(path));
        EXPECT_FALSE(IsPe32Plus(path));
    }
}

TEST_F(PeImageTest, ThirtyTwoBitSystem_Has32BitImagesAlone) {
    builder.Architecture(kArchitectureIntel).File(u"C:\\64.exe", Image(523));
    Start();
    EXPECT_TRUE(IsPe32(u"C:\\64.exe"));
    EXPECT_TRUE(IsPe32(u"C:\\none"));
    EXPECT_FALSE(IsPe32Plus(u"C:\\64.exe"));
}

}  // namespace
}  // namespace roundup
