#include "tests/support/faultmachine.h"

#include "platform/recorded/lastfailure.h"
#include "tests/support/faultareas.h"
#include "tests/support/faultareas_system.h"

namespace roundup {

Win32Error FaultGate::Next() noexcept {
    if (++m_count != m_failing) return kErrorSuccess;
    m_fired = true;
    SetLastFailure(m_error);
    return m_error;
}

struct FaultInjectingMachine::Parts {
    explicit Parts(Machine& machine)
        : registry(machine.Registry()),
          files(machine.Files()),
          profile(machine.Profile()),
          shell(machine.Shell()),
          installer(machine.Installer()),
          processes(machine.Processes()),
          security(machine.Security()),
          system(machine.System()),
          closedLibraries(machine.ClosedLibraries()) {}

    fault::Registry registry;
    fault::Files files;
    fault::Profile profile;
    fault::Shell shell;
    fault::Installer installer;
    fault::Processes processes;
    fault::Security security;
    fault::System system;
    fault::ClosedLibraries closedLibraries;
    FaultGate* fired = nullptr;
};

FaultInjectingMachine::FaultInjectingMachine(std::unique_ptr<Machine> inner)
    : m_inner(std::move(inner)), m_parts(std::make_unique<Parts>(*m_inner)) {}

FaultInjectingMachine::~FaultInjectingMachine() = default;

FaultGate& FaultInjectingMachine::GateOf(Area area) const {
    Parts& parts = *m_parts;
    // In the order of Area.
    FaultGate* const gates[] = {&parts.registry.gate, &parts.files.gate,     &parts.profile.gate,
                                &parts.shell.gate,    &parts.installer.gate, &parts.processes.gate,
                                &parts.security.gate, &parts.system.gate,    &parts.closedLibraries.gate};
    return *gates[static_cast<std::size_t>(area)];
}

void FaultInjectingMachine::FailOperation(Area area, std::uint64_t number, Win32Error error) {
    m_parts->fired = &GateOf(area);
    m_parts->fired->FailOperation(number, error);
}

std::uint64_t FaultInjectingMachine::OperationsOf(Area area) const { return GateOf(area).Count(); }

bool FaultInjectingMachine::HasFired() const { return m_parts->fired != nullptr && m_parts->fired->HasFired(); }

std::int64_t FaultInjectingMachine::HandlesHeld() const {
    return m_parts->registry.held + m_parts->files.held + m_parts->shell.held + m_parts->installer.held +
           m_parts->processes.held + m_parts->system.held;
}

IRegistry& FaultInjectingMachine::Registry() { return m_parts->registry; }
IFileSystem& FaultInjectingMachine::Files() { return m_parts->files; }
IProfile& FaultInjectingMachine::Profile() { return m_parts->profile; }
IShell& FaultInjectingMachine::Shell() { return m_parts->shell; }
IInstaller& FaultInjectingMachine::Installer() { return m_parts->installer; }
IProcesses& FaultInjectingMachine::Processes() { return m_parts->processes; }
ISecurity& FaultInjectingMachine::Security() { return m_parts->security; }
ISystem& FaultInjectingMachine::System() { return m_parts->system; }
IClosedLibraries& FaultInjectingMachine::ClosedLibraries() { return m_parts->closedLibraries; }

}  // namespace roundup
