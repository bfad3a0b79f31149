// The catalogue: loads the applications of the machine and hands them out.
#pragma once

#include <atomic>
#include <cstdint>

#include "appcenter/app/iapp.h"
#include "appcenter/app/icontinue.h"
#include "utility/kvobject.h"
#include "utility/result.h"

namespace roundup {

class IHearthRuntime;

// Told the percent of a load on the loading thread; 0 cancels the load.
using ProgressCallback = std::uint8_t (*)(std::uint32_t percent, void* context);

// What LoadAppEx answers to a null callback. The small code of this value means nothing.
inline constexpr ResultCode kNoCallback{0xFFFFFFFFFFFFFFFFU};

// Counted. Every thread may call; but for Stop and IsContinue, which take no lock, a call waits until a load that is
// under way has ended. The order of the operations, behind those of IKvObject, is fixed.
class IAppManager : public IKvObject {
  public:
    // The retired load: does nothing and answers -1.
    virtual std::int64_t LoadApp(std::uint8_t unused) = 0;
    virtual std::uint32_t GetLoadStatus() = 0;
    virtual std::uint64_t GetLoadedCount() = 0;
    // Applications and packages together.
    virtual std::uint32_t GetCount() = 0;
    // The application of that place, with a reference for the caller: first the application list, then the packages.
    // NoMoreItems past both, and app is left alone.
    virtual ResultCode GetApp(IApp** app, std::uint32_t index) = 0;
    // 1 when a list holds the application that the record stands for, else 0, also for null.
    virtual std::int32_t HasApp(const AppRecordEx* record) = 0;
    // Asks runtime about argument, which is the caller's own and passed through. 1 says that nothing speaks against
    // it; out is told by the runtime.
    virtual std::uint8_t CheckRuntime(void* argument, IHearthRuntime* runtime, std::uint32_t* out) = 0;
    // As HasApp, with the sub-applications of the application list.
    virtual std::int32_t HasAppOrSubApp(const AppRecordEx* record) = 0;
    // Finds an application by key and name (a package, with flag 0x20, by its full name), gathers it and hands it
    // out with a reference. BadArgument when there is no such application, GeneralFailure when there is no such
    // package; else the failure of the gather.
    virtual ResultCode GetGatheredApp(const char16_t* key, const char16_t* name, std::uint64_t flags, IApp** app) = 0;
    // Ends every loop of a load that is under way.
    virtual void Stop() noexcept = 0;
    // Stores the runtime in out with a reference, or null when there is none; answers out.
    virtual IHearthRuntime** GetRuntime(IHearthRuntime** out) = 0;
    ~IAppManager() override = default;
    virtual std::uint8_t IsContinue() const noexcept = 0;
    // Loads the catalogue anew: 0, Cancelled when the callback said so, kNoCallback without one. useCache takes the
    // applications from the cache files beside the host.
    virtual ResultCode LoadAppEx(ProgressCallback callback, void* context, bool useCache) = 0;
};

// Adds the go-on flag to interface T. One thread writes the flag at a time and many read it; nothing depends on its
// order against other memory.
template <class T>
class CContinue : public T, public IContinue {
  public:
    void Stop() noexcept override { m_goOn.store(0, std::memory_order_relaxed); }
    std::uint8_t IsContinue() const noexcept override { return m_goOn.load(std::memory_order_relaxed); }

  protected:
    void GoOn() noexcept { m_goOn.store(1, std::memory_order_relaxed); }

  private:
    std::atomic<std::uint8_t> m_goOn{0};
};

}  // namespace roundup
