#include "platform/windows/livemachine.h"

#include <utility>

namespace roundup {

LiveMachine::LiveMachine(LiveOptions options)
    : m_registry(MakeLiveRegistry()),
      m_files(MakeLiveFiles()),
      m_profile(MakeLiveProfile()),
      m_shell(MakeLiveShell()),
      m_installer(MakeLiveInstaller()),
      m_processes(MakeLiveProcesses()),
      m_security(MakeLiveSecurity()),
      m_system(MakeLiveSystem(std::move(options))),
      m_closedLibraries(MakeLiveClosedLibraries()) {}

std::unique_ptr<Machine> OpenLiveMachine(LiveOptions options) {
    return std::make_unique<LiveMachine>(std::move(options));
}

}  // namespace roundup
