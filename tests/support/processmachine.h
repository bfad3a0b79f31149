// A machine whose processes do what the test says: another machine's answers to everything else.
#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/overlaymachine.h"

namespace roundup {

// Every started process runs until the test ends it. Commands that a test names as refused do not start.
class ScriptedProcesses final : public IProcesses {
  public:
    struct Started {
        std::u16string command;
        std::uint32_t flags;
    };

    Win32Error Start(const char16_t* commandLine, std::uint32_t flags, ProcessHandle& process,
                     std::uint32_t& id) override {
        const std::lock_guard guard(m_lock);
        process = 0;
        if (m_refused.contains(commandLine)) return m_refused[commandLine];
        m_processes.push_back({{commandLine, flags}, false, 0});
        process = m_processes.size();
        id = static_cast<std::uint32_t>(1000 + process);
        ++m_held;
        return kErrorSuccess;
    }
    Win32Error Wait(ProcessHandle process) override {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [&] { return m_processes.at(static_cast<std::size_t>(process) - 1).ended; });
        return kErrorSuccess;
    }
    Win32Error GetExitCode(ProcessHandle process, std::uint32_t& code) override {
        const std::lock_guard guard(m_lock);
        code = m_processes.at(static_cast<std::size_t>(process) - 1).code;
        return kErrorSuccess;
    }
    void Close(ProcessHandle) override {
        const std::lock_guard guard(m_lock);
        --m_held;
        m_changed.notify_all();
    }

    // error 0 starts nothing all the same: the start succeeds with a null handle.
    void Refuse(std::u16string command, Win32Error error) { m_refused[std::move(command)] = error; }
    // Ends the process that was started as the number-th, from 0.
    void End(std::size_t number, std::uint32_t code) {
        const std::lock_guard guard(m_lock);
        m_processes.at(number).ended = true;
        m_processes.at(number).code = code;
        m_changed.notify_all();
    }
    std::vector<Started> AllStarted() {
        const std::lock_guard guard(m_lock);
        std::vector<Started> all;
        all.reserve(m_processes.size());
        for (const Process& process : m_processes) all.push_back(process.started);
        return all;
    }
    void WaitUntilAllClosed() {
        std::unique_lock guard(m_lock);
        m_changed.wait(guard, [&] { return m_held == 0; });
    }

  private:
    struct Process {
        Started started;
        bool ended;
        std::uint32_t code;
    };

    std::mutex m_lock;
    std::condition_variable m_changed;
    // Guarded by m_lock.
    std::vector<Process> m_processes;
    int m_held = 0;
    // Constant while processes are started.
    std::map<std::u16string, Win32Error> m_refused;
};

class ProcessMachine final : public OverlayMachine {
  public:
    explicit ProcessMachine(std::unique_ptr<Machine> inner) : OverlayMachine(*inner), m_inner(std::move(inner)) {}

    ScriptedProcesses& Processes() override { return m_processes; }

  private:
    std::unique_ptr<Machine> m_inner;
    ScriptedProcesses m_processes;
};

}  // namespace roundup
