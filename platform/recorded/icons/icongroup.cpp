#include "platform/recorded/icons/icongroup.h"

#include <cstdlib>
#include <limits>

namespace roundup {

namespace {

constexpr std::uint64_t kHeaderSize = 6;
constexpr std::uint16_t kTypeIcon = 1;
constexpr std::int64_t kDisplayBits = 32;

std::uint32_t CountImages(ByteView block) noexcept {
    if (block.At<std::uint16_t>(0) != 0 || block.At<std::uint16_t>(2) != kTypeIcon) return 0;
    return block.At<std::uint16_t>(4).value_or(0);
}

// A side is one byte, in which 0 means 256 pixels.
std::uint32_t Side(std::uint8_t side) noexcept { return side == 0 ? 256 : side; }

IconImageInfo CommonFields(ByteView entry) noexcept {
    IconImageInfo info;
    info.width = Side(*entry.At<std::uint8_t>(0));
    info.height = Side(*entry.At<std::uint8_t>(1));
    info.bits = *entry.At<std::uint16_t>(6);
    info.size = *entry.At<std::uint32_t>(8);
    return info;
}

std::int64_t Distance(std::uint32_t a, std::uint32_t b) noexcept {
    return std::abs(static_cast<std::int64_t>(a) - static_cast<std::int64_t>(b));
}

}  // namespace

std::vector<IconImageInfo> ReadIconGroup(ByteView resource) {
    constexpr std::uint64_t kEntrySize = 14;
    std::vector<IconImageInfo> images;
    for (std::uint64_t i = 0, count = CountImages(resource); i < count; ++i) {
        const auto entry = resource.Slice(kHeaderSize + i * kEntrySize, kEntrySize);
        if (!entry) break;
        IconImageInfo info = CommonFields(*entry);
        info.number = *entry->At<std::uint16_t>(12);
        images.push_back(info);
    }
    return images;
}

std::vector<IconImageInfo> ReadIconFile(ByteView file) {
    constexpr std::uint64_t kEntrySize = 16;
    std::vector<IconImageInfo> images;
    for (std::uint64_t i = 0, count = CountImages(file); i < count; ++i) {
        const auto entry = file.Slice(kHeaderSize + i * kEntrySize, kEntrySize);
        if (!entry) break;
        IconImageInfo info = CommonFields(*entry);
        info.offset = *entry->At<std::uint32_t>(12);
        if (!file.Holds(info.offset, info.size)) continue;
        images.push_back(info);
    }
    return images;
}

std::optional<std::size_t> ChooseIconImage(const std::vector<IconImageInfo>& images, std::uint32_t pixels) noexcept {
    std::optional<std::size_t> best;
    std::int64_t bestSize = std::numeric_limits<std::int64_t>::max();
    std::int64_t bestDepth = std::numeric_limits<std::int64_t>::max();
    for (std::size_t i = 0; i < images.size(); ++i) {
        const std::int64_t size = Distance(images[i].width, pixels) + Distance(images[i].height, pixels);
        const std::int64_t depth = std::abs(static_cast<std::int64_t>(images[i].bits) - kDisplayBits);
        if (size > bestSize || (size == bestSize && depth >= bestDepth)) continue;
        best = i;
        bestSize = size;
        bestDepth = depth;
    }
    return best;
}

}  // namespace roundup
