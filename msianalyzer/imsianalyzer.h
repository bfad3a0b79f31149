// What a product of Windows Installer put on the machine, worked out from its cached database.
#pragma once

#include "msianalyzer/itemcallback.h"
#include "utility/result.h"

namespace roundup {

class IRemoveRepeatReg;

// Open, Analyze, Close, Release, on one thread. The order of the operations is fixed.
class IMSIAnalyzer {
  public:
    IMSIAnalyzer() = default;
    IMSIAnalyzer(const IMSIAnalyzer&) = delete;
    IMSIAnalyzer& operator=(const IMSIAnalyzer&) = delete;
    virtual ~IMSIAnalyzer() = default;

    // installSource may be null. context goes to onItem as its first argument. The filter is the caller's and
    // outlives the analyzer. Small code 2 for a missing argument, 0x18 for a file that is no database.
    virtual ResultCode Open(const char16_t* msiPath, const char16_t* installSource, ItemCallback onItem, void* context,
                            IRemoveRepeatReg* filter) = 0;
    // Small code 0xD before Open, 1 for a database that names no product. What has been handed on stays handed on.
    virtual ResultCode Analyze() = 0;
    virtual ResultCode Close() = 0;
    // Destroys the object.
    virtual void Release() = 0;
};

// Null when memory is short.
IMSIAnalyzer* CreateMSIAnalyzer() noexcept;

}  // namespace roundup
