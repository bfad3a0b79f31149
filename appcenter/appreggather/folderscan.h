// How folders are read into the word caches.
#pragma once

#include <span>
#include <string_view>

namespace roundup {

class ScanEntries;

// The folder of the platform's maker is read as a group of its own, whose folders become entries of level 1. Names
// compare ignoring case.
struct FolderScanRules {
    std::span<const std::u16string_view> skipped;
    std::u16string_view group;
    std::span<const std::u16string_view> skippedInGroup;
    // A folder that cannot be listed ends the scan of the top level, as it always ends that of the group.
    bool endsAtUnlisted;
};

// Makes an entry of each folder below root, with its name and those of the folders one level below as words. Links to
// elsewhere are left out. Null or empty adds nothing.
void ScanFolder(const char16_t* root, const FolderScanRules& rules, ScanEntries& entries);

}  // namespace roundup
