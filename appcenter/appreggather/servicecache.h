// The services of the machine that do not belong to the system itself, by their files.
#pragma once

#include "appcenter/appreggather/multimap.h"

namespace roundup {

class CApp;
struct RegGatherResults;

// ProcessWide<CServiceCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CServiceCache {
  public:
    CServiceCache();
    CServiceCache(const CServiceCache&) = delete;
    CServiceCache& operator=(const CServiceCache&) = delete;

    // Adds the names of the services that run one of the application's files; drivers (files that end in ".sys") only
    // when asked for.
    void FindServices(const CApp& app, RegGatherResults& results, bool bWithDrivers) const;

  private:
    struct Service {
        OwnedString name;
        bool isDriver;
    };
    void Scan();

    std::vector<Service> m_services;
    TextTable<NumberLists::List> m_files;  // the services of each
    NumberLists m_links;
};

}  // namespace roundup
