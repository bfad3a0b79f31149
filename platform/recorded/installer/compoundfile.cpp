#include "platform/recorded/installer/compoundfile.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "utility/byteview.h"

namespace roundup {

namespace {

constexpr std::size_t kHeaderSize = 512;
constexpr std::uint64_t kSignature = 0xE11AB1A1E011CFD0U;
constexpr std::uint16_t kByteOrder = 0xFFFE;
constexpr std::uint16_t kMiniShift = 6;
constexpr std::uint32_t kMiniCutoff = 4096;  // shorter streams stand in mini sectors
constexpr std::size_t kFatPlacesInHeader = 109;
constexpr std::uint32_t kTableEntry = 4;               // bytes of a sector number in the tables of sectors
constexpr std::uint32_t kLargestSector = 0xFFFFFFFAU;  // MAXREGSECT
constexpr std::uint32_t kEndOfChain = 0xFFFFFFFEU;

constexpr std::size_t kEntrySize = 128;
constexpr std::uint32_t kNoEntry = 0xFFFFFFFFU;
constexpr std::size_t kLongestName = 31;
enum class EntryType : std::uint8_t { Unused = 0, Storage = 1, Stream = 2, Root = 5 };

// A directory entry, section 2.6.1. The caller has checked that its bytes are there.
struct RawEntry {
    explicit RawEntry(std::span<const std::byte> bytes) noexcept : view(bytes) {}
    std::uint32_t Word(std::size_t offset) const noexcept { return view.At<std::uint32_t>(offset).value_or(0); }
    EntryType Type() const noexcept { return static_cast<EntryType>(view.At<std::uint8_t>(66).value_or(0)); }
    std::uint32_t Left() const noexcept { return Word(68); }
    std::uint32_t Right() const noexcept { return Word(72); }
    std::uint32_t Child() const noexcept { return Word(76); }
    std::u16string Name() const {
        const std::size_t bytes = view.At<std::uint16_t>(64).value_or(0);
        std::u16string name(std::min(bytes / 2, kLongestName + 1), u'\0');
        std::memcpy(name.data(), view.Data(), name.size() * sizeof(char16_t));
        if (const std::size_t end = name.find(u'\0'); end != std::u16string::npos) name.resize(end);
        return name;
    }
    // Of files with small sectors the upper half of a size is left as it happened to be.
    CompoundFile::Entry Entry(bool wideSize) const {
        const std::uint64_t size = view.At<std::uint64_t>(120).value_or(0);
        return {Name(), Word(116), wideSize ? size : size & 0xFFFFFFFFU};
    }

    ByteView view;
};

}  // namespace

std::shared_ptr<CompoundFile> CompoundFile::Open(std::unique_ptr<DatabaseFile> file) {
    const std::shared_ptr<CompoundFile> compound(new CompoundFile(std::move(file)));
    return compound->ReadHeader() ? compound : nullptr;
}

// Section 2.2.
bool CompoundFile::ReadHeader() {
    std::byte header[kHeaderSize];
    if (!m_file->Read(0, header)) return false;
    const ByteView view(header);
    const std::uint16_t version = view.At<std::uint16_t>(26).value_or(0);
    m_shift = view.At<std::uint16_t>(30).value_or(0);
    if (view.At<std::uint64_t>(0) != kSignature || view.At<std::uint16_t>(28) != kByteOrder) return false;
    if (!(version == 3 && m_shift == 9) && !(version == 4 && m_shift == 12)) return false;
    if (view.At<std::uint16_t>(32) != kMiniShift || view.At<std::uint32_t>(56) != kMiniCutoff) return false;
    const std::uint64_t sectors = (m_file->Size() + SectorSize() - 1) >> m_shift;
    m_sectors = static_cast<std::uint32_t>(sectors - 1);
    m_miniFatStart = *view.At<std::uint32_t>(60);
    m_miniFatSectors = *view.At<std::uint32_t>(64);
    return ReadFatPlaces(header) && ReadDirectory(*view.At<std::uint32_t>(48));
}

// Where the parts of the allocation table lie: the first ones stand in the header, the others in a chain of sectors
// whose last number leads to the next (section 2.5). No more are read than the sectors of the file need, so that the
// chain ends even when it is a circle; a chain that is too short leaves its sectors without successors.
bool CompoundFile::ReadFatPlaces(const std::byte* header) {
    const ByteView view({header, kHeaderSize});
    const std::uint32_t perSector = SectorSize() / kTableEntry;
    const auto needed = static_cast<std::size_t>((std::uint64_t{m_sectors} + perSector - 1) / perSector);
    for (std::size_t i = 0; i < std::min(needed, kFatPlacesInHeader); ++i) {
        m_fatPlaces.push_back(*view.At<std::uint32_t>(76 + i * sizeof(std::uint32_t)));
    }
    std::vector<std::uint32_t> sector(perSector);
    std::uint32_t at = *view.At<std::uint32_t>(68);
    while (m_fatPlaces.size() < needed && at < m_sectors) {
        if (!m_file->Read(PlaceOf(at), std::as_writable_bytes(std::span(sector)))) break;
        const std::size_t count = std::min<std::size_t>(perSector - 1, needed - m_fatPlaces.size());
        m_fatPlaces.insert(m_fatPlaces.end(), sector.begin(), sector.begin() + static_cast<std::ptrdiff_t>(count));
        at = sector.back();
    }
    m_fat.resize(m_fatPlaces.size());
    return !m_fatPlaces.empty();
}

// The length of the directory is that of its chain.
bool CompoundFile::ReadDirectory(std::uint32_t start) {
    std::vector<std::byte> directory;
    std::uint32_t sector = start;
    for (std::uint32_t count = 0; sector != kEndOfChain; ++count) {
        if (sector >= m_sectors || count >= m_sectors) return false;
        const std::size_t end = directory.size();
        directory.resize(end + SectorSize());
        if (!m_file->Read(PlaceOf(sector), std::span(directory).subspan(end))) return false;
        if (!NextSector(sector, sector)) return false;
    }
    return directory.size() >= kEntrySize && CollectStreams(directory);
}

// The entries below the root are a tree of siblings, ordered in a way that a foreign writer may have got wrong. So the
// tree is walked whole, once, and what it holds is sorted here. An entry that two others lead to makes it no tree.
bool CompoundFile::CollectStreams(std::span<const std::byte> directory) {
    const std::size_t count = directory.size() / kEntrySize;
    const bool wideSizes = m_shift > 9;
    const auto entryAt = [&](std::size_t index) { return RawEntry(directory.subspan(index * kEntrySize, kEntrySize)); };
    const RawEntry root = entryAt(0);
    if (root.Type() != EntryType::Root) return false;
    std::memcpy(m_rootClass.data(), root.view.Data() + 80, m_rootClass.size());
    m_root = root.Entry(wideSizes);
    std::vector<bool> seen(count);
    std::vector<std::uint32_t> open{root.Child()};
    while (!open.empty()) {
        const std::uint32_t index = open.back();
        open.pop_back();
        if (index == kNoEntry) continue;
        if (index == 0 || index >= count || seen[index]) return false;
        seen[index] = true;
        const RawEntry entry = entryAt(index);
        open.push_back(entry.Left());
        open.push_back(entry.Right());
        if (entry.Type() == EntryType::Stream) m_streams.push_back(entry.Entry(wideSizes));
    }
    std::sort(m_streams.begin(), m_streams.end(), [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return true;
}

const CompoundFile::Entry* CompoundFile::Find(std::u16string_view name) const noexcept {
    const auto place = std::lower_bound(m_streams.begin(), m_streams.end(), name,
                                        [](const Entry& entry, std::u16string_view text) { return entry.name < text; });
    return place != m_streams.end() && place->name == name ? &*place : nullptr;
}

bool CompoundFile::OpenStream(const Entry& entry, CompoundStream& stream) {
    stream.m_file = shared_from_this();
    stream.m_size = entry.size;
    stream.m_mini = entry.size < kMiniCutoff;
    stream.m_runs.clear();
    if (entry.size > m_file->Size()) return false;
    const std::uint32_t shift = stream.m_mini ? kMiniShift : m_shift;
    const std::uint64_t units = (entry.size + (1U << shift) - 1) >> shift;
    const std::lock_guard guard(m_lock);
    if (stream.m_mini && units > 0 && !SetUpMini()) return false;
    return Follow(entry.start, units, stream.m_mini, stream.m_runs);
}

bool CompoundFile::ReadWhole(const Entry& entry, std::unique_ptr<std::byte[]>& bytes, std::size_t& size) {
    CompoundStream stream;
    if (!OpenStream(entry, stream)) return false;
    size = static_cast<std::size_t>(stream.Size());
    bytes = std::make_unique_for_overwrite<std::byte[]>(size);
    return stream.Read(0, {bytes.get(), size});
}

// The allocation table of the mini sectors and the chain of the stream that holds them (sections 2.4 and 2.7).
bool CompoundFile::SetUpMini() {
    if (m_miniState != MiniState::Unread) return m_miniState == MiniState::Ready;
    m_miniState = MiniState::Broken;
    if (m_root.size > m_file->Size() || m_miniFatSectors > m_sectors) return false;
    std::vector<Run> runs;
    if (!Follow(m_miniFatStart, m_miniFatSectors, false, runs)) return false;
    const std::uint32_t perSector = SectorSize() / kTableEntry;
    m_miniFat.resize(std::size_t{m_miniFatSectors} * perSector);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::uint64_t end = i + 1 < runs.size() ? runs[i + 1].from : m_miniFatSectors;
        const std::size_t count = static_cast<std::size_t>(end - runs[i].from) * perSector;
        const std::span part = std::span(m_miniFat).subspan(static_cast<std::size_t>(runs[i].from) * perSector, count);
        if (!m_file->Read(PlaceOf(runs[i].first), std::as_writable_bytes(part))) return false;
    }
    if (!Follow(m_root.start, (m_root.size + SectorSize() - 1) >> m_shift, false, m_miniRuns)) return false;
    m_miniState = MiniState::Ready;
    return true;
}

// Walks a chain of count units, which ends by that, and notes it as runs of neighbours. A unit that the walk met twice
// stands in two runs: sorted by their places, these then overlap.
bool CompoundFile::Follow(std::uint32_t start, std::uint64_t count, bool mini, std::vector<Run>& runs) {
    std::uint32_t unit = start;
    for (std::uint64_t i = 0; i < count; ++i) {
        if (unit > kLargestSector || (!mini && unit >= m_sectors)) return false;
        if (runs.empty() || unit != runs.back().first + (i - runs.back().from)) runs.push_back({i, unit});
        if (i + 1 < count && !(mini ? NextMini(unit, unit) : NextSector(unit, unit))) return false;
    }
    return runs.size() < 2 || !Overlap(runs, count);
}

bool CompoundFile::Overlap(const std::vector<Run>& runs, std::uint64_t count) {
    std::vector<std::pair<std::uint64_t, std::uint64_t>> places;  // of each run the first and the one behind the last
    places.reserve(runs.size());
    for (std::size_t i = 0; i < runs.size(); ++i) {
        const std::uint64_t end = i + 1 < runs.size() ? runs[i + 1].from : count;
        places.emplace_back(runs[i].first, runs[i].first + (end - runs[i].from));
    }
    std::sort(places.begin(), places.end());
    return std::adjacent_find(places.begin(), places.end(),
                              [](const auto& a, const auto& b) { return b.first < a.second; }) != places.end();
}

bool CompoundFile::NextSector(std::uint32_t sector, std::uint32_t& next) {
    const std::uint32_t perSector = SectorSize() / kTableEntry;
    const std::size_t part = sector / perSector;
    if (part >= m_fat.size() || m_fatPlaces[part] >= m_sectors) return false;
    if (m_fat[part] == nullptr) {
        Table table = std::make_unique_for_overwrite<std::uint32_t[]>(perSector);
        if (!m_file->Read(PlaceOf(m_fatPlaces[part]), std::as_writable_bytes(std::span(table.get(), perSector)))) {
            return false;
        }
        m_fat[part] = std::move(table);
    }
    next = m_fat[part][sector % perSector];
    return true;
}

bool CompoundFile::NextMini(std::uint32_t sector, std::uint32_t& next) const noexcept {
    if (sector >= m_miniFat.size()) return false;
    next = m_miniFat[sector];
    return true;
}

}  // namespace roundup
