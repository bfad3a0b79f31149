#include "msianalyzer/imsianalyzer.h"

namespace roundup {

IMSIAnalyzer* CreateMSIAnalyzer() noexcept { return nullptr; }

}  // namespace roundup
