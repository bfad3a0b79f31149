// The walk of the install sequence: each standard action becomes the work that tells what it left.
#pragma once

#include <cstdint>
#include <vector>

#include "msianalyzer/msiaction.h"
#include "utility/result.h"

namespace roundup {

class CInstallExecuteSequenceTableRow;
class CMSIAnalyzer;

// Used by one thread; the analyzer outlives it.
class CMSIAnalyzeController {
  public:
    // Small code 2 without an analyzer.
    ResultCode Init(CMSIAnalyzer* analyzer);
    // The sequence, the help files, the include file; the first failure ends it. Small code 0xD before Init.
    ResultCode Run();

  private:
    // Every row has its turn, also after one that failed; the last one's result counts.
    ResultCode RunSequence();
    ResultCode RunAction(const CInstallExecuteSequenceTableRow& row);
    ResultCode RunFeatures(MsiAction action);
    ResultCode ExportHelpFiles();
    void ApplyIncludeFile();

    bool m_initialized = false;
    CMSIAnalyzer* m_analyzer = nullptr;
    std::vector<const CInstallExecuteSequenceTableRow*> m_sequence;
};

}  // namespace roundup
