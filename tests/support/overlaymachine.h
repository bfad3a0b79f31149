// Another machine's answers to everything: what a machine that replaces one area is made from.
#pragma once

#include "platform/machine.h"

namespace roundup {

class OverlayMachine : public Machine {
  public:
    explicit OverlayMachine(Machine& behind) : m_behind(behind) {}

    IRegistry& Registry() override { return m_behind.Registry(); }
    IFileSystem& Files() override { return m_behind.Files(); }
    IProfile& Profile() override { return m_behind.Profile(); }
    IShell& Shell() override { return m_behind.Shell(); }
    IInstaller& Installer() override { return m_behind.Installer(); }
    IProcesses& Processes() override { return m_behind.Processes(); }
    ISecurity& Security() override { return m_behind.Security(); }
    ISystem& System() override { return m_behind.System(); }
    IClosedLibraries& ClosedLibraries() override { return m_behind.ClosedLibraries(); }

  private:
    Machine& m_behind;
};

}  // namespace roundup
