// A machine whose n-th operation of an area fails: what a test wraps around another machine to see how the system
// takes a failure at every place.
//
//     for (std::uint64_t n = 1;; ++n) {
//         FaultInjectingMachine machine(builder.Build());
//         machine.FailOperation(Area::Registry, n, kErrorAccessDenied);
//         ...
//         if (!machine.HasFired()) break;
//     }
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "platform/machine.h"

namespace roundup {

enum class Area { Registry, Files, Profile, Shell, Installer, Processes, Security, System, ClosedLibraries };

// Counts operations from every thread and tells the one that is to fail.
class FaultGate {
  public:
    void FailOperation(std::uint64_t number, Win32Error error) noexcept {
        m_error = error;
        m_failing = number;
    }
    // The failure of the operation that begins now; 0 for none. It is the thread's last failure from then on.
    Win32Error Next() noexcept;
    std::uint64_t Count() const noexcept { return m_count; }
    bool HasFired() const noexcept { return m_fired; }

  private:
    std::atomic<std::uint64_t> m_count{0};
    std::atomic<std::uint64_t> m_failing{0};
    std::atomic<Win32Error> m_error{0};
    std::atomic<bool> m_fired{false};
};

// Operations that only give something back, such as CloseKey, are neither counted nor made to fail: the system could
// do nothing about it. An operation that answers no error number fails in its own way: false, 0, nothing.
class FaultInjectingMachine final : public Machine {
  public:
    explicit FaultInjectingMachine(std::unique_ptr<Machine> inner);
    ~FaultInjectingMachine() override;

    // Before other threads use the machine. Counted from 1, for each area of its own.
    void FailOperation(Area area, std::uint64_t number, Win32Error error);
    std::uint64_t OperationsOf(Area area) const;
    bool HasFired() const;
    // Keys, files, finds, icons, bitmaps and all other handles that were given out and not yet taken back. What lives
    // as long as the process keeps its own until the machine's scope ends.
    std::int64_t HandlesHeld() const;

    IRegistry& Registry() override;
    IFileSystem& Files() override;
    IProfile& Profile() override;
    IShell& Shell() override;
    IInstaller& Installer() override;
    IProcesses& Processes() override;
    ISecurity& Security() override;
    ISystem& System() override;
    IClosedLibraries& ClosedLibraries() override;

  private:
    struct Parts;
    FaultGate& GateOf(Area area) const;

    std::unique_ptr<Machine> m_inner;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace roundup
