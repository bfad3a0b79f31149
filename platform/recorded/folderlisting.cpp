#include "platform/recorded/folderlisting.h"

#include <algorithm>
#include <bit>

#include "platform/filesystem.h"
#include "platform/recorded/hostfs.h"
#include "platform/recorded/registry/foldedname.h"
#include "platform/recorded/winpath.h"

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

}  // namespace

FolderNode::Listing::Listing(FolderNode& folder, std::vector<SourceEntry> source, Win32Error error) : m_error(error) {
    std::erase_if(source, [](const SourceEntry& entry) { return !CanBeShown(entry); });
    if (!std::is_sorted(source.begin(), source.end(), ListedBefore)) {
        std::sort(source.begin(), source.end(), ListedBefore);
    }
    source.erase(
        std::unique(source.begin(), source.end(),
                    [](const SourceEntry& a, const SourceEntry& b) { return CompareFolded(a.name, b.name) == 0; }),
        source.end());
    Fill(folder, source);
    Index();
}

void FolderNode::Listing::Fill(FolderNode& folder, const std::vector<SourceEntry>& source) {
    m_count = source.size();
    m_entries = std::make_unique<FileEntry[]>(m_count);
    std::size_t length = 0;
    for (const SourceEntry& entry : source) length += entry.name.size();
    m_names.reserve(length);
    for (std::size_t i = 0; i < m_count; ++i) {
        FileEntry& entry = m_entries[i];
        const std::size_t start = m_names.size();
        m_names.append(source[i].name);
        entry.name = std::u16string_view(m_names.data() + start, source[i].name.size());
        entry.parent = &folder;
        entry.kind = source[i].kind;
        entry.attributes = DefaultAttributes(entry.kind);
        entry.size = entry.kind == SourceKind::File ? source[i].size : 0;
    }
}

void FolderNode::Listing::Index() {
    if (m_count <= kFewEntries) return;
    m_slots.resize(std::bit_ceil(m_count * 2));
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = 0; i < m_count; ++i) {
        const std::uint32_t hash = FoldedName(m_entries[i].name, Seed()).Hash();
        std::size_t place = hash & mask;
        while (m_slots[place].index != 0) place = (place + 1) & mask;
        m_slots[place] = {hash, static_cast<std::uint32_t>(i + 1)};
    }
}

FileEntry* FolderNode::Listing::Find(std::u16string_view name) const noexcept {
    if (m_slots.empty()) {
        for (FileEntry& entry : Entries()) {
            if (entry.name.size() == name.size() && CompareFolded(entry.name, name) == 0) return &entry;
        }
        return nullptr;
    }
    const std::uint32_t hash = FoldedName(name, Seed()).Hash();
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t place = hash & mask; m_slots[place].index != 0; place = (place + 1) & mask) {
        if (m_slots[place].hash != hash) continue;
        FileEntry& entry = m_entries[m_slots[place].index - 1];
        if (CompareFolded(entry.name, name) == 0) return &entry;
    }
    return nullptr;
}

}  // namespace roundup
