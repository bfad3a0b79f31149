// Reconciliation: what follows from where applications lie.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/prefixindex.h"
#include "appcenter/appeunm/reconcilelists.h"

namespace roundup {

// The locations of applications and of all that hangs below them, each with the position of its root: what a path is
// compared with as a prefix, whatever character follows.
class LocationPrefixes {
  public:
    // All applications of the list; ends early when goOn turns false.
    LocationPrefixes(const IContinue& goOn, const CAppList& main);

    // Adds what now hangs below the root of that position.
    void Add(const CApp& app, std::size_t position);
    std::size_t First(std::u16string_view path) { return m_index.FirstPrefixOf(path); }

  private:
    PrefixIndex m_index;
};

// Hangs each hidden application below the first one whose location, or that of one of its parts, its own begins with.
void AttachByLocation(const IContinue& goOn, CAppList& main, CAppList& hide);

// Moves an application that lies in a folder below that of one of its parts up to that folder.
void ShortenLocations(const IContinue& goOn, const CAppList& main);

}  // namespace roundup
