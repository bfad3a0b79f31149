// Reconciliation: what follows from where applications lie.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/prefixindex.h"
#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

class RuleBook;

// Finds for each of some paths the first application whose location, or that of anything below it, the path begins
// with, whatever character follows; and keeps up with what hangs below an application since then.
class LocationOwners {
  public:
    // Paths count from 0. All come before Search.
    void AddPath(std::u16string_view path) { m_paths.Add(path); }
    // Ends early when goOn turns false.
    void Search(const IContinue& goOn, const CAppList& main);

    // Adds an application that has been hung below the one of that position.
    void Add(const CApp& app, std::size_t position);
    // The owner of the path of that number.
    std::size_t First(std::size_t number, std::u16string_view path);

  private:
    PrefixQueries m_paths;
    PrefixIndex m_added;
};

// Hangs each hidden application below the first one whose location, or that of one of its parts, its own begins with.
void AttachByLocation(const IContinue& goOn, CAppList& main, CAppList& hide);

// Moves an application that lies in a folder below that of one of its parts up to that folder.
// rules forgets what it knows of those.
void ShortenLocations(const IContinue& goOn, const CAppList& main, RuleBook& rules);

}  // namespace roundup
