#include "platform/recorded/links/linkidlist.h"

#include "platform/recorded/links/linktexts.h"

namespace roundup {

namespace {

// Kinds of items, by the class byte behind the size (public descriptions of the shell item format).
constexpr std::uint8_t kRootFolder = 0x1F;
constexpr std::uint8_t kKindMask = 0x70;
constexpr std::uint8_t kVolume = 0x20;
constexpr std::uint8_t kFileEntry = 0x30;
constexpr std::uint8_t kNetwork = 0x40;
constexpr std::uint8_t kWideName = 0x04;  // of a file entry

constexpr std::uint64_t kEntryName = 14;  // behind size, class, file size, time and attributes
constexpr std::uint32_t kExtension = 0xBEEF0004U;

// The long name of a file entry stands in its extension block, whose place the last word of the item tells. Where in
// the block depends on its version.
std::u16string LongName(ByteView item) {
    const std::uint64_t start = item.At<std::uint16_t>(item.Size() - 2).value_or(0);
    const auto size = item.At<std::uint16_t>(start);
    const auto version = item.At<std::uint16_t>(start + 2);
    if (start < kEntryName || !size || item.At<std::uint32_t>(start + 4) != kExtension) return {};
    const std::optional<ByteView> block = item.Slice(start, *size);
    if (!block || *version < 3) return {};
    std::uint64_t name = 20;
    if (*version >= 7) name += 18;
    if (*version >= 8) name += 4;
    if (*version >= 9) name += 4;
    return WideTextAt(*block, name);
}

std::u16string NameOfEntry(ByteView item, std::uint8_t kind) {
    if (std::u16string name = LongName(item); !name.empty()) return name;
    return (kind & kWideName) != 0 ? WideTextAt(item, kEntryName) : NarrowTextAt(item, kEntryName);
}

}  // namespace

std::u16string PathOfIdList(ByteView list) {
    std::u16string path;
    for (std::uint64_t at = 0;;) {
        const auto size = list.At<std::uint16_t>(at);
        if (!size || *size == 0) return path;
        const std::optional<ByteView> item = list.Slice(at, *size);
        const auto kind = item ? item->At<std::uint8_t>(2) : std::nullopt;
        if (!kind || *size < 4) return {};
        at += *size;
        std::u16string name;
        if (*kind == kRootFolder) {
            // The desktop's roots stand in front of a volume.
            if (!path.empty()) return {};
            continue;
        }
        if ((*kind & kKindMask) == kVolume) {
            path = NarrowTextAt(*item, 3);
            if (path.size() < 2 || path[1] != u':') return {};
            continue;
        }
        if ((*kind & kKindMask) == kNetwork) {
            // Each item of a network holds the whole path so far behind a byte of flags.
            path = NarrowTextAt(*item, 5);
            continue;
        }
        if ((*kind & kKindMask) != kFileEntry || path.empty()) return {};
        name = NameOfEntry(*item, *kind);
        if (name.empty()) return {};
        if (path.back() != u'\\') path.push_back(u'\\');
        path.append(name);
        if (path.size() > 32767) return {};
    }
}

}  // namespace roundup
