// The frame of an export: a temporary data file that is filled, ended, and handed over or deleted.
#pragma once

#include <cstdint>

#include "msianalyzer/datafile.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

class CMSIAnalyzer;

// A file of registry records ends with 64 bits set, one of plain records with 32.
enum class DataTerminator : std::uint8_t { Plain, Registry };

// What most exports need to have written, bytes: a file of plain records one of them, one of registry records none.
inline constexpr std::uint64_t kExportThreshold = 5;

// Writes the texts one behind the other.
template <class... Texts>
ResultCode WriteStrings(CDataFile& file, const Texts&... texts) {
    for (const std::u16string_view text : {std::u16string_view(texts)...}) {
        if (const ResultCode rc = file.WriteString(text); Failed(rc)) return PassQuiet(rc);
    }
    return kSuccess;
}

// A file that was not handed over is deleted at the end of the object. Used by one thread.
//
//     DataExport data(analyzer, file);
//     if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
//     ... file.WriteString(...) ...
//     return data.HandOver(DataTerminator::Plain, 5, ItemType::kShortcut);
class DataExport {
  public:
    DataExport(const CMSIAnalyzer& analyzer, CDataFile& file) noexcept : m_analyzer(analyzer), m_file(file) {}
    DataExport(const DataExport&) = delete;
    DataExport& operator=(const DataExport&) = delete;
    ~DataExport();

    // Makes the file.
    ResultCode Begin();
    // Writes the end, closes the file and reports it when it has at least threshold bytes.
    ResultCode HandOver(DataTerminator terminator, std::uint64_t threshold, std::uint32_t type);

  private:
    const CMSIAnalyzer& m_analyzer;
    CDataFile& m_file;
    OwnedString m_path;  // empty once it is not ours
};

}  // namespace roundup
