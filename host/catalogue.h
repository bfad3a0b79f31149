// One load of the catalogue, as any host does it: through the exported face. What a host's record does not hold is
// read from the manager behind it.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
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

    // What uninstalls an application: its command line, and whether that runs without a window.
    struct UninstallPlan {
        std::u16string command;
        bool hidden = false;
    };
    // Asks the machine as it is now. Nothing for an application that has gone, and when its entry has no command.
    std::optional<UninstallPlan> PlanUninstall(const IApp& app) const;
    // Starts the uninstall of the application of that place in Apps. False when it could not be started. The catalogue
    // must not go before the end has been told.
    bool StartUninstall(std::size_t index);
    // The exit code of the uninstall that was started; nothing while it still runs after that time.
    std::optional<std::uint32_t> WaitForUninstall(std::chrono::milliseconds time);

    // The manager's list: applications first, then packages.
    const std::vector<const IApp*>& Apps() const { return m_apps; }
    // The same object of that forest, to be gathered.
    static IApp& Writable(const IApp& app);

  private:
    class Observer;

    bool CollectApps();
    std::vector<IRmxApp*> EnumRecords();

    std::unique_ptr<Observer> m_observer;
    IRoundupProc* m_facade = nullptr;
    std::vector<const IApp*> m_apps;  // the facade keeps them until the catalogue goes
};

}  // namespace roundup::host
