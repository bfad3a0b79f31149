// The folders below the two Common Files folders, by their words.
#pragma once

#include <vector>

#include "appcenter/appreggather/scanentries.h"

namespace roundup {

struct RegGatherResults;

// ProcessWide<CCommonFilesCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CCommonFilesCache {
  public:
    CCommonFilesCache();
    CCommonFilesCache(const CCommonFilesCache&) = delete;
    CCommonFilesCache& operator=(const CCommonFilesCache&) = delete;

    // Adds to results.CommonFolderNames, of each entry, its first word that begins as a token does or as which a token
    // begins; words and tokens of up to two characters have to be equal.
    void FindCommonFolders(const std::vector<NameToken>& tokens, RegGatherResults& results) const;

  private:
    ScanEntries m_entries;
};

}  // namespace roundup
