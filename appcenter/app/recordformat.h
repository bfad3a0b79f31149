// The stored form of an application: one flat little-endian record without padding, which the catalogue copies
// applications through and keeps in its cache.
//
//     magic, length of the whole record, name, key, sizes, code, flags, five texts, icon, files, directories,
//     sub-applications (whole records), seven texts that older records do not have
//
// A text is a byte count and so many bytes of UTF-16 with the terminator; 0 stands for null. There is no version:
// the length tells where an older record ends.
#pragma once

#include <cstdint>

namespace roundup {

inline constexpr std::uint32_t kAppMagic = 0x00505041;      // "APP" and a zero
inline constexpr std::uint32_t kFileMagic = 0x154C4946;     // "FIL" and 0x15
inline constexpr std::uint32_t kPackageMagic = 0x00505042;  // "BPP" and a zero
inline constexpr std::uint32_t kAliasMagic = 0xEACCCBAE;    // in front of a file's alias

// Levels of sub-applications below the outermost record. Real ones have one or two; the limit bounds the recursion
// of reading and writing.
inline constexpr std::uint32_t kMaxSubAppDepth = 256;

}  // namespace roundup
