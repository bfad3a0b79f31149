// The seam: everything above this folder reaches the platform through the current Machine and in no other way.
//
// A machine is one view of one process. It may be the Windows machine that the process runs on, or a machine that
// is not running: a recorded folder, a Wine prefix, an offline volume, or one that a test made in memory. What the
// logic asks is the same for all of them, and so are the answers' shapes: numbers, flags and error codes are those
// that Win32 documents for the operation of the same name.
#pragma once

#include "platform/closedlibraries.h"
#include "platform/filesystem.h"
#include "platform/installer.h"
#include "platform/processes.h"
#include "platform/processobjects.h"
#include "platform/profile.h"
#include "platform/registry.h"
#include "platform/security.h"
#include "platform/shell.h"
#include "platform/system.h"

namespace roundup {

// Hands out one interface for each area. The interfaces live as long as the machine, may be called from every
// thread at the same time unless their header says otherwise, and throw nothing of their own.
class Machine {
  public:
    Machine() = default;
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    virtual ~Machine() = default;

    virtual IRegistry& Registry() = 0;
    virtual IFileSystem& Files() = 0;
    virtual IProfile& Profile() = 0;
    virtual IShell& Shell() = 0;
    virtual IInstaller& Installer() = 0;
    virtual IProcesses& Processes() = 0;
    virtual ISecurity& Security() = 0;
    virtual ISystem& System() = 0;
    virtual IClosedLibraries& ClosedLibraries() = 0;

    // The objects that live as long as the process on this machine; reached through ProcessWide below.
    ProcessObjects& Objects() noexcept { return m_objects; }

  private:
    ProcessObjects m_objects;
};

// The machine that the process works on. It is an error (the process ends) to ask before a composition root has
// set one.
Machine& CurrentMachine() noexcept;

// True once a composition root has set a machine, as the entry of the module does at the first call.
bool HasCurrentMachine() noexcept;

// Sets the current machine for the scope's lifetime. For composition roots alone: the module's entry, the host
// program, a test's fixture. No other thread may use the seam while a scope begins or ends. At the end the objects
// of the machine that lived as long as the process are destroyed, newest first, while the machine is still current,
// and the machine that was current before is so again.
class MachineScope {
  public:
    explicit MachineScope(Machine& machine) noexcept;
    ~MachineScope();
    MachineScope(const MachineScope&) = delete;
    MachineScope& operator=(const MachineScope&) = delete;

  private:
    Machine* m_previous;
};

// The one object of type T that belongs to the current machine, made at first use by its default constructor, once,
// under a guard. Making it may ask for objects of other types. What the constructor throws leaves nothing behind:
// the next caller tries again. The reference stays good until the machine's scope ends.
template <class T>
T& ProcessWide() {
    return CurrentMachine().Objects().template Get<T>();
}

}  // namespace roundup
