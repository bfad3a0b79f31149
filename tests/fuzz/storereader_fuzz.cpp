// The reader of store pairs: whatever the bytes say, reading ends, and what it brings is of those bytes. The first byte
// is the type of the record; 0 stands for an index.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <vector>

#include "host/storereader.h"

namespace {

using namespace roundup;

void Check(bool holds) {
    if (!holds) std::abort();
}

void ReadIndex(std::span<const std::byte> bytes) {
    host::StorePair pair;
    if (!host::ReadStoreIndex(bytes, pair.entries)) return;
    Check(pair.entries.size() * 24 == bytes.size());
    // The index as its own data: entries that reach out of it have no record.
    pair.data.assign(bytes.begin(), bytes.end());
    for (const host::StoreEntry& entry : pair.entries) {
        const std::span<const std::byte> record = pair.Record(entry);
        Check(record.empty() || record.size() == entry.size);
        Check(record.empty() || (record.data() >= pair.data.data() &&
                                 record.data() + record.size() <= pair.data.data() + pair.data.size()));
    }
}

void ReadRecord(std::uint32_t type, std::span<const std::byte> bytes) {
    std::vector<host::StoreItem> items;
    const bool whole = host::ReadStoreRecord(type, bytes, items);
    Check(!whole || host::StoreTypeName(type) != std::string("unknown"));
    std::size_t taken = 0;
    for (const host::StoreItem& item : items) {
        taken += (item.key.size() + item.name.size()) * sizeof(char16_t) + item.data.size();
        taken += item.numbers.size() * sizeof(std::uint32_t);
        for (const std::u16string& text : item.texts) taken += text.size() * sizeof(char16_t);
        Check(item.data.empty() ||
              (item.data.data() >= bytes.data() && item.data.data() + item.data.size() <= bytes.data() + bytes.size()));
    }
    Check(taken <= bytes.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const auto bytes = std::as_bytes(std::span(data + 1, size - 1));
    if (data[0] == 0) {
        ReadIndex(bytes);
    } else {
        ReadRecord(data[0], bytes);
    }
    return 0;
}
