// The Windows that the process runs on. Every operation passes its arguments on to the platform's operation of that
// name; what the system makes of the answers stands above the seam.
#pragma once

#include "platform/windows/liveareas.h"

namespace roundup {

class LiveMachine final : public Machine {
  public:
    explicit LiveMachine(LiveOptions options);

    IRegistry& Registry() override { return *m_registry; }
    IFileSystem& Files() override { return *m_files; }
    IProfile& Profile() override { return *m_profile; }
    IShell& Shell() override { return *m_shell; }
    IInstaller& Installer() override { return *m_installer; }
    IProcesses& Processes() override { return *m_processes; }
    ISecurity& Security() override { return *m_security; }
    ISystem& System() override { return *m_system; }
    IClosedLibraries& ClosedLibraries() override { return *m_closedLibraries; }

  private:
    const std::unique_ptr<IRegistry> m_registry;
    const std::unique_ptr<IFileSystem> m_files;
    const std::unique_ptr<IProfile> m_profile;
    const std::unique_ptr<IShell> m_shell;
    const std::unique_ptr<IInstaller> m_installer;
    const std::unique_ptr<IProcesses> m_processes;
    const std::unique_ptr<ISecurity> m_security;
    const std::unique_ptr<ISystem> m_system;
    const std::unique_ptr<IClosedLibraries> m_closedLibraries;
};

}  // namespace roundup
