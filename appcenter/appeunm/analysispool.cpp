#include "appcenter/appeunm/analysispool.h"

#include <algorithm>
#include <memory>
#include <vector>

#include "appcenter/appanalyze/estimateapp.h"
#include "appcenter/appeunm/jobqueue.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/kvdthread.h"
#include "utility/result.h"
#include "utility/stringcontainers.h"

namespace roundup {
namespace {

using AppQueue = JobQueue<IApp*>;

class AnalysisWorker final : public CKvdRunable {
  public:
    AnalysisWorker(AppQueue& queue, const IContinue& goOn) : m_queue(queue), m_goOn(goOn), m_thread(this) {}
    ~AnalysisWorker() override { m_thread.WaitEnd(); }
    AnalysisWorker(const AnalysisWorker&) = delete;
    AnalysisWorker& operator=(const AnalysisWorker&) = delete;

    bool Start() { return m_thread.Start(); }

    std::int32_t Run() override {
        IApp* app = nullptr;
        while (m_goOn.IsContinue() != 0 && m_queue.Take(app)) Complete(*app);
        return 0;
    }

  private:
    // One application that memory is short for does not cost the others theirs.
    void Complete(IApp& app) {
        const ResultCode rc = AtBoundary(
            [this, &app] {
                EstimateApp(app, m_seen, m_goOn);
                return kSuccess;
            },
            [] { return Fail(SmallCode::ObjectAllocation); });
        Ignore(rc, u"the application stays as its sources told it");
        m_seen.Clear();
    }

    AppQueue& m_queue;
    const IContinue& m_goOn;
    CStringSet m_seen;
    CKvdThread m_thread;
};

// The platform counts the processors of one group, which are 64 at most; a machine that claims more is not believed.
// More workers than jobs would only start and end.
std::size_t WorkerCount(std::size_t jobs) {
    constexpr std::uint32_t kMostProcessors = 64;
    const std::uint32_t processors = std::min(CurrentMachine().System().GetProcessorCount(), kMostProcessors);
    return std::min<std::size_t>(2 * (std::size_t{processors} + 2), jobs);
}

// Ends the workers on every way out, also when memory ran short.
class AnalysisPool {
  public:
    explicit AnalysisPool(const IContinue& goOn) : m_goOn(goOn) {}
    AnalysisPool(const AnalysisPool&) = delete;
    AnalysisPool& operator=(const AnalysisPool&) = delete;
    ~AnalysisPool() {
        m_queue.Close();
        m_workers.clear();
        m_queue.CloseAndDiscard();
    }

    // All jobs wait in the closed queue before the first worker starts: most jobs are short, and a worker that has to
    // be woken for each costs more than the job.
    void Work(const AppList& apps) {
        for (const RefPtr<IApp>& app : apps) {
            if (m_goOn.IsContinue() == 0) break;
            m_queue.Add(app.Get());
        }
        m_queue.Close();
        StartWorkers(WorkerCount(apps.size()));
        // Without a single thread the loading one does the work itself.
        if (m_workers.empty()) AnalysisWorker(m_queue, m_goOn).Run();
    }

  private:
    void StartWorkers(std::size_t count) {
        while (m_workers.size() < count) {
            auto worker = std::make_unique<AnalysisWorker>(m_queue, m_goOn);
            if (!worker->Start()) break;
            m_workers.push_back(std::move(worker));
        }
    }

    const IContinue& m_goOn;
    AppQueue m_queue;
    std::vector<std::unique_ptr<AnalysisWorker>> m_workers;
};

}  // namespace

void RunAnalysisPool(const AppList& apps, const IContinue& goOn) { AnalysisPool(goOn).Work(apps); }

}  // namespace roundup
