// Compound files, the containers of installer databases: the streams in the root of one. Published as "[MS-CFB]:
// Compound File Binary File Format"; the sections named below are those of that document.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/installer/databasefile.h"
#include "platform/threading.h"

namespace roundup {

class CompoundStream;

// The file can come from anybody. All of it that is believed is checked when it is used: a chain that leaves the file,
// runs in a circle or ends before its stream does makes the stream unreadable, and the file when the chain is that of
// the directory. Every thread may call.
class CompoundFile : public std::enable_shared_from_this<CompoundFile> {
  public:
    struct Entry {
        std::u16string name;  // as it stands, at most 31 units
        std::uint32_t start = 0;
        std::uint64_t size = 0;  // bytes, as the directory tells them
    };
    using ClassId = std::array<std::byte, 16>;

    // Null for a file that is none or whose directory cannot be read. Throws std::bad_alloc.
    static std::shared_ptr<CompoundFile> Open(std::unique_ptr<DatabaseFile> file);

    // In ascending order of their names. Streams of storages inside of the root are not among them.
    const std::vector<Entry>& Streams() const noexcept { return m_streams; }
    // Null when there is none. Upper and lower case differ.
    const Entry* Find(std::u16string_view name) const noexcept;
    const ClassId& RootClass() const noexcept { return m_rootClass; }

    // False when the chain of the entry does not carry its size. Throws std::bad_alloc.
    bool OpenStream(const Entry& entry, CompoundStream& stream);
    // The whole content; false when it cannot be read. Throws std::bad_alloc.
    bool ReadWhole(const Entry& entry, std::unique_ptr<std::byte[]>& bytes, std::size_t& size);

  private:
    friend class CompoundStream;
    using Table = std::unique_ptr<std::uint32_t[]>;
    // Units of a chain that lie side by side.
    struct Run {
        std::uint64_t from = 0;   // of the stream's units, the first in this run
        std::uint32_t first = 0;  // where that one lies
    };

    explicit CompoundFile(std::unique_ptr<DatabaseFile> file) noexcept : m_file(std::move(file)) {}
    bool ReadHeader();
    bool ReadFatPlaces(const std::byte* header);
    bool ReadDirectory(std::uint32_t start);
    bool CollectStreams(std::span<const std::byte> directory);
    bool SetUpMini();
    bool Follow(std::uint32_t start, std::uint64_t count, bool mini, std::vector<Run>& runs);
    static bool Overlap(const std::vector<Run>& runs, std::uint64_t count);
    bool NextSector(std::uint32_t sector, std::uint32_t& next);
    bool NextMini(std::uint32_t sector, std::uint32_t& next) const noexcept;
    std::uint64_t PlaceOf(std::uint32_t sector) const noexcept { return (std::uint64_t{sector} + 1) << m_shift; }
    std::uint32_t SectorSize() const noexcept { return 1U << m_shift; }

    // Set once by Open.
    const std::unique_ptr<DatabaseFile> m_file;
    std::uint32_t m_shift = 0;    // a sector has two to this many bytes
    std::uint32_t m_sectors = 0;  // in the file, a last one that is cut included
    std::uint32_t m_miniFatStart = 0;
    std::uint32_t m_miniFatSectors = 0;
    std::vector<std::uint32_t> m_fatPlaces;  // the sector of each part of the allocation table
    std::vector<Entry> m_streams;
    ClassId m_rootClass{};
    Entry m_root;  // its stream holds the mini sectors

    // Guarded by m_lock: what is read at its first use.
    Mutex m_lock;
    std::vector<Table> m_fat;
    enum class MiniState { Unread, Ready, Broken };
    MiniState m_miniState = MiniState::Unread;
    std::vector<std::uint32_t> m_miniFat;
    std::vector<Run> m_miniRuns;  // of the stream that holds the mini sectors
};

// The content of one stream. Used by one thread at a time; keeps its file.
class CompoundStream {
  public:
    std::uint64_t Size() const noexcept { return m_size; }
    // False unless every byte was there. Throws std::bad_alloc.
    bool Read(std::uint64_t offset, std::span<std::byte> target);

  private:
    friend class CompoundFile;
    using Runs = std::vector<CompoundFile::Run>;
    bool ReadRuns(const Runs& runs, std::uint64_t size, std::uint32_t shift, std::uint64_t offset,
                  std::span<std::byte> target, bool mini);

    std::shared_ptr<CompoundFile> m_file;
    std::uint64_t m_size = 0;
    bool m_mini = false;
    Runs m_runs;
};

}  // namespace roundup
