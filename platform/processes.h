// Starting a program and waiting for it.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace roundup {

using ProcessHandle = std::uint64_t;

inline constexpr std::uint32_t kCreateNoWindow = 0x8000000;

class IProcesses {
  public:
    IProcesses() = default;
    IProcesses(const IProcesses&) = delete;
    IProcesses& operator=(const IProcesses&) = delete;
    virtual ~IProcesses() = default;

    // CreateProcessW with the text as the command line: no application name, no inheritance, no environment or folder
    // of its own. On success the caller owns process; the main thread's handle is closed already. A machine that is
    // not live answers error 5.
    virtual Win32Error Start(const char16_t* commandLine, std::uint32_t flags, ProcessHandle& process,
                             std::uint32_t& id) = 0;
    // WaitForSingleObject without a time limit.
    virtual Win32Error Wait(ProcessHandle process) = 0;
    // GetExitCodeProcess.
    virtual Win32Error GetExitCode(ProcessHandle process, std::uint32_t& code) = 0;
    virtual void Close(ProcessHandle process) = 0;
};

}  // namespace roundup
