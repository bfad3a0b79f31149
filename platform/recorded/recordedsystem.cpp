#include "platform/recorded/recordedsystem.h"

#include <cstring>

#include "platform/recorded/hostfs.h"
#include "platform/recorded/lastfailure.h"
#include "platform/recorded/textanswer.h"

namespace roundup {

namespace {

constexpr Win32Error kErrorVariableNotFound = 203;  // ERROR_ENVVAR_NOT_FOUND
constexpr std::uint32_t kPlatformNt = 2;            // VER_PLATFORM_WIN32_NT
constexpr std::uint8_t kWorkstation = 1;            // VER_NT_WORKSTATION
constexpr std::uint32_t kFreeBuild = 0xF0000000U;   // flags that the kernel puts above the build number

}  // namespace

RecordedSystem::RecordedSystem(const MachineSettings& settings, const Environment& environment, ProcessPlaces places,
                               TextSinks sinks)
    : m_settings(settings), m_environment(environment), m_places(std::move(places)), m_sinks(std::move(sinks)) {}

bool RecordedSystem::GetVersion(OsVersionInfo& version) {
    // The shorter form of the record ends behind the text of the service pack.
    constexpr std::uint32_t kShortSize = 276;
    if (version.size != sizeof(OsVersionInfo) && version.size != kShortSize) {
        SetLastFailure(kErrorInsufficientBuffer);
        return false;
    }
    OsVersionInfo full;
    full.size = version.size;
    full.major = m_settings.version.major;
    full.minor = m_settings.version.minor;
    full.build = m_settings.version.build;
    full.platform = kPlatformNt;
    full.productType = kWorkstation;
    std::memcpy(static_cast<void*>(&version), &full, version.size);
    return true;
}

bool RecordedSystem::GetNtVersionNumbers(std::uint32_t& major, std::uint32_t& minor, std::uint32_t& build) {
    major = m_settings.version.major;
    minor = m_settings.version.minor;
    build = m_settings.version.build | kFreeBuild;
    return true;
}

bool RecordedSystem::GetMemoryStatus(MemoryStatus& status) {
    HostMemory(status.totalPhysical, status.availablePhysical);
    return status.totalPhysical != 0;
}

std::uint32_t RecordedSystem::GetEnvironment(const char16_t* name, char16_t* buffer, std::uint32_t size) {
    const std::u16string* value = m_environment.Find(name);
    if (value == nullptr) {
        SetLastFailure(kErrorVariableNotFound);
        return 0;
    }
    return AnswerText(*value, buffer, size);
}

std::uint32_t RecordedSystem::ExpandEnvironment(const char16_t* source, char16_t* buffer, std::uint32_t size) {
    const std::u16string text = m_environment.Expand(source);
    const std::uint32_t answered = AnswerText(text, buffer, size);
    return answered == text.size() ? answered + 1 : answered;
}

std::uint32_t RecordedSystem::GetComputerName(char16_t* buffer, std::uint32_t size) {
    return AnswerText(m_settings.computer, buffer, size);
}

std::uint32_t RecordedSystem::GetHostExecutable(char16_t* buffer, std::uint32_t size) {
    return AnswerText(m_places.hostExecutable, buffer, size);
}

std::uint32_t RecordedSystem::GetTempFolder(char16_t* buffer, std::uint32_t size) {
    return AnswerText(m_places.tempFolder + u"\\", buffer, size);
}

std::uint32_t RecordedSystem::GetWindowsFolder(char16_t* buffer, std::uint32_t size) {
    return AnswerText(m_places.windowsFolder, buffer, size);
}

LocalTime RecordedSystem::GetTime() { return HostLocalTime(); }

std::uint32_t RecordedSystem::GetThreadNumber() { return HostThreadNumber(); }

Win32Error RecordedSystem::GetLastFailure() { return LastFailure(); }

void RecordedSystem::Write(const TextSink& sink, const char16_t* text) {
    if (!sink || text == nullptr) return;
    const std::lock_guard guard(m_sinkLock);
    sink(text);
}

bool RecordedSystem::CreateGuid(std::uint8_t (&guid)[16]) {
    if (!HostRandom(guid, sizeof guid)) return false;
    // Version 4, and the variant of RFC 4122; the version stands in the upper half of a little-endian word.
    guid[7] = static_cast<std::uint8_t>((guid[7] & 0x0F) | 0x40);
    guid[8] = static_cast<std::uint8_t>((guid[8] & 0x3F) | 0x80);
    return true;
}

MutexHandle RecordedSystem::OpenMutex(const char16_t* name, bool initialOwner) {
    std::shared_ptr<NamedMutex> mutex = NamedMutex::Open(name);
    // As on the platform, who opens a mutex that is there does not become its owner by that.
    if (initialOwner) (void)mutex->Lock(0);
    return m_mutexes.Add(std::move(mutex));
}

bool RecordedSystem::LockMutex(MutexHandle mutex, std::uint32_t milliseconds) {
    const std::shared_ptr<NamedMutex> found = m_mutexes.Find(mutex);
    if (!found) SetLastFailure(kErrorInvalidHandle);
    return found && found->Lock(milliseconds);
}

void RecordedSystem::UnlockMutex(MutexHandle mutex) {
    if (const std::shared_ptr<NamedMutex> found = m_mutexes.Find(mutex)) found->Unlock();
}

void RecordedSystem::CloseMutex(MutexHandle mutex) { m_mutexes.Take(mutex); }

}  // namespace roundup
