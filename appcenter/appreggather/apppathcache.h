// The App Paths entries of the machine, by their files.
#pragma once

#include "appcenter/appreggather/multimap.h"
#include "platform/registry.h"

namespace roundup {

class CApp;
struct RegGatherResults;

// ProcessWide<CAppPathCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CAppPathCache {
  public:
    CAppPathCache();
    CAppPathCache(const CAppPathCache&) = delete;
    CAppPathCache& operator=(const CAppPathCache&) = delete;

    // Adds the names of the entries that stand for one of the application's files; the first one of each file.
    void FindAppPaths(const CApp& app, RegGatherResults& results) const;

  private:
    void Scan(KeyHandle root, bool view64);

    TextTable<OwnedString> m_files;  // the name of each
};

}  // namespace roundup
