// The machine itself: architecture, version, environment, clock, and the process's place on it.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace roundup {

using MutexHandle = std::uint64_t;

inline constexpr std::uint16_t kArchitectureIntel = 0;  // PROCESSOR_ARCHITECTURE_INTEL
inline constexpr std::uint16_t kArchitectureAmd64 = 9;  // PROCESSOR_ARCHITECTURE_AMD64

// OSVERSIONINFOEXW of winnt.h, member for member: 284 bytes.
struct OsVersionInfo {
    std::uint32_t size = 284;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    std::uint32_t platform = 0;
    char16_t servicePack[128] = {};
    std::uint16_t servicePackMajor = 0;
    std::uint16_t servicePackMinor = 0;
    std::uint16_t suiteMask = 0;
    std::uint8_t productType = 0;
    std::uint8_t reserved = 0;
};
static_assert(sizeof(OsVersionInfo) == 284);

struct LocalTime {
    std::uint16_t year = 0;
    std::uint16_t month = 0;
    std::uint16_t day = 0;
    std::uint16_t hour = 0;
    std::uint16_t minute = 0;
    std::uint16_t second = 0;
    std::uint16_t millisecond = 0;
};

struct MemoryStatus {
    std::uint64_t totalPhysical = 0;      // bytes
    std::uint64_t availablePhysical = 0;  // bytes
};

// Text answers: the characters written without the terminator; the size needed with it, buffer untouched, when that
// is above size; 0 on failure.
class ISystem {
  public:
    ISystem() = default;
    ISystem(const ISystem&) = delete;
    ISystem& operator=(const ISystem&) = delete;
    virtual ~ISystem() = default;

    // GetNativeSystemInfo and GetSystemInfo.
    virtual std::uint16_t GetNativeArchitecture() = 0;
    virtual std::uint32_t GetProcessorCount() = 0;
    // GetVersionExW with the size in the record (284 or 276).
    virtual bool GetVersion(OsVersionInfo& version) = 0;
    // RtlGetNtVersionNumbers, looked up at run time. False when it is missing. The upper half of build is flags.
    virtual bool GetNtVersionNumbers(std::uint32_t& major, std::uint32_t& minor, std::uint32_t& build) = 0;
    virtual bool GetMemoryStatus(MemoryStatus& status) = 0;

    // GetEnvironmentVariableW (names ignore case) and ExpandEnvironmentStringsW, whose result counts the terminator
    // in both cases, as the platform's does.
    virtual std::uint32_t GetEnvironment(const char16_t* name, char16_t* buffer, std::uint32_t size) = 0;
    virtual std::uint32_t ExpandEnvironment(const char16_t* source, char16_t* buffer, std::uint32_t size) = 0;
    virtual std::uint32_t GetComputerName(char16_t* buffer, std::uint32_t size) = 0;
    // GetModuleFileNameW with a null module: the host's executable.
    virtual std::uint32_t GetHostExecutable(char16_t* buffer, std::uint32_t size) = 0;
    // GetTempPathW: with a backslash at its end.
    virtual std::uint32_t GetTempFolder(char16_t* buffer, std::uint32_t size) = 0;
    // GetWindowsDirectoryW.
    virtual std::uint32_t GetWindowsFolder(char16_t* buffer, std::uint32_t size) = 0;

    virtual LocalTime GetTime() = 0;
    virtual std::uint32_t GetThreadNumber() = 0;
    // GetLastError of the calling thread: the error of the last operation of this machine that failed on it.
    virtual Win32Error GetLastFailure() = 0;
    // OutputDebugStringW.
    virtual void WriteDebugText(const char16_t* text) = 0;
    // Writes to the standard output of the process, in the character type of the environment's locale.
    virtual void WriteOutput(const char16_t* text) = 0;
    // CoCreateGuid, in memory order.
    virtual bool CreateGuid(std::uint8_t (&guid)[16]) = 0;

    // CreateMutexW with a name that every process of the machine shares, opened when it exists; 0 on failure. Lock
    // waits up to milliseconds (0xFFFFFFFF: without limit) and answers true when the calling thread holds it; it is
    // recursive on one thread, and Unlock must come from the thread that holds it.
    virtual MutexHandle OpenMutex(const char16_t* name, bool initialOwner) = 0;
    virtual bool LockMutex(MutexHandle mutex, std::uint32_t milliseconds) = 0;
    virtual void UnlockMutex(MutexHandle mutex) = 0;
    virtual void CloseMutex(MutexHandle mutex) = 0;
};

}  // namespace roundup
