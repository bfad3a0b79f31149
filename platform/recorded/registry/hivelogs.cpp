#include "platform/recorded/registry/hivelogs.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>
#include <numeric>
#include <string_view>

#include "utility/byteview.h"

namespace roundup {

namespace {

// The header of a hive, a copy of which each log begins with.
constexpr std::size_t kFirstNumber = 4;   // raised when a write begins
constexpr std::size_t kSecondNumber = 8;  // follows when it has ended
constexpr std::size_t kFileType = 28;
constexpr std::size_t kBlocksLength = 40;
constexpr std::size_t kChecksum = 508;  // of all that stands before it
constexpr std::size_t kHeaderSize = 4096;
constexpr std::uint32_t kOldLogs[] = {1, 2};
constexpr std::uint32_t kNewLog = 6;
constexpr std::uint32_t kMostBlocks = 0x7FFF0000;  // bytes; Windows reads none that is larger

// A log: one sector with the header, then entries or the one list of sectors.
constexpr std::size_t kSector = 512;
constexpr std::size_t kEntryHeader = 40;
constexpr std::size_t kPageReference = 8;

std::uint32_t Dword(std::span<const std::byte> bytes, std::size_t offset) noexcept {
    return ByteView(bytes).At<std::uint32_t>(offset).value_or(0);
}

std::uint64_t Qword(std::span<const std::byte> bytes, std::size_t offset) noexcept {
    return ByteView(bytes).At<std::uint64_t>(offset).value_or(0);
}

void PutDword(std::span<std::byte> bytes, std::size_t offset, std::uint32_t number) noexcept {
    std::memcpy(bytes.data() + offset, &number, sizeof number);
}

bool HasMark(std::span<const std::byte> bytes, std::size_t offset, std::string_view mark) noexcept {
    const auto found = ByteView(bytes).Slice(offset, mark.size());
    return found && std::memcmp(found->Bytes().data(), mark.data(), mark.size()) == 0;
}

std::uint32_t ChecksumOf(std::span<const std::byte> header) noexcept {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < kChecksum; at += sizeof sum) sum ^= Dword(header, at);
    if (sum == 0xFFFFFFFFU) return 0xFFFFFFFEU;
    return sum == 0 ? 1 : sum;
}

bool HasHeader(std::span<const std::byte> file) noexcept {
    return file.size() >= kSector && HasMark(file, 0, "regf") && ChecksumOf(file) == Dword(file, kChecksum);
}

// Some bytes of the hive, counted from its first block, and what stands there from now on.
struct Patch {
    std::uint32_t offset;
    std::span<const std::byte> bytes;
};

// One write to the hive, out of a log.
struct Entry {
    std::uint32_t number = 0;
    std::uint32_t blocksLength = 0;
    std::vector<Patch> patches;

    std::size_t Bytes() const noexcept {
        return std::accumulate(patches.begin(), patches.end(), std::size_t{0},
                               [](std::size_t sum, const Patch& patch) { return sum + patch.bytes.size(); });
    }
    bool Fits() const noexcept {
        return blocksLength <= kMostBlocks && blocksLength % kHeaderSize == 0 &&
               std::ranges::all_of(patches, [this](const Patch& patch) {
                   return patch.bytes.size() <= blocksLength && patch.offset <= blocksLength - patch.bytes.size();
               });
    }
};

std::optional<Entry> ReadNewEntry(std::span<const std::byte> log) {
    if (!HasMark(log, 0, "HvLE")) return std::nullopt;
    const std::size_t size = Dword(log, 4);
    if (size < kEntryHeader || size % kSector != 0 || size > log.size()) return std::nullopt;
    log = log.first(size);
    if (MarvinHash(log.first(32), kHiveLogSeed) != Qword(log, 32)) return std::nullopt;
    if (MarvinHash(log.subspan(kEntryHeader), kHiveLogSeed) != Qword(log, 24)) return std::nullopt;

    Entry entry;
    entry.number = Dword(log, 12);
    entry.blocksLength = Dword(log, 16);
    const std::size_t pages = Dword(log, 20);
    if (pages > (size - kEntryHeader) / kPageReference) return std::nullopt;
    std::size_t data = kEntryHeader + pages * kPageReference;
    for (std::size_t page = 0; page < pages; ++page) {
        const std::size_t reference = kEntryHeader + page * kPageReference;
        const std::size_t length = Dword(log, reference + 4);
        if (length > size - data) return std::nullopt;
        entry.patches.push_back({Dword(log, reference), log.subspan(data, length)});
        data += length;
    }
    return entry.Fits() ? std::optional(std::move(entry)) : std::nullopt;
}

// The entries of a log in the new form, as far as they follow each other: behind the last one stand older ones.
void ReadNewLog(std::span<const std::byte> log, std::vector<Entry>& entries) {
    std::optional<std::uint32_t> last;
    for (std::size_t at = kSector; at < log.size(); at += Dword(log, at + 4)) {
        std::optional<Entry> entry = ReadNewEntry(log.subspan(at));
        if (!entry || (last && entry->number != *last + 1)) return;
        last = entry->number;
        entries.push_back(*std::move(entry));
    }
}

// A log in the old form: a bit for each sector of the hive's blocks, then the sectors whose bit is set.
std::optional<Entry> ReadOldLog(std::span<const std::byte> log) {
    Entry entry;
    entry.number = Dword(log, kFirstNumber);
    entry.blocksLength = Dword(log, kBlocksLength);
    const auto bits = ByteView(log).Slice(kSector + 4, entry.blocksLength / kSector / 8);
    if (entry.number != Dword(log, kSecondNumber) || !HasMark(log, kSector, "DIRT") || !bits) return std::nullopt;
    std::size_t data = (kSector + 4 + bits->Size() + kSector - 1) / kSector * kSector;
    for (std::uint32_t sector = 0; sector < entry.blocksLength / kSector; ++sector) {
        const auto eight = std::to_integer<unsigned>(bits->Bytes()[sector / 8]);
        if ((eight >> sector % 8 & 1U) == 0) continue;
        const auto bytes = ByteView(log).Slice(data, kSector);
        if (!bytes) return std::nullopt;
        entry.patches.push_back({sector * static_cast<std::uint32_t>(kSector), bytes->Bytes()});
        data += kSector;
    }
    return entry.Fits() ? std::optional(std::move(entry)) : std::nullopt;
}

// The writes that continue the hive, in their order. A log in the old form has the one write that was under way; its
// number is that which the hive had before or during it.
std::vector<Entry> Continuation(std::span<const std::byte> hive, std::span<const std::span<const std::byte>> logs) {
    const std::uint32_t begun = Dword(hive, kFirstNumber);
    const std::uint32_t ended = Dword(hive, kSecondNumber);
    std::vector<Entry> entries;
    for (const std::span<const std::byte> log : logs) {
        if (!HasHeader(log)) continue;
        const std::uint32_t type = Dword(log, kFileType);
        if (type == kNewLog) ReadNewLog(log, entries);
        if (std::ranges::find(kOldLogs, type) == std::end(kOldLogs)) continue;
        std::optional<Entry> entry = ReadOldLog(log);
        if (!entry || (entry->number != ended && entry->number != begun)) continue;
        entries.clear();
        entries.push_back(*std::move(entry));
        return entries;
    }
    std::ranges::stable_sort(entries, {}, &Entry::number);
    std::vector<Entry> next;
    for (Entry& entry : entries) {
        if (entry.number < ended) continue;
        const bool follows = next.empty() ? entry.number <= begun : entry.number == next.back().number + 1;
        if (!follows) break;
        next.push_back(std::move(entry));
    }
    return next;
}

void Mix(std::uint32_t& low, std::uint32_t& high) noexcept {
    high ^= low;
    low = std::rotl(low, 20) + high;
    high = std::rotl(high, 9) ^ low;
    low = std::rotl(low, 27) + high;
    high = std::rotl(high, 19);
}

}  // namespace

bool IsHiveDirty(std::span<const std::byte> hive) noexcept {
    return HasHeader(hive) && Dword(hive, kFirstNumber) != Dword(hive, kSecondNumber);
}

std::optional<std::vector<std::byte>> ReplayHiveLogs(std::span<const std::byte> hive,
                                                     std::span<const std::span<const std::byte>> logs) {
    if (!IsHiveDirty(hive) || hive.size() < kHeaderSize) return std::nullopt;
    const std::vector<Entry> entries = Continuation(hive, logs);
    if (entries.empty()) return std::nullopt;
    std::vector<std::byte> whole(hive.begin(), hive.end());
    for (const Entry& entry : entries) {
        // New blocks are in the log whole: what grows by more is no write of Windows.
        const std::size_t size = kHeaderSize + entry.blocksLength;
        if (size > whole.size() + entry.Bytes()) return std::nullopt;
        whole.resize(std::max(whole.size(), size));
        for (const Patch& patch : entry.patches) {
            std::ranges::copy(patch.bytes, whole.begin() + static_cast<std::ptrdiff_t>(kHeaderSize + patch.offset));
        }
    }
    PutDword(whole, kFirstNumber, entries.back().number + 1);
    PutDword(whole, kSecondNumber, entries.back().number + 1);
    PutDword(whole, kBlocksLength, entries.back().blocksLength);
    PutDword(whole, kChecksum, ChecksumOf(whole));
    return whole;
}

std::uint64_t MarvinHash(std::span<const std::byte> bytes, std::uint64_t seed) noexcept {
    auto low = static_cast<std::uint32_t>(seed);
    auto high = static_cast<std::uint32_t>(seed >> 32U);
    std::size_t at = 0;
    for (; bytes.size() - at >= 4; at += 4) {
        low += Dword(bytes, at);
        Mix(low, high);
    }
    std::uint32_t rest = 0x80;
    for (std::size_t end = bytes.size(); end > at; --end)
        rest = rest << 8U | std::to_integer<std::uint32_t>(bytes[end - 1]);
    low += rest;
    Mix(low, high);
    Mix(low, high);
    return std::uint64_t{high} << 32U | low;
}

}  // namespace roundup
