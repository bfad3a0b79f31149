// What an application holds apart from its plain files: a pair of temporary files, records and their index.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "msianalyzer/itemcallback.h"
#include "platform/closedlibraries.h"
#include "utility/fixedtext.h"
#include "utility/result.h"

namespace roundup {

// One element of the ".idx" file, which has no header: little-endian, no padding.
struct StoreIndexEntry {
    static constexpr std::uint32_t kMagic = 0x49534341;  // the bytes "ACSI"
    static constexpr std::uint32_t kNoType = 0xFFFFFFFFU;

    std::uint32_t magic = kMagic;
    std::uint32_t type = kNoType;  // ItemType
    std::uint64_t offset = 0;      // of the record in the ".cfg" file, bytes
    std::uint64_t size = 0;        // bytes
};
static_assert(sizeof(StoreIndexEntry) == 24);

// Puts the primitives of a record together, so that it is written in one piece.
class StoreRecord {
  public:
    void Clear() noexcept { m_bytes.clear(); }
    void Dword(std::uint32_t value) { Bytes(&value, sizeof value); }
    void Qword(std::uint64_t value) { Bytes(&value, sizeof value); }
    // The length in bytes, 32 bits, then UTF-16 without a terminator.
    void String(std::u16string_view text);
    void Bytes(const void* data, std::size_t size);

    const std::byte* Data() const noexcept { return m_bytes.data(); }
    std::uint32_t Size() const noexcept { return static_cast<std::uint32_t>(m_bytes.size()); }

  private:
    std::vector<std::byte> m_bytes;
};

// Records are written one behind the other: BeginRecord, any number of Write, EndRecord. A file that was not handed on
// (Keep) is deleted when the store goes. Belongs to one gather, on its thread.
class CAppConfigStore {
  public:
    CAppConfigStore() = default;
    CAppConfigStore(const CAppConfigStore&) = delete;
    CAppConfigStore& operator=(const CAppConfigStore&) = delete;
    ~CAppConfigStore();

    // Makes "%s\%s.idx" and "%s\%s.cfg" anew in the folder WAY_FERRY of the temporary folder, named by the key as it
    // is. context goes to callback, the sink of the gather, with each file and folder. ObjectAllocation for an empty
    // key and without a file object, BadHandle when a file cannot be made.
    ResultCode Open(std::u16string_view key, ItemCallback callback, void* context);

    void BeginRecord(std::uint32_t type) noexcept;
    // BadArgument without data.
    ResultCode Write(const void* data, std::uint32_t size);
    ResultCode Write(const StoreRecord& record) { return Write(record.Data(), record.Size()); }
    // A record that wrote nothing leaves no entry.
    void EndRecord();

    // The item callback of the package analyzer, whose context is a store: files and folders go to the sink, and a
    // temporary data file becomes a record and is deleted.
    static ResultCode OnItem(void* store, const char16_t* path, std::uint64_t size, std::uint32_t type);
    // Appends a data file as one record. The record that is being written is left alone.
    ResultCode AppendFile(const char16_t* path, std::uint32_t type);

    // Closes both files, whose sizes are final then. May be called twice.
    void Close() noexcept;
    // The files belong to another object from now on.
    void Keep() noexcept { m_owned = false; }

    const char16_t* DataPath() const noexcept { return m_dataPath.Text(); }
    const char16_t* IndexPath() const noexcept { return m_indexPath.Text(); }

  private:
    using PathText = FixedText<520>;
    class File;

    ResultCode NameFiles(std::u16string_view key);
    ResultCode WriteEntry(const StoreIndexEntry& entry);

    ItemCallback m_callback = nullptr;
    void* m_context = nullptr;
    IProbeIO* m_index = nullptr;
    IProbeIO* m_data = nullptr;
    std::uint64_t m_position = 0;  // end of the data file, bytes
    StoreIndexEntry m_entry;       // the record being written
    PathText m_dataPath;
    PathText m_indexPath;
    bool m_owned = false;
};

}  // namespace roundup
