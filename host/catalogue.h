// One load of the catalogue, as any host does it: through the exported face. What a host's record does not hold is
// read from the manager behind it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

#include "appcenter/app/app.h"
#include "externfuncinc/roundup.h"
#include "host/progress.h"

namespace roundup::host {

enum class LoadOutcome { Loaded, Failed, Cancelled };

class Catalogue {
  public:
    // What EnumApps tells of one application: its record, and the object that the record was made from.
    struct Listed {
        const _tagAppInfo* record;
        const IApp* app;
    };

    Catalogue();
    ~Catalogue();
    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;

    // Shows the progress; interrupted is asked at each percent value and once at the end.
    LoadOutcome Load(ProgressMeter& progress, const std::function<bool()>& interrupted);

    // The records of the applications that are still present. They and the objects stay while the catalogue does.
    std::vector<Listed> Records();

    // The manager's list: applications first, then packages.
    const std::vector<const IApp*>& Apps() const { return m_apps; }

  private:
    class Observer;

    bool CollectApps();

    std::unique_ptr<Observer> m_observer;
    IRoundupProc* m_facade = nullptr;
    std::vector<const IApp*> m_apps;  // the facade keeps them until the catalogue goes
};

}  // namespace roundup::host
