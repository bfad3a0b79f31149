// Junctions and mounted folders of NTFS volumes.
#pragma once

#include <cstddef>

#include "utility/fixedtext.h"

namespace roundup {

// Where a mount point leads: the substitute name of its reparse data without the "\??\" in front (ntifs.h,
// REPARSE_DATA_BUFFER). False, and target empty, for anything else, and when the name is broken or does not fit.
// target has room for size characters with the terminator, at least 260.
bool GetMountTarget(const char16_t* path, char16_t* target, std::size_t size);

// Follows every mount point in a path, at most 63 of them. True, with the resulting path in target, when there was
// one; false, and target untouched, when there was none, when they do not end, or when a path of 520 characters or
// more, or one that does not fit target, comes up. A mount point that leads into itself or above itself is not
// followed.
bool ResolveMountPoints(const char16_t* path, char16_t* target, std::size_t size);

template <std::size_t N>
bool GetMountTarget(const char16_t* path, FixedText<N>& target) {
    static_assert(N >= 260);
    return GetMountTarget(path, target.Data(), N);
}
template <std::size_t N>
bool ResolveMountPoints(const char16_t* path, FixedText<N>& target) {
    return ResolveMountPoints(path, target.Data(), N);
}

}  // namespace roundup
