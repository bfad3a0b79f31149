// What the program tells of a store package, field by field, in the order of its JSON.
#pragma once

#include <cstdint>
#include <string>

#include "appcenter/appx/appx.h"

namespace roundup::host {

// "major.minor.build.revision" of a packed version.
std::string DottedVersion(std::uint64_t version);

// The flags of the package's inner record.
std::uint64_t RecordFlags(const CAppx& package);

// "64" for a package of a 64-bit architecture, "32" for one of a 32-bit one; empty for one that runs on all.
const char* PackageBitness(const CAppx& package);

}  // namespace roundup::host
