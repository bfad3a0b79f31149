// Win32 error numbers that the seam's operations answer with. Source: winerror.h of the Windows SDK, documented as
// "System Error Codes".
#pragma once

#include <cstdint>

namespace roundup {

using Win32Error = std::uint32_t;

inline constexpr Win32Error kErrorSuccess = 0;
inline constexpr Win32Error kErrorFileNotFound = 2;
inline constexpr Win32Error kErrorPathNotFound = 3;
inline constexpr Win32Error kErrorAccessDenied = 5;
inline constexpr Win32Error kErrorInvalidHandle = 6;
inline constexpr Win32Error kErrorNotEnoughMemory = 8;
inline constexpr Win32Error kErrorNoMoreFiles = 18;
inline constexpr Win32Error kErrorWriteFault = 29;
inline constexpr Win32Error kErrorReadFault = 30;
inline constexpr Win32Error kErrorSharingViolation = 32;
inline constexpr Win32Error kErrorNotSupported = 50;
inline constexpr Win32Error kErrorFileExists = 80;
inline constexpr Win32Error kErrorInvalidParameter = 87;
inline constexpr Win32Error kErrorDiskFull = 112;
inline constexpr Win32Error kErrorInsufficientBuffer = 122;
inline constexpr Win32Error kErrorInvalidName = 123;
inline constexpr Win32Error kErrorDirectoryNotEmpty = 145;
inline constexpr Win32Error kErrorAlreadyExists = 183;
inline constexpr Win32Error kErrorMoreData = 234;
inline constexpr Win32Error kErrorNoMoreItems = 259;
inline constexpr Win32Error kErrorBadConfiguration = 1610;
inline constexpr Win32Error kErrorUnknownProduct = 1605;
inline constexpr Win32Error kErrorUnknownProperty = 1608;
inline constexpr Win32Error kErrorBadQuerySyntax = 1615;
inline constexpr Win32Error kErrorOpenFailed = 110;
inline constexpr Win32Error kErrorFunctionFailed = 1627;
inline constexpr Win32Error kErrorInvalidDatatype = 1804;
inline constexpr Win32Error kErrorCannotAccessFile = 1920;
inline constexpr Win32Error kErrorNotAReparsePoint = 4390;

}  // namespace roundup
