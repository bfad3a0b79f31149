// The reading behind IMSIProductInfo.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "msianalyzer/tables/icontable.h"
#include "msianalyzer/tables/propertytable.h"

namespace roundup {

// Opened once; used by one thread.
class CMSIProductInfo {
  public:
    CMSIProductInfo() = default;
    CMSIProductInfo(const CMSIProductInfo&) = delete;
    CMSIProductInfo& operator=(const CMSIProductInfo&) = delete;
    virtual ~CMSIProductInfo();

    // Reads of the properties the code, the name, the version and the icon's name, and all icons.
    ResultCode Open(const char16_t* path);
    // Small code 1 for a property that the package does not have, or that is none of the four.
    ResultCode GetProperty(std::u16string_view name, std::u16string_view& value) const;
    // The icon that the package names, as an icon file; small code 1 without one. data and size must be empty.
    ResultCode GetIcon(std::unique_ptr<std::byte[]>& data, std::uint32_t& size) const;

  private:
    InstallerHandle m_database = 0;
    TablePtr<CPropertyTableAnalyzer> m_properties;
    TablePtr<CIconTableAnalyzer> m_icons;
};

}  // namespace roundup
