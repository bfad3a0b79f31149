// The keys of makers and products below Software, by their words.
#pragma once

#include <vector>

#include "appcenter/appreggather/scanentries.h"
#include "platform/registry.h"

namespace roundup {

class CWFYRegKey;
class SubKeyReader;
struct RegGatherResults;

// ProcessWide<CSoftwareKeyCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CSoftwareKeyCache {
  public:
    CSoftwareKeyCache();
    CSoftwareKeyCache(const CSoftwareKeyCache&) = delete;
    CSoftwareKeyCache& operator=(const CSoftwareKeyCache&) = delete;

    // Lets results.pwszSoftwareKey point at the entry whose words share most with the tokens: each pair of a word and a
    // token of which one begins with the other counts the length of the shorter one. Of equal entries the first in
    // order wins; without a shared character there is none.
    void FindSoftwareKey(const std::vector<NameToken>& tokens, RegGatherResults& results) const;

  private:
    void ScanHive(KeyHandle root, bool view64);
    void ScanMaker(const CWFYRegKey& software, bool view64);
    // False when the key is named by a noise word, which ends the scan that it is met in.
    bool AddKey(SubKeyReader& reader, std::u16string_view key, std::u16string_view entryName, std::uint32_t level);

    ScanEntries m_entries;
};

}  // namespace roundup
