// What takes the place of a closed library that is absent, on every machine.
#pragma once

#include <string>

#include "platform/closedlibraries.h"
#include "platform/filesystem.h"

namespace roundup {

// A file object that is a plain stream over files, which must outlive it. It starts with one reference; null when
// memory is short.
IProbeIO* MakeFileObject(IFileSystem& files);

// The first existing path, in the order of names, that the masks of path match. False, and expanded empty, when there
// is none.
bool ExpandFirstMatch(IFileSystem& files, const char16_t* path, std::u16string& expanded);

}  // namespace roundup
