#include "platform/windows/livemachine.h"

namespace roundup {

LiveMachine::LiveMachine()
    : m_registry(MakeLiveRegistry()),
      m_files(MakeLiveFiles()),
      m_profile(MakeLiveProfile()),
      m_shell(MakeLiveShell()),
      m_installer(MakeLiveInstaller()),
      m_processes(MakeLiveProcesses()),
      m_security(MakeLiveSecurity()),
      m_system(MakeLiveSystem()),
      m_closedLibraries(MakeLiveClosedLibraries()) {}

std::unique_ptr<Machine> OpenLiveMachine() { return std::make_unique<LiveMachine>(); }

}  // namespace roundup
