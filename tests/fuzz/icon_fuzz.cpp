// Programs and icon files: whatever the bytes, an icon is absent or has bitmaps of the size that was asked for. The
// seeds are small images of every form, put into files by tests/support/iconfiles.h.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "tests/support/machinebuilder.h"

namespace {

void Check(roundup::IShell& shell, roundup::IconHandle icon, std::int32_t side) {
    using namespace roundup;
    IconBitmaps bitmaps;
    if (!shell.GetIconBitmaps(icon, bitmaps)) std::abort();
    for (const BitmapHandle bitmap : {bitmaps.mask, bitmaps.color}) {
        if (bitmap == 0 && bitmap == bitmaps.color) continue;
        BitmapShape shape;
        if (!shell.GetBitmapShape(bitmap, shape) || shape.width != side) std::abort();
        // Without a colour bitmap the mask has both halves.
        if (shape.height != side && (bitmaps.color != 0 || shape.height != 2 * side)) std::abort();
        BitmapHeader header;
        header.width = shape.width;
        header.height = shape.height;
        header.bitCount = shape.bitsPerPixel;
        std::vector<std::uint32_t> bits(static_cast<std::size_t>(side) * static_cast<std::size_t>(shape.height));
        const auto size = static_cast<std::uint32_t>(bits.size() * sizeof bits[0]);
        if (!shell.GetBitmapBits(bitmap, header, bits.data(), size)) std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace roundup;
    MachineBuilder builder;
    builder.File(u"C:\\a.exe", std::string_view(reinterpret_cast<const char*>(data), size));
    const std::unique_ptr<Machine> machine = builder.Build();
    for (const std::int32_t index : {0, 1, -1, -2}) {
        IconHandle large = 0;
        IconHandle small = 0;
        machine->Shell().ExtractIcons(u"C:\\a.exe", index, large, small);
        if (large != 0) Check(machine->Shell(), large, 32);
        if (small != 0) Check(machine->Shell(), small, 16);
    }
    return 0;
}
