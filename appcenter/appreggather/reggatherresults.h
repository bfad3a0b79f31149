// What the scans of the machine find for one application.
#pragma once

#include <cstdint>

#include "utility/stringcontainers.h"

namespace roundup {

struct RegGatherResults {
    CStringSet ProgIds;
    CStringSet ClassIds;  // in the braces that the registry has, as the two behind it
    CStringSet TypeLibIds;
    CStringSet InterfaceIds;
    CStringSet ServiceNames;
    CStringSet AppPathNames;
    CStringSet ExtensionNames;  // with their dot
    CStringSet ClassNames;
    const char16_t* pwszSoftwareKey = nullptr;  // belongs to the cache of these keys
    CStringSet DataFolderNames;
    CStringSet CommonFolderNames;
    std::uint32_t bMicrosoft = 0;  // from the maker of the platform: decides which half of a word cache is searched
};

}  // namespace roundup
