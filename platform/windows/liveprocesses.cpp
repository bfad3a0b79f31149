// Processes of the live machine.
#include "platform/windows/liveareas.h"
#include "platform/windows/winhandle.h"

namespace roundup {

namespace {

// A ProcessHandle carries the HANDLE itself.
HANDLE FromSeam(ProcessHandle process) noexcept {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(process));
}

// Who starts a process waits for it on a thread of the module, whose last steps come behind what the host is told: a
// host that unloads the module then would take the code away from under them. So it stays to the end of the process.
void KeepModuleLoaded() noexcept {
    HMODULE module = nullptr;
    ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                         reinterpret_cast<LPCWSTR>(&KeepModuleLoaded), &module);
}

class LiveProcesses final : public IProcesses {
  public:
    Win32Error Start(const char16_t* commandLine, std::uint32_t flags, ProcessHandle& process,
                     std::uint32_t& id) override {
        process = 0;
        id = 0;
        // The platform writes into the text while it looks for the program's end.
        std::u16string command(commandLine);
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        PROCESS_INFORMATION started{};
        if (!::CreateProcessW(nullptr, ToWide(command.data()), nullptr, nullptr, FALSE, flags, nullptr, nullptr,
                              &startup, &started)) {
            return ::GetLastError();
        }
        const KernelHandle thread(started.hThread);
        KeepModuleLoaded();
        process = reinterpret_cast<std::uintptr_t>(started.hProcess);
        id = started.dwProcessId;
        return kErrorSuccess;
    }

    Win32Error Wait(ProcessHandle process) override {
        // A process is never abandoned, and there is no time limit to run out.
        return ::WaitForSingleObject(FromSeam(process), INFINITE) == WAIT_OBJECT_0 ? kErrorSuccess : ::GetLastError();
    }

    Win32Error GetExitCode(ProcessHandle process, std::uint32_t& code) override {
        DWORD value = 0;
        if (!::GetExitCodeProcess(FromSeam(process), &value)) return ::GetLastError();
        code = value;
        return kErrorSuccess;
    }

    void Close(ProcessHandle process) override {
        if (process != 0) ::CloseHandle(FromSeam(process));
    }
};

}  // namespace

std::unique_ptr<IProcesses> MakeLiveProcesses() { return std::make_unique<LiveProcesses>(); }

}  // namespace roundup
