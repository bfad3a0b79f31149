#include "platform/recorded/folderlisting.h"

#include <algorithm>
#include <bit>
#include <new>

#include "platform/filesystem.h"
#include "platform/recorded/hostfs.h"
#include "platform/recorded/registry/foldedname.h"
#include "platform/recorded/winpath.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

// The longest name of a file, in characters.
constexpr std::size_t kLongestName = 255;

// So many entries, which most folders do not exceed, are compared sooner than a hash is made.
constexpr std::size_t kFewEntries = 4;

bool CanBeShown(const SourceEntry& entry) noexcept {
    return !entry.name.empty() && entry.name.size() <= kLongestName && entry.name != u"." && entry.name != u".." &&
           std::none_of(entry.name.begin(), entry.name.end(), IsForbiddenInName);
}

// Code points compare like the units of UTF-8 do, so that the first is the same whatever the source keeps names in.
bool CodePointLess(std::u16string_view a, std::u16string_view b) noexcept {
    // Surrogates stand for what lies above U+FFFF, so they come behind every other unit.
    const auto rank = [](char16_t c) {
        return c >= 0xE000 ? c - 0x800 : c >= 0xD800 ? c + 0x2000 : static_cast<int>(c);
    };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](char16_t x, char16_t y) { return rank(x) < rank(y); });
}

bool ListedBefore(const SourceEntry& a, const SourceEntry& b) noexcept {
    const auto order = CompareFolded(a.name, b.name);
    return order != 0 ? order < 0 : CodePointLess(a.name, b.name);
}

std::uint32_t DefaultAttributes(SourceKind kind) noexcept {
    if (kind == SourceKind::Folder) return kAttributeDirectory;
    return kind == SourceKind::Link ? kAttributeArchive | kAttributeReparsePoint : kAttributeArchive;
}

// Hashes are keyed by a secret of the process, so that a source cannot choose names that collide.
std::uint64_t Seed() noexcept {
    static const std::uint64_t seed = [] {
        std::uint64_t random = 0;
        (void)HostRandom(&random, sizeof random);
        return random;
    }();
    return seed;
}

bool IsName(const FileEntry& entry, std::u16string_view name) noexcept {
    if (entry.name.size() != name.size()) return false;
    return EqualsExactly(entry.name, name) || CompareFolded(entry.name, name) == 0;
}

// A path goes on in the folder that was found, which lies anywhere in memory: its node with the first of its entries
// and names is on its way while the name is compared.
void Prefetch(const FolderNode* folder) noexcept {
    const auto* const start = reinterpret_cast<const char*>(folder);
    if (folder == nullptr) return;
    for (std::size_t line = 0; line < 3; ++line) __builtin_prefetch(start + line * 64);
}

}  // namespace

void FolderListing::Prepare(std::vector<SourceEntry>& source) {
    std::erase_if(source, [](const SourceEntry& entry) { return !CanBeShown(entry); });
    if (!std::is_sorted(source.begin(), source.end(), ListedBefore)) {
        std::sort(source.begin(), source.end(), ListedBefore);
    }
    source.erase(
        std::unique(source.begin(), source.end(),
                    [](const SourceEntry& a, const SourceEntry& b) { return CompareFolded(a.name, b.name) == 0; }),
        source.end());
}

std::size_t FolderListing::SlotsFor(std::size_t count) noexcept {
    return count > kFewEntries ? std::bit_ceil(count * 2) : 0;
}

std::size_t FolderListing::RoomFor(const std::vector<SourceEntry>& source) noexcept {
    std::size_t characters = 0;
    for (const SourceEntry& entry : source) characters += entry.name.size();
    return source.size() * sizeof(FileEntry) + SlotsFor(source.size()) * sizeof(Slot) + characters * sizeof(char16_t);
}

FolderListing::FolderListing(FolderNode& folder, std::byte* room, const std::vector<SourceEntry>& source,
                             Win32Error error) noexcept
    : m_entries(reinterpret_cast<FileEntry*>(room)),
      m_slots(reinterpret_cast<Slot*>(room + source.size() * sizeof(FileEntry))),
      m_slotCount(static_cast<std::uint32_t>(SlotsFor(source.size()))),
      m_error(error) {
    std::uninitialized_value_construct_n(m_slots, m_slotCount);
    auto* names = reinterpret_cast<char16_t*>(m_slots + m_slotCount);
    for (const SourceEntry& entry : source) AddEntry(folder, entry, names);
    if (m_slotCount != 0) Index();
}

void FolderListing::AddEntry(FolderNode& folder, const SourceEntry& source, char16_t*& names) noexcept {
    FileEntry& entry = *new (m_entries + m_count++) FileEntry;
    entry.name = {names, source.name.size()};
    names = std::copy(source.name.begin(), source.name.end(), names);
    entry.parent = &folder;
    entry.kind = source.kind;
    entry.attributes = DefaultAttributes(entry.kind);
    entry.size = entry.kind == SourceKind::File ? source.size : 0;
}

void FolderListing::Index() noexcept {
    const std::size_t mask = m_slotCount - 1;
    for (std::uint32_t i = 0; i < m_count; ++i) {
        const std::uint32_t hash = FoldedName(m_entries[i].name, Seed()).Hash();
        std::size_t place = hash & mask;
        while (m_slots[place].index != 0) place = (place + 1) & mask;
        m_slots[place] = {hash, i + 1};
    }
}

FileEntry* FolderListing::Find(std::u16string_view name) const noexcept {
    if (m_slotCount == 0) {
        for (FileEntry& entry : Entries()) {
            if (IsName(entry, name)) return &entry;
        }
        return nullptr;
    }
    const std::uint32_t hash = FoldedName(name, Seed()).Hash();
    const std::size_t mask = m_slotCount - 1;
    for (std::size_t place = hash & mask; m_slots[place].index != 0; place = (place + 1) & mask) {
        if (m_slots[place].hash != hash) continue;
        FileEntry& entry = m_entries[m_slots[place].index - 1];
        Prefetch(entry.folder.load(std::memory_order_relaxed));
        if (IsName(entry, name)) return &entry;
    }
    return nullptr;
}

}  // namespace roundup
