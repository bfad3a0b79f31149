// Icons of recorded machines: choice, decoding, stretching, and files that break off or lie.
#include <tuple>

#include "tests/support/iconfiles.h"
#include "tests/support/machinefiles.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

constexpr std::uint32_t kRed = 0xFF0000;
constexpr std::uint32_t kBlue = 0x0000FF;

bool Left(std::uint32_t x, std::uint32_t) { return x < 16; }
bool TopLine(std::uint32_t, std::uint32_t y) { return y == 0; }

// An icon as bitmaps, rows from the top down.
struct Picture {
    BitmapShape color;  // all 0: none
    BitmapShape mask;
    std::vector<std::uint32_t> pixels;
    std::vector<bool> transparent;
};

class RecordedIconsTest : public MachineTest {
  protected:
    // The file is one of the machine that runs, so that one machine takes many.
    void Place(const char16_t* path, std::string_view bytes) {
        if (!m_running) Start();
        m_running = true;
        ASSERT_EQ(WriteFile(CurrentMachine().Files(), path, kCreateAlways, bytes), kErrorSuccess);
    }

    static std::optional<Picture> Take(IconHandle icon) {
        if (icon == 0) return std::nullopt;
        IShell& shell = CurrentMachine().Shell();
        IconBitmaps bitmaps;
        EXPECT_TRUE(shell.GetIconBitmaps(icon, bitmaps));
        shell.DestroyIcon(icon);
        EXPECT_FALSE(shell.GetIconBitmaps(icon, bitmaps));
        Picture picture;
        EXPECT_TRUE(shell.GetBitmapShape(bitmaps.mask, picture.mask));
        const std::vector<std::uint32_t> mask = Words(bitmaps.mask, picture.mask);
        const std::size_t stride = (static_cast<std::size_t>(picture.mask.width) + 31) / 32;
        for (std::size_t y = static_cast<std::size_t>(picture.mask.height); y-- > 0;) {
            for (std::size_t x = 0; x < static_cast<std::size_t>(picture.mask.width); ++x) {
                const std::uint32_t word = mask[y * stride + x / 32];
                picture.transparent.push_back((word >> (x % 32 / 8 * 8 + 7 - x % 8) & 1) != 0);
            }
        }
        if (bitmaps.color == 0) return picture;
        EXPECT_TRUE(shell.GetBitmapShape(bitmaps.color, picture.color));
        const std::vector<std::uint32_t> color = Words(bitmaps.color, picture.color);
        const auto width = static_cast<std::size_t>(picture.color.width);
        for (std::size_t y = static_cast<std::size_t>(picture.color.height); y-- > 0;) {
            for (std::size_t x = 0; x < width; ++x) picture.pixels.push_back(color[y * width + x]);
        }
        return picture;
    }

    static std::optional<Picture> Large(const char16_t* path, std::int32_t index = 0) {
        return Both(path, index).first;
    }
    static std::pair<std::optional<Picture>, std::optional<Picture>> Both(const char16_t* path, std::int32_t index) {
        IconHandle large = 0;
        IconHandle small = 0;
        CurrentMachine().Shell().ExtractIcons(path, index, large, small);
        return {Take(large), Take(small)};
    }

  private:
    static std::vector<std::uint32_t> Words(BitmapHandle bitmap, const BitmapShape& shape) {
        IShell& shell = CurrentMachine().Shell();
        BitmapHeader header;
        header.width = shape.width;
        header.height = shape.height;
        header.planes = 1;
        header.bitCount = shape.bitsPerPixel;
        const std::uint32_t line = (static_cast<std::uint32_t>(shape.width) * shape.bitsPerPixel + 31) / 32 * 4;
        const std::uint32_t size = line * static_cast<std::uint32_t>(shape.height);
        std::vector<std::uint32_t> words(size / 4);
        EXPECT_FALSE(shell.GetBitmapBits(bitmap, header, words.data(), size - 1));
        EXPECT_TRUE(shell.GetBitmapBits(bitmap, header, words.data(), size));
        shell.DeleteBitmap(bitmap);
        EXPECT_FALSE(shell.GetBitmapBits(bitmap, header, words.data(), size));
        return words;
    }

    bool m_running = false;
};

// A single colour, to be recognised by.
IconPart Plain(std::uint32_t side, std::uint16_t bits, std::uint32_t color) {
    BitmapForm form{.width = side, .height = side, .bits = bits};
    if (bits <= 8) form.palette = {color, kBlue};
    return MakeBitmap(
        form, [&](auto, auto) { return bits <= 8 ? 0 : color; }, TopLine);
}

TEST_F(RecordedIconsTest, EveryDepth_GivesItsColoursAndMask) {
    struct Case {
        const char* name;
        BitmapForm form;
        std::uint32_t left, right;  // as stored
        std::uint32_t red, blue;    // as answered
    };
    std::vector<std::uint32_t> many(256, 0x123456);
    many[200] = kRed;
    many[7] = kBlue;
    const Case cases[] = {
        {"1 bit", {.bits = 1, .palette = {kRed, kBlue}}, 0, 1, kRed, kBlue},
        {"4 bits, short palette", {.bits = 4, .palette = {kBlue, kRed}}, 1, 9, kRed, 0},
        {"8 bits", {.bits = 8, .palette = many}, 200, 7, kRed, kBlue},
        {"16 bits", {.bits = 16}, 0x7C00, 0x0011, kRed, 0x8C},
        {"565", {.bits = 16, .channels = {0xF800, 0x7E0, 0x1F}}, 0xF820, 0x001F, 0xFF0400, kBlue},
        {"24 bits, old header", {.bits = 24, .core = true}, kRed, kBlue, kRed, kBlue},
        {"32 bits with alpha", {.bits = 32}, 0x80FF0000, kBlue, 0x80FF0000, kBlue},
        {"32 bits, own channels",
         {.bits = 32, .channels = {0xFF, 0xFF00, 0xFF0000}},
         0x800000FF,
         0xFF0000,
         kRed,
         kBlue},
        {"10 bits a channel", {.bits = 32, .channels = {0x3FF00000, 0xFFC00, 0x3FF}}, 0x3FF00000, 0x3FF, kRed, kBlue},
    };
    for (const Case& test : cases) {
        const IconPart part = MakeBitmap(
            test.form, [&](auto x, auto y) { return Left(x, y) ? test.left : test.right; }, TopLine);
        Place(u"C:\\a.ico", MakeIconFile({part}));
        Place(u"C:\\a32.exe", MakeProgram({{1, {}, {part}}}, false));
        Place(u"C:\\a64.exe", MakeProgram({{1, {}, {part}}}, true));
        for (const char16_t* path : {u"C:\\a.ico", u"C:\\a32.exe", u"C:\\a64.exe"}) {
            const auto picture = Large(path);
            ASSERT_TRUE(picture) << test.name;
            EXPECT_EQ(picture->color.bitsPerPixel, 32) << test.name;
            for (std::uint32_t i = 0; i < 32 * 32; ++i) {
                ASSERT_EQ(picture->pixels[i], Left(i % 32, 0) ? test.red : test.blue) << test.name << " " << i;
                ASSERT_EQ(picture->transparent[i], TopLine(0, i / 32)) << test.name << " " << i;
            }
        }
    }
}

TEST_F(RecordedIconsTest, BlackAndWhite_HasOneBitmapOfMaskOverPicture) {
    Place(u"C:\\a.ico", MakeIconFile({MakeBitmap({.bits = 1, .palette = {0, 0xFFFFFF}}, Left, TopLine)}));
    const auto picture = Large(u"C:\\a.ico");
    ASSERT_TRUE(picture);
    EXPECT_TRUE(picture->pixels.empty());
    ASSERT_EQ(picture->mask.height, 64);
    for (std::uint32_t i = 0; i < 32 * 64; ++i) {
        ASSERT_EQ(picture->transparent[i], i < 32 * 32 ? TopLine(0, i / 32) : Left(i % 32, 0)) << i;
    }
}

TEST_F(RecordedIconsTest, MissingMask_ComesFromAlphaOrIsOpaque) {
    struct Case {
        std::uint16_t bits;
        std::uint32_t left, right;
        bool leftMasked, rightMasked;
    };
    for (const Case& test : {Case{32, 0xFF0000FF, 0xFE0000FF, false, true}, Case{32, 0xFF, 0xFF, false, false},
                             Case{32, 0x01000000, 0xFF, true, true}, Case{24, kRed, kBlue, false, false}}) {
        const IconPart part = MakeBitmap(
            {.bits = test.bits, .masked = false}, [&](auto x, auto y) { return Left(x, y) ? test.left : test.right; },
            TopLine);
        Place(u"C:\\a.ico", MakeIconFile({part}));
        const auto picture = Large(u"C:\\a.ico");
        ASSERT_TRUE(picture);
        EXPECT_EQ(picture->pixels[0], test.left);
        EXPECT_EQ(picture->transparent[0], test.leftMasked) << std::hex << test.left;
        EXPECT_EQ(picture->transparent[31], test.rightMasked) << std::hex << test.right;
    }
}

TEST_F(RecordedIconsTest, ClosestSizeThenDepth_IsChosen) {
    struct Case {
        std::vector<std::pair<std::uint32_t, std::uint16_t>> parts;  // side, bits
        std::uint32_t large, small;                                  // places
    };
    const Case cases[] = {
        {{{16, 32}, {32, 32}, {48, 32}}, 1, 0},
        {{{32, 4}, {32, 32}, {32, 24}}, 1, 1},
        {{{32, 8}, {32, 8}}, 0, 0},
        {{{256, 32}, {16, 4}}, 1, 1},
        {{{48, 8}, {16, 8}}, 0, 1},
        {{{48, 8}, {16, 24}}, 1, 1},
    };
    for (const Case& test : cases) {
        std::vector<IconPart> parts;
        for (const auto& [side, bits] : test.parts) {
            parts.push_back(Plain(side, bits, 0x10101 * static_cast<std::uint32_t>(parts.size() + 1)));
        }
        Place(u"C:\\a.exe", MakeProgram({{1, {}, parts}}, true));
        Place(u"C:\\a.ico", MakeIconFile(parts));
        for (const char16_t* path : {u"C:\\a.exe", u"C:\\a.ico"}) {
            const auto [large, small] = Both(path, 0);
            ASSERT_TRUE(large && small);
            EXPECT_EQ(large->color.width, 32);
            EXPECT_EQ(small->color.width, 16);
            EXPECT_EQ(large->pixels[40], 0x10101 * (test.large + 1)) << &test - cases;
            EXPECT_EQ(small->pixels[40], 0x10101 * (test.small + 1)) << &test - cases;
        }
    }
}

TEST_F(RecordedIconsTest, Index_CountsGroupsOrNamesOne) {
    const std::string program = MakeProgram(
        {{0, u"ALPHA", {Plain(32, 24, 0x10)}}, {2, {}, {Plain(32, 24, 0x11)}}, {300, {}, {Plain(32, 24, 0x12)}}},
        false);
    Place(u"C:\\a.exe", program);
    const std::pair<std::int32_t, std::uint32_t> present[] = {
        {0, 0x10}, {1, 0x11}, {2, 0x12}, {-2, 0x11}, {-300, 0x12}};
    for (const auto& [index, color] : present) {
        const auto picture = Large(u"C:\\a.exe", index);
        ASSERT_TRUE(picture) << index;
        EXPECT_EQ(picture->pixels[40], color) << index;
    }
    for (const std::int32_t index : {3, -1, -3, -301, INT32_MAX, INT32_MIN}) {
        EXPECT_FALSE(Large(u"C:\\a.exe", index)) << index;
    }
    Place(u"C:\\a.ico", MakeIconFile({Plain(32, 24, 0x10), Plain(16, 24, 0x11)}));
    EXPECT_FALSE(Large(u"C:\\a.ico", 1));
    EXPECT_FALSE(Large(u"C:\\absent.exe"));
}

TEST_F(RecordedIconsTest, Stretching_KeepsCommonBitsOrRepeatsPixels) {
    const auto column = [](std::uint32_t x, std::uint32_t) { return 1U << x % 24; };
    const auto odd = [](std::uint32_t x, std::uint32_t) { return x % 2 == 1; };
    Place(u"C:\\48.ico", MakeIconFile({MakeBitmap({.width = 48, .height = 48}, column, odd)}));
    Place(u"C:\\16.ico", MakeIconFile({MakeBitmap({.width = 16, .height = 16}, column, odd)}));
    const auto shrunk = Large(u"C:\\48.ico");
    const auto grown = Large(u"C:\\16.ico");
    ASSERT_TRUE(shrunk && grown);
    for (std::uint32_t x = 0; x < 32; ++x) {
        // Three columns become two: the first two together, then the third alone.
        EXPECT_EQ(shrunk->pixels[x], x % 2 == 0 ? 0 : 1U << (x / 2 * 3 + 2) % 24) << x;
        EXPECT_EQ(shrunk->transparent[x], x % 4 == 3) << x;
        EXPECT_EQ(grown->pixels[x], 1U << x / 2) << x;
    }
}

TEST_F(RecordedIconsTest, LyingNumbers_GiveNoIcon) {
    ProgramLayout layout;
    std::string program = MakeProgram({{1, {}, {Plain(32, 8, kRed)}}}, false, &layout);
    Put32(program, layout.optional + 92, 3);               // no more directories than it needs
    const std::size_t groups = layout.resources + 16 + 8;  // the root's entry of the groups
    const auto icons = static_cast<std::size_t>(program.find(std::string_view("(\0\0\0 \0\0\0", 8)));
    ASSERT_NE(icons, std::string::npos);
    const std::tuple<const char*, std::size_t, std::uint32_t> cases[] = {
        {"header behind the end", 60, 0xFFFFFFF0},
        {"optional header that is none", layout.optional, 0x107},
        {"two directories", layout.optional + 92, 2},
        {"directory in no section", layout.optional + 96 + 16, 0xFFFFF000},
        {"section behind the end", layout.section + 20, 0x7FFFFFFF},
        {"groups whose table is the root", groups + 4, 0x80000000},
        {"table behind the end", groups + 4, 0xFFFFFFFF},
        {"bitmap without width", icons + 4, 0},
        {"bitmap of impossible width", icons + 4, 0x7FFFFFFF},
        {"bitmap from the top down", icons + 8, 0xFFFFFFC0},
        {"bitmap of more lines than bytes", icons + 8, 2000},
        {"bitmap of two bits", icons + 12, 0x20001},
        {"compressed bitmap", icons + 16, 1},
        {"larger header", icons, 124},
    };
    Place(u"C:\\a.exe", program);
    EXPECT_TRUE(Large(u"C:\\a.exe"));
    for (const auto& [name, at, value] : cases) {
        std::string broken = program;
        Put32(broken, at, value);
        Place(u"C:\\a.exe", broken);
        EXPECT_FALSE(Large(u"C:\\a.exe")) << name;
    }
}

TEST_F(RecordedIconsTest, FileIcon_IsItsOwnOrThatOfItsType) {
    const auto shell = MakeProgram({{1, {}, {Plain(32, 24, 1)}},
                                    {2, {}, {Plain(32, 24, 2)}},
                                    {3, {}, {Plain(32, 24, 3)}},
                                    {4, {}, {Plain(32, 24, 4)}}},
                                   true);
    builder.File(u"C:\\Windows\\System32\\shell32.dll", shell);
    builder.File(u"C:\\own.exe", MakeProgram({{1, {}, {Plain(32, 24, 9)}}}, true)).File(u"C:\\none.exe", "MZ");
    builder.File(u"C:\\a.drawn", "x").File(u"C:\\a.none", "x").Folder(u"C:\\folder");
    builder.Text(u"HKCR\\.drawn", u"", u"Drawing").Text(u"HKCR\\Drawing\\DefaultIcon", u"", u"\"C:\\own.exe\",-1");
    IShell& machine = Start().Shell();
    const std::pair<const char16_t*, std::uint32_t> cases[] = {
        {u"C:\\own.exe", 9}, {u"C:\\none.exe", 3}, {u"C:\\a.drawn", 9}, {u"C:\\a.none", 1}, {u"C:\\folder", 4}};
    for (const auto& [path, color] : cases) {
        const auto picture = Take(machine.GetFileIcon(path));
        ASSERT_TRUE(picture) << color;
        EXPECT_EQ(picture->pixels[40], color);
    }
    EXPECT_EQ(machine.GetFileIcon(u"C:\\absent.exe"), 0U);
}

}  // namespace
}  // namespace roundup
