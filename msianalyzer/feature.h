// One feature of a product, and its components that are installed.
#pragma once

#include <string_view>

#include "msianalyzer/msiaction.h"
#include "utility/result.h"

namespace roundup {

class CFeatureTableRow;
class CMSIAnalyzer;

// Lives for one action. row belongs to a table of the analyzer. Used by one thread.
class CFeature {
  public:
    explicit CFeature(const CFeatureTableRow& row) noexcept : m_row(row) {}
    CFeature(const CFeature&) = delete;
    CFeature& operator=(const CFeature&) = delete;
    ~CFeature() = default;

    // Runs the action for each component of the feature that the machine has; the first failure ends the walk and is
    // the result. Small code 2 without an analyzer. A component that is in no table is passed over.
    ResultCode Execute(const CMSIAnalyzer* analyzer, MsiAction action);

  private:
    ResultCode RunComponent(std::u16string_view key) const;

    const CFeatureTableRow& m_row;
    const CMSIAnalyzer* m_analyzer = nullptr;
    MsiAction m_action{};
};

}  // namespace roundup
