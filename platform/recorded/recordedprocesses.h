// Processes of a machine that is not live: there are none, and none can be started.
#pragma once

#include "platform/processes.h"
#include "platform/recorded/lastfailure.h"

namespace roundup {

class RecordedProcesses final : public IProcesses {
  public:
    Win32Error Start(const char16_t*, std::uint32_t, ProcessHandle& process, std::uint32_t& id) override {
        process = 0;
        id = 0;
        SetLastFailure(kErrorAccessDenied);
        return kErrorAccessDenied;
    }
    Win32Error Wait(ProcessHandle) override { return kErrorInvalidHandle; }
    Win32Error GetExitCode(ProcessHandle, std::uint32_t&) override { return kErrorInvalidHandle; }
    void Close(ProcessHandle) override {}
};

}  // namespace roundup
