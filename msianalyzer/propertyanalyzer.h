// The properties of a product, as far as its database tells them.
#pragma once

#include "msianalyzer/msianalyzer.h"
#include "utility/result.h"

namespace roundup {

class CCustomActionTableRow;

// Used by one thread; the analyzer outlives it.
class CPropertyAnalyzer {
  public:
    // Small code 2 without an analyzer.
    ResultCode Init(const CMSIAnalyzer* analyzer);
    // The Property table, then what actions set that run under no condition; the first value of a name stays. Small
    // code 0xD before Init. An action whose text cannot be resolved ends the scan, which is no failure.
    ResultCode Analyze();
    PropertyMap& Properties() noexcept { return m_properties; }

  private:
    void CopyTable();
    bool AddAction(const CCustomActionTableRow& row);

    bool m_initialized = false;
    const CMSIAnalyzer* m_analyzer = nullptr;
    PropertyMap m_properties;
};

}  // namespace roundup
