// The few facts of a cached package that the catalogue needs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

// A package, read when it is opened: two of its tables, and of the properties four. An object belongs to one thread;
// several may work at once. Every getter gives small code 2 for a null argument and 0xD without an open package; a
// property that the package does not have is an empty text, and no failure. The order of the operations is fixed.
class IMSIProductInfo {
  public:
    virtual ~IMSIProductInfo() = default;
    // Small code 2 for a null path, 0x18 for a file that is no package, and the failures of its tables; nothing is
    // open then.
    virtual ResultCode Open(const char16_t* path) = 0;
    virtual ResultCode Close() = 0;
    // Destroys the object.
    virtual void Release() = 0;
    virtual ResultCode GetProductCode(OwnedString* text) = 0;
    virtual ResultCode GetProductName(OwnedString* text) = 0;
    virtual ResultCode GetProductVersion(OwnedString* text) = 0;
    // An icon file, of size bytes. Small code 1 without an icon; data is null and size 0 then.
    virtual ResultCode GetProductIcon(std::unique_ptr<std::byte[]>* data, std::uint32_t* size) = 0;
    // Always 0.
    virtual ResultCode GetReserved1(std::uint32_t* number) = 0;
    virtual ResultCode GetReserved2(std::uint32_t* number) = 0;
    // The suite number of the product code (utility/suitenames.h).
    virtual ResultCode GetSuiteFlags(std::uint32_t* number) = 0;
};

struct ReleaseProductInfo {
    void operator()(IMSIProductInfo* info) const noexcept { info->Release(); }
};
using ProductInfoPtr = std::unique_ptr<IMSIProductInfo, ReleaseProductInfo>;

// Null when memory is short; the caller owns it.
IMSIProductInfo* CreateMSIProductInfo() noexcept;

}  // namespace roundup
