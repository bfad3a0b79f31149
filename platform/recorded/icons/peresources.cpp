#include "platform/recorded/icons/peresources.h"

#include <algorithm>

namespace roundup {

namespace {

// Ceilings of what is taken seriously: no program that was ever linked comes near them.
constexpr std::uint32_t kMostSections = 96;             // the loader's own limit
constexpr std::uint32_t kLargestDirectory = 4U << 20U;  // its tables come before the resources' bytes
constexpr std::uint32_t kLargestResource = 16U << 20U;

constexpr std::uint32_t kSubdirectory = 0x80000000U;  // in an entry: a table follows; in a name: a text

struct Headers {
    std::uint64_t sectionTable = 0;
    std::uint32_t sections = 0;
    std::uint32_t resources = 0;  // address of the resource directory
};

std::optional<Headers> ReadHeaders(const FileBytes& file) {
    std::vector<std::byte> block;
    if (!file.Read(0, 64, block) || ByteView(block).At<std::uint16_t>(0) != 0x5A4D) return std::nullopt;
    const std::uint32_t start = *ByteView(block).At<std::uint32_t>(60);
    if (!file.Read(start, 24, block) || ByteView(block).At<std::uint32_t>(0) != 0x4550U) return std::nullopt;
    const std::uint32_t optionalSize = *ByteView(block).At<std::uint16_t>(20);
    Headers headers;
    headers.sections = std::min<std::uint32_t>(*ByteView(block).At<std::uint16_t>(6), kMostSections);
    if (!file.Read(std::uint64_t{start} + 24, optionalSize, block)) return std::nullopt;
    const ByteView optional(block);
    const auto magic = optional.At<std::uint16_t>(0);
    if (magic != 0x10B && magic != 0x20B) return std::nullopt;
    // The resource directory is the third of the data directories, which stand behind the other fields.
    const std::uint32_t directories = magic == 0x10B ? 96 : 112;
    const auto count = optional.At<std::uint32_t>(directories - 4);
    const auto resources = optional.At<std::uint32_t>(directories + 2 * 8);
    if (!count || *count < 3 || !resources || *resources == 0) return std::nullopt;
    headers.sectionTable = std::uint64_t{start} + 24 + optionalSize;
    headers.resources = *resources;
    return headers;
}

}  // namespace

std::optional<PeResources> PeResources::Open(const FileBytes& file) {
    const std::optional<Headers> headers = ReadHeaders(file);
    std::vector<std::byte> block;
    if (!headers || !file.Read(headers->sectionTable, headers->sections * 40, block)) return std::nullopt;
    PeResources resources;
    for (std::uint64_t at = 0; at + 40 <= block.size(); at += 40) {
        const ByteView table(block);
        resources.m_sections.push_back(
            {*table.At<std::uint32_t>(at + 12), *table.At<std::uint32_t>(at + 16), *table.At<std::uint32_t>(at + 20)});
    }
    for (const Section& section : resources.m_sections) {
        if (headers->resources < section.address || headers->resources - section.address >= section.size) continue;
        const std::uint32_t skipped = headers->resources - section.address;
        const std::uint64_t offset = std::uint64_t{section.offset} + skipped;
        if (offset >= file.Size()) return std::nullopt;
        const std::uint64_t left = std::min<std::uint64_t>(section.size - skipped, file.Size() - offset);
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kLargestDirectory));
        if (!file.Read(offset, size, resources.m_directory)) return std::nullopt;
        return resources;
    }
    return std::nullopt;
}

std::uint32_t PeResources::CountEntries(std::uint32_t table) const noexcept {
    const auto named = Directory().At<std::uint16_t>(std::uint64_t{table} + 12);
    const auto numbered = Directory().At<std::uint16_t>(std::uint64_t{table} + 14);
    return named && numbered ? std::uint32_t{*named} + *numbered : 0;
}

std::optional<PeResources::Entry> PeResources::EntryAt(std::uint32_t table, std::uint32_t place) const noexcept {
    if (place >= CountEntries(table)) return std::nullopt;
    const std::uint64_t offset = std::uint64_t{table} + 16 + std::uint64_t{place} * 8;
    const auto name = Directory().At<std::uint32_t>(offset);
    const auto target = Directory().At<std::uint32_t>(offset + 4);
    if (!name || !target) return std::nullopt;
    return Entry{*name, *target};
}

std::optional<std::uint32_t> PeResources::FindTable(std::uint32_t table, std::uint32_t number) const noexcept {
    for (std::uint32_t place = 0; const auto entry = EntryAt(table, place); ++place) {
        if (entry->name == number && (entry->target & kSubdirectory) != 0) return entry->target & ~kSubdirectory;
    }
    return std::nullopt;
}

bool PeResources::ReadByPlace(const FileBytes& file, std::uint32_t type, std::uint32_t place,
                              std::vector<std::byte>& bytes) const {
    const auto table = FindTable(0, type);
    const auto entry = table ? EntryAt(*table, place) : std::nullopt;
    return entry && (entry->target & kSubdirectory) != 0 &&
           ReadFirstLanguage(file, entry->target & ~kSubdirectory, bytes);
}

bool PeResources::ReadByNumber(const FileBytes& file, std::uint32_t type, std::uint32_t number,
                               std::vector<std::byte>& bytes) const {
    const auto table = FindTable(0, type);
    const auto languages = table ? FindTable(*table, number) : std::nullopt;
    return languages && ReadFirstLanguage(file, *languages, bytes);
}

bool PeResources::ReadFirstLanguage(const FileBytes& file, std::uint32_t table, std::vector<std::byte>& bytes) const {
    const auto entry = EntryAt(table, 0);
    if (!entry || (entry->target & kSubdirectory) != 0) return false;
    const auto address = Directory().At<std::uint32_t>(entry->target);
    const auto size = Directory().At<std::uint32_t>(std::uint64_t{entry->target} + 4);
    if (!address || !size || *size == 0 || *size > kLargestResource) return false;
    const auto offset = FileOffset(*address, *size);
    return offset && file.Read(*offset, *size, bytes);
}

std::optional<std::uint64_t> PeResources::FileOffset(std::uint32_t address, std::uint32_t size) const noexcept {
    for (const Section& section : m_sections) {
        if (address < section.address || address - section.address >= section.size) continue;
        if (size > section.size - (address - section.address)) return std::nullopt;
        return std::uint64_t{section.offset} + (address - section.address);
    }
    return std::nullopt;
}

}  // namespace roundup
