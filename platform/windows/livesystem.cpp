#include <cstdio>
#include <utility>
#include <vector>

#include "platform/windows/liveareas.h"
#include "platform/windows/wintext.h"

namespace roundup {

namespace {

HANDLE RawOf(MutexHandle mutex) { return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(mutex)); }

// The standard output of the run-time library, which the host shares, in the code page of the environment.
void WriteStandardOutput(std::u16string_view text) {
    const auto length = static_cast<int>(text.size());
    const int size = ::WideCharToMultiByte(CP_ACP, 0, ToWide(text.data()), length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) return;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_ACP, 0, ToWide(text.data()), length, bytes.data(), size, nullptr, nullptr);
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

class LiveSystem final : public ISystem {
  public:
    explicit LiveSystem(LiveOptions options) : m_options(std::move(options)) {
        m_versionNumbers = GetProcedure<VersionNumbers>(::GetModuleHandleW(L"Ntdll.dll"), "RtlGetNtVersionNumbers");
    }

    std::uint16_t GetNativeArchitecture() override {
        SYSTEM_INFO info{};
        ::GetNativeSystemInfo(&info);
        return info.wProcessorArchitecture;
    }

    std::uint32_t GetProcessorCount() override {
        SYSTEM_INFO info{};
        ::GetSystemInfo(&info);
        return info.dwNumberOfProcessors;
    }

    bool GetVersion(OsVersionInfo& version) override {
        static_assert(sizeof(OsVersionInfo) == sizeof(OSVERSIONINFOEXW));
        return ::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)) != FALSE;
    }

    bool GetNtVersionNumbers(std::uint32_t& major, std::uint32_t& minor, std::uint32_t& build) override {
        if (m_versionNumbers == nullptr) return false;
        DWORD first = 0, second = 0, third = 0;
        m_versionNumbers(&first, &second, &third);
        major = first;
        minor = second;
        build = third;
        return true;
    }

    bool GetMemoryStatus(MemoryStatus& status) override {
        MEMORYSTATUSEX memory{};
        memory.dwLength = sizeof memory;
        if (!::GlobalMemoryStatusEx(&memory)) return false;
        status = {memory.ullTotalPhys, memory.ullAvailPhys};
        return true;
    }

    std::uint32_t GetEnvironment(const char16_t* name, char16_t* buffer, std::uint32_t size) override {
        return ::GetEnvironmentVariableW(ToWide(name), ToWide(buffer), size);
    }

    std::uint32_t ExpandEnvironment(const char16_t* source, char16_t* buffer, std::uint32_t size) override {
        return ::ExpandEnvironmentStringsW(ToWide(source), ToWide(buffer), size);
    }

    std::uint32_t GetComputerName(char16_t* buffer, std::uint32_t size) override {
        DWORD length = size;
        if (::GetComputerNameW(ToWide(buffer), &length)) return length;
        return ::GetLastError() == ERROR_BUFFER_OVERFLOW ? length : 0;
    }

    // The platform cuts a path that does not fit, where the other texts tell the size needed.
    std::uint32_t GetHostExecutable(char16_t* buffer, std::uint32_t size) override {
        std::vector<wchar_t> path(kLongestPath);
        const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), kLongestPath);
        if (length == 0 || length >= kLongestPath) return 0;
        if (length >= size) return length + 1;
        std::char_traits<char16_t>::copy(buffer, FromWide(path.data()), length + 1);
        return length;
    }

    std::uint32_t GetTempFolder(char16_t* buffer, std::uint32_t size) override {
        return ::GetTempPathW(size, ToWide(buffer));
    }

    std::uint32_t GetWindowsFolder(char16_t* buffer, std::uint32_t size) override {
        return ::GetWindowsDirectoryW(ToWide(buffer), size);
    }

    LocalTime GetTime() override {
        SYSTEMTIME now{};
        ::GetLocalTime(&now);
        return {now.wYear, now.wMonth, now.wDay, now.wHour, now.wMinute, now.wSecond, now.wMilliseconds};
    }

    std::uint32_t GetThreadNumber() override { return ::GetCurrentThreadId(); }
    Win32Error GetLastFailure() override { return ::GetLastError(); }
    void WriteDebugText(const char16_t* text) override { ::OutputDebugStringW(ToWide(text)); }

    void WriteOutput(const char16_t* text) override {
        if (m_options.output) {
            m_options.output(text);
        } else {
            WriteStandardOutput(text);
        }
    }

    bool CreateGuid(std::uint8_t (&guid)[16]) override {
        static_assert(sizeof guid == sizeof(GUID));
        return SUCCEEDED(::CoCreateGuid(reinterpret_cast<GUID*>(guid)));
    }

    MutexHandle OpenMutex(const char16_t* name, bool initialOwner) override {
        return reinterpret_cast<std::uintptr_t>(::CreateMutexW(nullptr, initialOwner, ToWide(name)));
    }

    // A mutex whose holder has ended without giving it back is held as well.
    bool LockMutex(MutexHandle mutex, std::uint32_t milliseconds) override {
        const DWORD result = ::WaitForSingleObject(RawOf(mutex), milliseconds);
        return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
    }

    void UnlockMutex(MutexHandle mutex) override { ::ReleaseMutex(RawOf(mutex)); }

    void CloseMutex(MutexHandle mutex) override {
        if (mutex != 0) ::CloseHandle(RawOf(mutex));
    }

  private:
    static constexpr DWORD kLongestPath = 32768;  // characters with the terminator
    using VersionNumbers = void(WINAPI*)(DWORD*, DWORD*, DWORD*);

    const LiveOptions m_options;
    VersionNumbers m_versionNumbers = nullptr;
};

}  // namespace

std::unique_ptr<ISystem> MakeLiveSystem(LiveOptions options) {
    return std::make_unique<LiveSystem>(std::move(options));
}

}  // namespace roundup
