// The folders in which programs keep the data of the user and of all users, by their words.
#pragma once

#include <vector>

#include "appcenter/appreggather/scanentries.h"

namespace roundup {

struct RegGatherResults;

// ProcessWide<CDataFolderCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CDataFolderCache {
  public:
    CDataFolderCache();
    CDataFolderCache(const CDataFolderCache&) = delete;
    CDataFolderCache& operator=(const CDataFolderCache&) = delete;

    // Adds to results.DataFolderNames each word that equals a token; of the maker's own folders the entry's name.
    void FindDataFolders(const std::vector<NameToken>& tokens, RegGatherResults& results) const;

  private:
    ScanEntries m_entries;
};

}  // namespace roundup
