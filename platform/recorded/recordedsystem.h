// The system of a machine that is not live. Memory, clock and threads are those of this computer.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/recorded/environment.h"
#include "platform/recorded/handletable.h"
#include "platform/recorded/machinesettings.h"
#include "platform/recorded/namedmutex.h"
#include "platform/system.h"
#include "platform/threading.h"

namespace roundup {

// Where the process is on the machine, as paths of the machine without a backslash at their end.
struct ProcessPlaces {
    std::u16string windowsFolder;
    std::u16string tempFolder;
    std::u16string hostExecutable;
};

// Receives what is written as debug text or to the standard output, one call at a time.
using TextSink = std::function<void(std::u16string_view)>;
struct TextSinks {
    TextSink debug;
    TextSink output;
};

class RecordedSystem final : public ISystem {
  public:
    RecordedSystem(const MachineSettings& settings, const Environment& environment, ProcessPlaces places,
                   TextSinks sinks);

    std::uint16_t GetNativeArchitecture() override { return m_settings.architecture; }
    std::uint32_t GetProcessorCount() override { return m_settings.processors; }
    bool GetVersion(OsVersionInfo& version) override;
    bool GetNtVersionNumbers(std::uint32_t& major, std::uint32_t& minor, std::uint32_t& build) override;
    bool GetMemoryStatus(MemoryStatus& status) override;
    std::uint32_t GetEnvironment(const char16_t* name, char16_t* buffer, std::uint32_t size) override;
    std::uint32_t ExpandEnvironment(const char16_t* source, char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetComputerName(char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetHostExecutable(char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetTempFolder(char16_t* buffer, std::uint32_t size) override;
    std::uint32_t GetWindowsFolder(char16_t* buffer, std::uint32_t size) override;
    LocalTime GetTime() override;
    std::uint32_t GetThreadNumber() override;
    Win32Error GetLastFailure() override;
    void WriteDebugText(const char16_t* text) override { Write(m_sinks.debug, text); }
    void WriteOutput(const char16_t* text) override { Write(m_sinks.output, text); }
    bool CreateGuid(std::uint8_t (&guid)[16]) override;
    MutexHandle OpenMutex(const char16_t* name, bool initialOwner) override;
    bool LockMutex(MutexHandle mutex, std::uint32_t milliseconds) override;
    void UnlockMutex(MutexHandle mutex) override;
    void CloseMutex(MutexHandle mutex) override;

  private:
    void Write(const TextSink& sink, const char16_t* text);

    const MachineSettings& m_settings;
    const Environment& m_environment;
    const ProcessPlaces m_places;
    const TextSinks m_sinks;
    Mutex m_sinkLock;
    HandleTable<NamedMutex> m_mutexes;
};

}  // namespace roundup
