// The rule file that names more of a product to export.
#pragma once

#include <memory>
#include <string_view>

#include "msianalyzer/configfileanalyzer.h"
#include "msianalyzer/datafile.h"

namespace roundup {

// Loaded once, behind the install sequence. The analyzer must not be null.
class CIncludeConfigFileAnalyzer : public CConfigFileAnalyzer {
  public:
    using CConfigFileAnalyzer::CConfigFileAnalyzer;

    // The whole run: reads the file and hands on what its entries name. The first failure of a step ends it; a line
    // that cannot be followed is dropped.
    virtual ResultCode Load(const char16_t* path);
    virtual ResultCode AnalyzeReg();
    virtual ResultCode AnalyzeFile();
    virtual ResultCode AnalyzeDir();
    virtual ResultCode AnalyzeUninstall();
    virtual ResultCode AnalyzeDriver();
    // Exports a subkey; the records are relative to the handle of the key that is opened for it. A key that does not
    // exist is no failure.
    virtual ResultCode SaveSubkey(KeyHandle root, std::u16string_view key, std::u16string_view subkey, bool view64);

  private:
    ResultCode SaveEntry(std::u16string_view line);
    ResultCode SaveUninstallKey(std::u16string_view line);

    std::unique_ptr<CDataFile> m_dataFile;
};

}  // namespace roundup
