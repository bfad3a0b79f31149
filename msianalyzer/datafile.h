// Temporary data files: flat sequences of records, handed over when they are closed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/closedlibraries.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

// Makes the folder WAY-FERRY in the machine's temporary folder; one that is there already is fine. Small code 0x18
// without a temporary folder, 4 when it cannot be made.
ResultCode PrepareTempFolder();

// Writes one file at a time, through the host's file object. Numbers are little-endian, nothing is aligned, and there
// is no header. Used by one thread.
class CDataFile {
  public:
    CDataFile();
    CDataFile(const CDataFile&) = delete;
    CDataFile& operator=(const CDataFile&) = delete;
    virtual ~CDataFile();

    // A new file of a unique name with that extension, such as u".exe", in the folder of PrepareTempFolder. Small
    // code 4 without a file object, or when the file cannot be made.
    ResultCode Create(OwnedString& path, std::u16string_view extension);
    // The write's own result when it fails; small code 0xB when less was written.
    ResultCode WriteBytes(const void* data, std::uint32_t size);
    ResultCode WriteDword(std::uint32_t value) { return WriteBytes(&value, sizeof value); }
    ResultCode WriteQword(std::uint64_t value) { return WriteBytes(&value, sizeof value); }
    // The length in bytes, 32 bits, then the text without a terminator.
    ResultCode WriteString(std::u16string_view text);
    // May be called twice.
    void Close();

  private:
    IProbeIO* const m_io;  // null when the host has none
    bool m_open = false;
};

// Null when memory is short; the caller owns it.
CDataFile* CreateDataFile() noexcept;

}  // namespace roundup
