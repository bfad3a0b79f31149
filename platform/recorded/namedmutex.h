// Mutexes with a name, shared by all machines of this process that are not live.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <thread>

#include "platform/threading.h"

namespace roundup {

// Recursive on one thread. Every thread may call.
class NamedMutex {
  public:
    static constexpr std::uint32_t kForever = 0xFFFFFFFFU;

    // The mutex of that name (case counts), made when nobody has it open.
    static std::shared_ptr<NamedMutex> Open(std::u16string_view name);

    bool Lock(std::uint32_t milliseconds);
    // Does nothing on a thread that does not hold it.
    void Unlock();

  private:
    Mutex m_lock;
    ConditionVariable m_freed;
    std::thread::id m_owner;    // guarded by m_lock
    std::uint32_t m_count = 0;  // guarded by m_lock
};

}  // namespace roundup
