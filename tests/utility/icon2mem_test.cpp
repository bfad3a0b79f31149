#include "utility/icon2mem.h"

#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "tests/support/machinetest.h"
#include "tests/support/overlaymachine.h"

namespace roundup {
namespace {

// Icons of any shape, with a count of what is given out and not taken back.
class IconShell final : public IShell {
  public:
    struct Bitmap {
        BitmapShape shape;
        std::vector<std::uint8_t> bits;
    };
    std::map<std::u16string, std::pair<IconHandle, IconHandle>> extracted;  // large, small
    std::map<std::u16string, IconHandle> shown;
    Bitmap color;
    Bitmap mask;
    bool hasColor = true;
    std::uint32_t failAt = 0;  // the call that fails, counted from 1
    std::uint32_t calls = 0;
    int open = 0;
    IconHandle converted = 0;

    void ExtractIcons(const char16_t* path, std::int32_t, IconHandle& large, IconHandle& small) override {
        std::tie(large, small) = extracted[path];
        open += (large != 0) + (small != 0);
    }
    IconHandle GetFileIcon(const char16_t* path) override {
        open += shown[path] != 0;
        return shown[path];
    }
    void DestroyIcon(IconHandle) override { --open; }
    bool GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) override {
        if (++calls == failAt) return false;
        converted = icon;
        bitmaps = {1, hasColor ? BitmapHandle{2} : 0};
        open += hasColor ? 2 : 1;
        return true;
    }
    bool GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) override {
        if (++calls == failAt || bitmap == 0) return false;
        shape = (bitmap == 2 ? color : mask).shape;
        return true;
    }
    bool GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) override {
        if (++calls == failAt) return false;
        const Bitmap& source = bitmap == 2 ? color : mask;
        EXPECT_EQ(header.bitCount, bitmap == 2 ? 32 : 1);
        EXPECT_GE(size, source.bits.size());
        std::memcpy(bits, source.bits.data(), source.bits.size());
        return true;
    }
    void DeleteBitmap(BitmapHandle) override { --open; }

    bool GetFolderPath(std::uint32_t, char16_t (&)[260]) override { return false; }
    bool GetSpecialFolderPath(std::uint32_t, char16_t (&)[260]) override { return false; }
    bool SplitCommandLine(const char16_t*, std::vector<std::u16string>&) override { return false; }
    bool LoadIndirectString(const char16_t*, char16_t*, std::uint32_t) override { return false; }
    bool ReadLink(const char16_t*, ShellLink&) override { return false; }
    void EnterApartment() override {}
    void LeaveApartment() override {}
};

// A machine with another shell.
class IconMachine final : public OverlayMachine {
  public:
    IconMachine(std::unique_ptr<Machine> rest, IShell& shell)
        : OverlayMachine(*rest), m_rest(std::move(rest)), m_shell(shell) {}
    IShell& Shell() override { return m_shell; }

  private:
    std::unique_ptr<Machine> m_rest;
    IShell& m_shell;
};

class IconTest : public MachineTest {
  protected:
    IconTest() {
        shell.color = {{3, 2, 1, 24},
                       {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24}};
        shell.mask = {{3, 2, 1, 1}, {0xA0, 0, 0, 0, 0x40, 0, 0, 0}};
    }
    void StartWithIcons() { Start(std::make_unique<IconMachine>(builder.Build(), shell)); }

    IconShell shell;
};

// Colour of three by two pixels, mask lines of one byte rounded up to four, byte for byte.
constexpr std::uint8_t kExpected[] = {
    0,  0,  1,  0,    1, 0,                                          // an icon file of one image
    3,  2,  32, 0,    0, 0, 0, 0,    72, 0,  0,  0,  22, 0,  0,  0,  // its size, depth, 40 + 24 + 8 bytes at 22
    40, 0,  0,  0,    3, 0, 0, 0,    4,  0,  0,  0,  1,  0,  32, 0,  0,  0,  0,  0,  24,
    0,  0,  0,  0,    0, 0, 0, 0,    0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  0,  // the height counts colour and mask
    1,  2,  3,  4,    5, 6, 7, 8,    9,  10, 11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 21,
    22, 23, 24, 0xA0, 0, 0, 0, 0x40, 0,  0,  0,
};

TEST_F(IconTest, Icon_BecomesAFileOfOneImage) {
    StartWithIcons();
    std::uint32_t size = 0;
    ASSERT_TRUE(IconToMemory(9, nullptr, size));
    ASSERT_EQ(size, sizeof kExpected);
    std::vector<std::byte> bytes(size + 1, std::byte{0xEE});
    --size;
    EXPECT_FALSE(IconToMemory(9, bytes.data(), size));
    size += 2;
    ASSERT_TRUE(IconToMemory(9, bytes.data(), size));
    EXPECT_EQ(size, sizeof kExpected);
    EXPECT_EQ(std::memcmp(bytes.data(), kExpected, sizeof kExpected), 0);
    EXPECT_EQ(bytes.back(), std::byte{0xEE});
    EXPECT_EQ(shell.open, 0);
}

TEST_F(IconTest, EveryFailingCall_GivesNothingAndLeaksNothing) {
    shell.extracted[u"C:\\a.exe"] = {5, 6};
    StartWithIcons();
    std::uint32_t fired = 0;
    for (shell.failAt = 1; shell.failAt < 100; ++shell.failAt) {
        shell.calls = 0;
        std::unique_ptr<std::byte[]> bytes = std::make_unique<std::byte[]>(1);
        std::uint32_t size = 1;
        const bool loaded = LoadIconBytes(u"C:\\a.exe", 0, bytes, size);
        EXPECT_EQ(shell.open, 0);
        EXPECT_EQ(bytes != nullptr, loaded);
        if (loaded) break;
        EXPECT_EQ(size, 0U);
        ++fired;
    }
    EXPECT_EQ(fired, 8U);  // three calls to learn the size, five to fetch
}

TEST_F(IconTest, ImpossibleBitmaps_AreRefused) {
    StartWithIcons();
    const BitmapShape shapes[] = {{0, 2, 1, 32},         {3, 0, 1, 32},         {-3, 2, 1, 32},
                                  {3, -2, 1, 32},        {1025, 2, 1, 32},      {3, 1025, 1, 32},
                                  {INT32_MAX, 2, 1, 32}, {65536, 65536, 1, 32}, {INT32_MIN, INT32_MIN, 1, 32}};
    for (IconShell::Bitmap* bitmap : {&shell.color, &shell.mask}) {
        const BitmapShape sound = bitmap->shape;
        for (const BitmapShape& shape : shapes) {
            bitmap->shape = shape;
            std::uint32_t size = 0;
            EXPECT_FALSE(IconToMemory(9, nullptr, size));
        }
        bitmap->shape = sound;
    }
    shell.hasColor = false;
    std::uint32_t size = 0;
    EXPECT_FALSE(IconToMemory(9, nullptr, size));
    EXPECT_EQ(shell.open, 0);
}

TEST_F(IconTest, Source_IsTheLargeThenTheSmallThenTheShellsIcon) {
    shell.extracted[u"C:\\both.exe"] = {5, 6};
    shell.extracted[u"C:\\small.exe"] = {0, 6};
    shell.shown[u"C:\\none.txt"] = 7;
    builder.File(u"C:\\own.ICO", "the file as it is").File(u"C:\\empty.ico");
    StartWithIcons();
    const struct {
        const char16_t* path;
        IconHandle icon;
        std::uint32_t size;
    } cases[] = {
        {u"C:\\both.exe", 5, sizeof kExpected},
        {u"C:\\small.exe", 6, sizeof kExpected},
        {u"C:\\none.txt", 7, sizeof kExpected},
        {u"C:\\nothing", 0, 0},
        {u"C:\\own.ICO", 0, 17},
        {u"C:\\empty.ico", 0, 0},
    };
    for (const auto& c : cases) {
        shell.converted = 0;
        std::unique_ptr<std::byte[]> bytes;
        std::uint32_t size = 1;
        EXPECT_EQ(LoadIconBytes(c.path, 0, bytes, size), c.size != 0);
        EXPECT_EQ(size, c.size);
        EXPECT_EQ(shell.converted, c.icon);
        if (c.size == 17) {
            EXPECT_EQ(std::memcmp(bytes.get(), "the file as it is", 17), 0);
        }
    }
    EXPECT_EQ(shell.open, 0);
}

}  // namespace
}  // namespace roundup
