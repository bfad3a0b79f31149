// Registry of the machine, with the access masks, view flags and error numbers of Win32.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace roundup {

// An open key, or one of the predefined roots. Roots are the sign-extended 64-bit values of the HKEY constants
// (winreg.h), on machines of either width.
using KeyHandle = std::uint64_t;

inline constexpr KeyHandle kHkeyClassesRoot = 0xFFFFFFFF80000000U;
inline constexpr KeyHandle kHkeyCurrentUser = 0xFFFFFFFF80000001U;
inline constexpr KeyHandle kHkeyLocalMachine = 0xFFFFFFFF80000002U;
inline constexpr KeyHandle kHkeyUsers = 0xFFFFFFFF80000003U;
inline constexpr KeyHandle kHkeyCurrentConfig = 0xFFFFFFFF80000005U;

// Access masks (winnt.h).
inline constexpr std::uint32_t kKeyRead = 0x20019;
inline constexpr std::uint32_t kKeyReadWrite = 0x2001F;
inline constexpr std::uint32_t kKeyAllAccess = 0xF003F;
inline constexpr std::uint32_t kKeySetValue = 0x0002;
inline constexpr std::uint32_t kKeyCreateSubKey = 0x0004;
inline constexpr std::uint32_t kKeyWow64Key64 = 0x0100;
inline constexpr std::uint32_t kKeyWow64Key32 = 0x0200;

// Value types (winnt.h).
inline constexpr std::uint32_t kRegNone = 0;
inline constexpr std::uint32_t kRegSz = 1;
inline constexpr std::uint32_t kRegExpandSz = 2;
inline constexpr std::uint32_t kRegBinary = 3;
inline constexpr std::uint32_t kRegDword = 4;
inline constexpr std::uint32_t kRegDwordBigEndian = 5;
inline constexpr std::uint32_t kRegLink = 6;
inline constexpr std::uint32_t kRegMultiSz = 7;
inline constexpr std::uint32_t kRegQword = 11;

struct KeyInfo {
    std::uint32_t subKeys = 0;
    std::uint32_t longestSubKey = 0;  // characters, without a terminator
    std::uint32_t values = 0;
    std::uint32_t longestValueName = 0;  // characters, without a terminator
    std::uint32_t longestValueData = 0;  // bytes
};

// Names are compared ignoring case (simple mappings of the basic plane). Subkeys enumerate in ascending order of
// their upper-cased names, values in the order in which they came to be. Absent is error 2, denied error 5, an index
// past the end 259, a buffer that is too small 234. Keys may change between two calls, also by another process.
class IRegistry {
  public:
    IRegistry() = default;
    IRegistry(const IRegistry&) = delete;
    IRegistry& operator=(const IRegistry&) = delete;
    virtual ~IRegistry() = default;

    // Opens subKey below parent (a root or an open key); null or empty subKey opens parent once more. access is an
    // access mask, or'ed with at most one view flag. On success key must be given to CloseKey; on failure it is 0.
    virtual Win32Error OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) = 0;

    // As OpenKey, but makes the key and its missing ancestors.
    virtual Win32Error CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) = 0;

    // Closes a handle from OpenKey or CreateKey. A root or 0 is left alone.
    virtual void CloseKey(KeyHandle key) = 0;

    virtual Win32Error QueryInfo(KeyHandle key, KeyInfo& info) = 0;

    // length: in, the buffer's size in characters with room for the terminator; out, the characters of the name
    // without it. Nothing is written to name when it does not fit.
    virtual Win32Error EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) = 0;

    // As EnumKey for the name. size: in, bytes of room at data; out, bytes of the value. data may be null, then only
    // name, type and size are told. Texts come with whatever terminator was stored, also with none.
    virtual Win32Error EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length,
                                 std::uint32_t& type, void* data, std::uint32_t& size) = 0;

    // The value of that name (null or empty: the default value). type, data and size as in EnumValue; with error 234
    // size tells the bytes needed and data is undefined.
    virtual Win32Error QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                                  std::uint32_t& size) = 0;

    virtual Win32Error SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                                std::uint32_t size) = 0;

    virtual Win32Error DeleteValue(KeyHandle key, const char16_t* name) = 0;
};

}  // namespace roundup
