#include "platform/machine.h"

#include <cstdlib>

namespace roundup {

namespace {

// Plain, not atomic: composition roots set it while no other thread uses the seam, and starting a thread orders it.
Machine* g_currentMachine = nullptr;

}  // namespace

Machine& CurrentMachine() noexcept {
    if (g_currentMachine == nullptr) std::abort();
    return *g_currentMachine;
}

bool HasCurrentMachine() noexcept { return g_currentMachine != nullptr; }

MachineScope::MachineScope(Machine& machine) noexcept : m_previous(g_currentMachine) { g_currentMachine = &machine; }

MachineScope::~MachineScope() {
    g_currentMachine->Objects().Clear();
    g_currentMachine = m_previous;
}

std::size_t ProcessObjects::NextTypeIndex() noexcept {
    static std::atomic<std::size_t> next{0};
    const std::size_t index = next.fetch_add(1);
    if (index >= kMaxTypes) std::abort();
    return index;
}

void ProcessObjects::Keep(std::unique_ptr<HolderBase> owner, Slot& slot) {
    const std::lock_guard guard(m_keptLock);
    m_kept.push_back({std::move(owner), &slot});
}

void ProcessObjects::Clear() noexcept {
    // An object's destructor may still use, and so make, another one: take them off one at a time.
    for (;;) {
        Kept last{};
        {
            const std::lock_guard guard(m_keptLock);
            if (m_kept.empty()) return;
            last = std::move(m_kept.back());
            m_kept.pop_back();
        }
        last.slot->object.store(nullptr, std::memory_order_release);
        last.owner.reset();
    }
}

}  // namespace roundup
