// Reads the store pair of a gathered application (docs/formats.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "appcenter/app/app.h"

namespace roundup::host {

// An entry of the index.
struct StoreEntry {
    std::uint32_t type = 0;    // ItemType
    std::uint64_t offset = 0;  // bytes into the data
    std::uint64_t size = 0;    // bytes
};

// One item of a record. A registry item is a value, or a key when it has no name, type and data; its root is the handle
// of the key that its key is relative to.
struct StoreItem {
    std::uint64_t root = 0;  // registry items have these
    std::u16string key;
    std::u16string name;
    std::uint32_t valueType = 0;
    std::span<const std::byte> data;     // in the record's bytes
    std::uint32_t flags = 0;             // bit 0 is the 64-bit view
    std::vector<std::u16string> texts;   // all others have these, in the order of the record
    std::vector<std::uint32_t> numbers;  // likewise
};

// The words for a type of record, such as "registry"; "unknown" for a number that no record has.
const char* StoreTypeName(std::uint32_t type) noexcept;
// True for the types whose items are registry keys and values.
bool IsRegistryType(std::uint32_t type) noexcept;

// The entries of an index file. False when it is none: each entry has its mark, and nothing stands between them.
bool ReadStoreIndex(std::span<const std::byte> index, std::vector<StoreEntry>& entries);

// Takes a record apart. False for one that does not end with its end mark, whose lengths run past it, or of a type that
// no record has; items hold what came before the fault.
bool ReadStoreRecord(std::uint32_t type, std::span<const std::byte> record, std::vector<StoreItem>& items);

// The pair of an application, read from the machine while its temporary files are there.
struct StorePair {
    std::vector<std::byte> index;
    std::vector<std::byte> data;
    std::vector<StoreEntry> entries;

    // The bytes of an entry; nothing of one that the data does not hold.
    std::span<const std::byte> Record(const StoreEntry& entry) const noexcept;
};
// False when the application has no store, or it cannot be read.
bool ReadStorePair(const CApp& app, StorePair& pair);

}  // namespace roundup::host
