// The cached packages that the books of Windows Installer, or the folder of packages itself, name: each is opened once
// to tell what product it is of.
#pragma once

#include <cstdint>

#include "appcenter/app/app.h"
#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/jobqueue.h"
#include "utility/kvdthread.h"
#include "utility/stringcontainers.h"

namespace roundup {

// One worker opens the packages in the order in which they were added, so that a package that brings down the process
// is the only one whose attempt is open. Whoever comes out with a product code joins the results; the others are
// dropped. The operations are for one thread; the results are left alone by all others until the object is gone.
class PackageQueue final : public CKvdRunable {
  public:
    PackageQueue(const IContinue& goOn, AppList& results);
    // Works off what waits, or drops it once the work is not to go on, and ends the worker.
    ~PackageQueue() override;

    // Queues an application whose package path was not seen before; drops any other, and one without a path.
    void AddIfNew(RefPtr<CApp> app);
    // Queues the application whatever was seen.
    void AddPackage(RefPtr<CApp> app);
    // Queues the packages in the folder of Windows Installer that were not seen.
    void ScanInstallerFolder();

    // The worker's.
    std::int32_t Run() override;

  private:
    enum class Outcome : std::uint8_t { Keep, Drop, End };

    void Work();
    Outcome ReadPackage(CApp& app);

    const IContinue& m_goOn;
    AppList& m_results;  // the worker's
    CStringSet m_seen;   // package paths; the adding thread's
    JobQueue<RefPtr<CApp>> m_jobs;
    CKvdThread m_thread;
    bool m_started;
};

}  // namespace roundup
