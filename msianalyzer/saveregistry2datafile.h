// Copies live registry keys and values into a data file.
//
// A record: root (64 bits, a predefined root or the value of an open handle), key, name, type, byte count, bytes,
// view (1 for the 64-bit view). A key has a record of its own, without name, type and bytes, in front of its values.
// A file of such records ends with 64 bits set.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/registry.h"
#include "utility/result.h"

namespace roundup {

class CDataFile;
class CMSIAnalyzer;
class CWFYRegKey;

// Used by one thread; file and analyzer outlive it. Without an analyzer, or one without a filter, nothing counts as
// seen before.
class CSaveRegistry2DataFile {
  public:
    CSaveRegistry2DataFile(CDataFile& file, const CMSIAnalyzer* analyzer) noexcept;
    CSaveRegistry2DataFile(const CSaveRegistry2DataFile&) = delete;
    CSaveRegistry2DataFile& operator=(const CSaveRegistry2DataFile&) = delete;
    ~CSaveRegistry2DataFile();

    // The key with everything beneath it, depth first; a part that the filter has seen is left out with all of its
    // subkeys, one that does not exist writes nothing, one below the deepest level of a registry (512) is left out.
    // root is a predefined root or an open key.
    ResultCode SaveKey(KeyHandle root, std::u16string_view key, bool view64);
    // One value; nothing when the key or the value does not exist, or the filter has seen it.
    ResultCode SaveValue(KeyHandle root, std::u16string_view key, std::u16string_view name, bool view64);

  private:
    struct Walk;
    struct ValueKey;
    ResultCode EnterKey(Walk& walk);
    ResultCode NextSubkey(Walk& walk);
    ResultCode WriteValues(const Walk& walk, CWFYRegKey& key);
    ResultCode OpenValueKey(KeyHandle root, std::u16string_view key, bool view64);
    ResultCode WriteRecord(KeyHandle root, std::u16string_view key, std::u16string_view name, std::uint32_t type,
                           std::span<const std::byte> data, bool view64);

    CDataFile& m_file;
    const CMSIAnalyzer* const m_analyzer;
    std::unique_ptr<ValueKey> m_valueKey;  // of the last value; null before the first
    std::vector<std::byte> m_record;       // the record that is being put together
};

}  // namespace roundup
