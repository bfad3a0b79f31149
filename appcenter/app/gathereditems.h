// What a gather has found for an application.
#pragma once

#include <memory>
#include <vector>

#include "appcenter/appfile/appfile.h"
#include "utility/stringcontainers.h"

namespace roundup {

// Kept apart from the application, of which a catalogue has thousands and gathers few.
struct GatheredItems {
    std::vector<std::unique_ptr<CWFYFile>> Files;
    CStringSet FilePaths;          // what the gather has added so far
    CStringSet Directories;        // each ends in a backslash
    CStringSet SystemDirectories;  // special folders of the system; in no record
    // Point into Files.
    CWFYFile* pConfigFile = nullptr;
    CWFYFile* pIndexFile = nullptr;
    // The path that was counted last: walks come sorted, so the next one mostly stands right behind it.
    CStringSet::iterator lastCounted = FilePaths.end();

    // Notes a file of the config store; true when it is one.
    bool KeepStoreFile(CWFYFile& file) noexcept;
};

}  // namespace roundup
