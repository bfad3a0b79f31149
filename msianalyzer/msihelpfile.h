// The help collections that a product registered.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "msianalyzer/datafile.h"
#include "utility/result.h"

namespace roundup {

class CHelpNamespaceTableRow;
class CMSIAnalyzer;

// Used by one thread; the analyzer outlives it.
class CMSIHelpFile {
  public:
    CMSIHelpFile() = default;
    CMSIHelpFile(const CMSIHelpFile&) = delete;
    CMSIHelpFile& operator=(const CMSIHelpFile&) = delete;
    ~CMSIHelpFile() = default;

    // Small code 2 without an analyzer, 5 when memory is short.
    ResultCode Init(const CMSIAnalyzer* analyzer);
    // Reports the files of the product's namespaces and exports the namespaces; nothing for a product without any.
    // Small code 0xD before Init.
    ResultCode Run();

  private:
    ResultCode ReportHelpFolder(std::u16string_view property) const;
    ResultCode ExportNamespaces();
    std::u16string PathOf(const CHelpNamespaceTableRow& row) const;

    bool m_initialized = false;
    const CMSIAnalyzer* m_analyzer = nullptr;
    std::unique_ptr<CDataFile> m_dataFile;
};

}  // namespace roundup
