// What the shell answers for a file, and what the readers of recorded machines do: the same.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/livemachine.h"
#include "platform/windows/winhandle.h"
#include "tests/support/machinetest.h"

namespace roundup {
namespace {

namespace fs = std::filesystem;

std::string ReadWhole(const fs::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::vector<fs::path> FilesOf(const fs::path& folder, std::initializer_list<const char*> extensions) {
    std::vector<fs::path> found;
    std::error_code missing;
    for (const auto& entry : fs::recursive_directory_iterator(folder, missing)) {
        for (const char* extension : extensions) {
            if (entry.path().extension() == extension) found.push_back(fs::path(entry.path()).make_preferred());
        }
    }
    std::sort(found.begin(), found.end());
    return found;
}

// Every line of the two bitmaps, and their shapes; empty without an icon.
std::string Pixels(IShell& shell, IconHandle icon) {
    std::string bytes;
    IconBitmaps bitmaps;
    if (icon == 0 || !shell.GetIconBitmaps(icon, bitmaps)) return bytes;
    for (const BitmapHandle bitmap : {bitmaps.mask, bitmaps.color}) {
        BitmapShape shape;
        if (bitmap == 0 || !shell.GetBitmapShape(bitmap, shape)) continue;
        BitmapHeader header;
        header.width = shape.width;
        header.height = shape.height;
        header.planes = 1;
        header.bitCount = bitmap == bitmaps.mask ? 1 : 32;
        const auto line = (static_cast<std::uint32_t>(shape.width) * header.bitCount + 31) / 32 * 4;
        std::string rows(line * static_cast<std::uint32_t>(shape.height), '\0');
        const auto size = static_cast<std::uint32_t>(rows.size());
        EXPECT_FALSE(shell.GetBitmapBits(bitmap, header, rows.data(), size - 1));
        EXPECT_TRUE(shell.GetBitmapBits(bitmap, header, rows.data(), size));
        bytes += std::to_string(shape.width) + "x" + std::to_string(shape.height) + rows;
        shell.DeleteBitmap(bitmap);
    }
    shell.DestroyIcon(icon);
    return bytes;
}

TEST(SameAnswers, IconsOfProgramsAndFiles) {
    const std::vector<fs::path> files =
        FilesOf(fs::path(ROUNDUP_SOURCE_DIR) / "samples/machine/drives/c", {".exe", ".dll", ".ico"});
    const std::unique_ptr<Machine> live = OpenLiveMachine();
    int icons = 0;
    for (const fs::path& path : files) {
        SCOPED_TRACE(path.string());
        const std::u16string name = u"C:\\a" + path.extension().u16string();
        const std::unique_ptr<Machine> recorded = MachineBuilder().File(name, ReadWhole(path)).Build();
        for (const std::int32_t index : {0, 1, 1000, -1, -103}) {
            // Icon files have no resources, and Wine gives their icon for every number.
            if (index < 0 && path.extension() == ".ico") continue;
            IconHandle large[2] = {}, small[2] = {};
            live->Shell().ExtractIcons(path.u16string().c_str(), index, large[0], small[0]);
            recorded->Shell().ExtractIcons(name.c_str(), index, large[1], small[1]);
            icons += large[0] != 0;
            EXPECT_TRUE(Pixels(live->Shell(), large[0]) == Pixels(recorded->Shell(), large[1])) << index;
            // Wine shrinks the large picture of a program where Windows takes the small one.
            EXPECT_EQ(Pixels(live->Shell(), small[0]).size(), Pixels(recorded->Shell(), small[1]).size()) << index;
        }
    }
    EXPECT_GT(icons, 5);
}

// Icons and bitmaps are objects of the session, of which a process may have ten thousand.
TEST(LiveIcons, Objects_AreGivenBack) {
    const std::unique_ptr<Machine> live = OpenLiveMachine();
    const fs::path path = FilesOf(fs::path(ROUNDUP_SOURCE_DIR) / "samples/machine/drives/c", {".ico"}).at(0);
    const auto count = [] { return ::GetGuiResources(::GetCurrentProcess(), GR_GDIOBJECTS); };
    const auto take = [&] {
        IconHandle large = 0, small = 0;
        live->Shell().ExtractIcons(path.u16string().c_str(), 0, large, small);
        EXPECT_FALSE(Pixels(live->Shell(), large).empty());
        EXPECT_FALSE(Pixels(live->Shell(), small).empty());
        EXPECT_FALSE(Pixels(live->Shell(), live->Shell().GetFileIcon(path.u16string().c_str())).empty());
    };
    take();
    const DWORD before = count();
    for (int i = 0; i < 20; ++i) take();
    EXPECT_LE(count(), before);
    EXPECT_EQ(live->Shell().GetFileIcon(u"C:\\RoundupMissing.exe"), 0U);
}

}  // namespace
}  // namespace roundup
