#include "platform/recorded/namedmutex.h"

#include <chrono>
#include <map>

#include "platform/threading.h"

namespace roundup {

std::shared_ptr<NamedMutex> NamedMutex::Open(std::u16string_view name) {
    static Mutex lock;
    static std::map<std::u16string, std::weak_ptr<NamedMutex>, std::less<>> mutexes;
    const std::lock_guard guard(lock);
    std::erase_if(mutexes, [](const auto& entry) { return entry.second.expired(); });
    std::weak_ptr<NamedMutex>& known = mutexes[std::u16string(name)];
    std::shared_ptr<NamedMutex> mutex = known.lock();
    if (!mutex) known = mutex = std::make_shared<NamedMutex>();
    return mutex;
}

bool NamedMutex::Lock(std::uint32_t milliseconds) {
    const std::thread::id self = std::this_thread::get_id();
    std::unique_lock guard(m_lock);
    const auto free = [&] { return m_count == 0 || m_owner == self; };
    if (milliseconds == kForever) {
        m_freed.wait(guard, free);
    } else if (!m_freed.wait_for(guard, std::chrono::milliseconds(milliseconds), free)) {
        return false;
    }
    m_owner = self;
    ++m_count;
    return true;
}

void NamedMutex::Unlock() {
    {
        const std::lock_guard guard(m_lock);
        if (m_count == 0 || m_owner != std::this_thread::get_id()) return;
        if (--m_count != 0) return;
    }
    m_freed.notify_one();
}

}  // namespace roundup
