// Over the run-time library. A link is refused wherever one is met, but a part that is exchanged for a link between the
// look and the use is followed: the library has no way to open a file below an opened folder.
#define _CRT_RAND_S  // rand_s of stdlib.h
#include <direct.h>
#include <fcntl.h>
#include <io.h>
#include <stdlib.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <mutex>
#include <thread>

#include "platform/recorded/crtfile.h"
#include "platform/recorded/hosterror.h"
#include "platform/recorded/hostfs.h"
#include "platform/recorded/hostpath.h"
#include "platform/threading.h"

namespace roundup {

namespace {

class FileStream final : public IFileStream {
  public:
    explicit FileStream(int descriptor) : m_file(descriptor) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return Move(position, size, done, [&](std::uint32_t from, unsigned count) {
            return _read(m_file.Get(), static_cast<char*>(buffer) + from, count);
        });
    }
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return Move(position, size, done, [&](std::uint32_t from, unsigned count) {
            return _write(m_file.Get(), static_cast<const char*>(buffer) + from, count);
        });
    }
    Win32Error GetSize(std::uint64_t& size) override {
        const std::int64_t length = _filelengthi64(m_file.Get());
        if (length < 0) return FromErrno(errno);
        size = static_cast<std::uint64_t>(length);
        return kErrorSuccess;
    }
    Win32Error SetSize(std::uint64_t size) override {
        if (size > INT64_MAX) return kErrorInvalidParameter;
        const std::lock_guard guard(m_lock);
        return FromErrno(_chsize_s(m_file.Get(), static_cast<std::int64_t>(size)));
    }

  private:
    // What one call of the library can be asked for.
    static constexpr std::uint32_t kLargestMove = 0x40000000;

    template <class Step>
    Win32Error Move(std::uint64_t position, std::uint32_t size, std::uint32_t& done, Step step) {
        done = 0;
        if (position > static_cast<std::uint64_t>(INT64_MAX) - size) return kErrorInvalidParameter;
        const std::lock_guard guard(m_lock);
        if (_lseeki64(m_file.Get(), static_cast<std::int64_t>(position), SEEK_SET) < 0) return FromErrno(errno);
        while (done < size) {
            const int moved = step(done, std::min(size - done, kLargestMove));
            if (moved < 0) return FromErrno(errno);
            if (moved == 0) break;
            done += static_cast<std::uint32_t>(moved);
        }
        return kErrorSuccess;
    }

    Mutex m_lock;  // one position serves all
    const crt::File m_file;
};

class CrtFolder final : public HostFolder {
  public:
    explicit CrtFolder(std::wstring folder) : m_folder(std::move(folder)), m_path(crt::Narrow(m_folder)) {}

    Win32Error OpenBelow(const std::string& path, std::unique_ptr<HostFolder>& folder) override;
    const std::string& Path() const noexcept override { return m_path; }
    Win32Error List(const std::string& path, std::vector<HostEntry>& entries) override;
    Win32Error Query(const std::string& path, SourceKind& kind, std::uint64_t& size) override;
    Win32Error ReadLink(const std::string& path, std::string& target) override;
    Win32Error OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) override;
    Win32Error DeleteFile(const std::string& path) override;
    Win32Error CreateFolder(const std::string& path) override;

  private:
    Win32Error Locate(std::string_view path, std::wstring& place) const;

    const std::wstring m_folder;
    const std::string m_path;
};

// The place of a path whose parts, but for the last, are folders and no links.
Win32Error CrtFolder::Locate(std::string_view path, std::wstring& place) const {
    place = m_folder;
    while (!path.empty()) {
        if (place.size() != m_folder.size()) {
            SourceKind kind = SourceKind::Other;
            std::uint64_t size = 0;
            if (crt::Query(place, kind, size) != 0) return kErrorPathNotFound;
            if (kind == SourceKind::Link) return kErrorCannotAccessFile;
            if (kind != SourceKind::Folder) return kErrorPathNotFound;
        }
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part.empty() || part == "." || part == ".." || part.find_first_of("\\:*?") != std::string_view::npos) {
            return kErrorInvalidName;
        }
        if (place.back() != L'\\') place += L'\\';
        place += crt::Wide(part);
    }
    return kErrorSuccess;
}

Win32Error CrtFolder::OpenBelow(const std::string& path, std::unique_ptr<HostFolder>& folder) {
    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (crt::Query(place, kind, size) != 0 || kind != SourceKind::Folder) return kErrorCannotAccessFile;
    folder = std::make_unique<CrtFolder>(std::move(place));
    return kErrorSuccess;
}

Win32Error CrtFolder::List(const std::string& path, std::vector<HostEntry>& entries) {
    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (const int fault = crt::Query(place, kind, size); fault != 0) return FromErrno(fault);
    if (kind == SourceKind::Link) return kErrorCannotAccessFile;
    if (kind != SourceKind::Folder) return kErrorPathNotFound;
    return FromErrno(crt::List(
        place,
        [](void* context, std::wstring_view name, SourceKind entry) {
            static_cast<std::vector<HostEntry>*>(context)->push_back({crt::Narrow(name), entry});
        },
        &entries));
}

// The system takes a name in any case; what is asked for here is the one of that spelling, as elsewhere.
Win32Error CrtFolder::Query(const std::string& path, SourceKind& kind, std::uint64_t& size) {
    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::wstring name;
    if (const int fault = crt::Query(place, kind, size, &name); fault != 0) return FromErrno(fault);
    const bool spelledSo = path.empty() || place.substr(place.rfind(L'\\') + 1) == name;
    return spelledSo ? kErrorSuccess : kErrorFileNotFound;
}

// The library cannot tell where a link leads.
Win32Error CrtFolder::ReadLink(const std::string& path, std::string& /*target*/) {
    std::wstring place;
    const Win32Error error = Locate(path, place);
    return error != kErrorSuccess ? error : kErrorReadFault;
}

Win32Error CrtFolder::OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) {
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    const Win32Error found = Query(path, kind, size);
    const bool creates = how != HostOpen::Read && how != HostOpen::ReadWrite;
    if (found != kErrorSuccess && !(found == kErrorFileNotFound && creates)) return found;
    if (found == kErrorSuccess && how == HostOpen::CreateNew) return kErrorFileExists;
    if (found == kErrorSuccess && kind == SourceKind::Link) return kErrorCannotAccessFile;
    if (found == kErrorSuccess && kind != SourceKind::File) return kErrorAccessDenied;

    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    int flags = how == HostOpen::Read ? _O_RDONLY : _O_RDWR;
    if (creates) flags |= _O_CREAT;
    if (how == HostOpen::CreateOrEmpty) flags |= _O_TRUNC;
    int descriptor = -1;
    if (const int fault = crt::File::Open(place, flags, descriptor); fault != 0) return FromErrno(fault);
    stream = std::make_unique<FileStream>(descriptor);
    return kErrorSuccess;
}

Win32Error CrtFolder::DeleteFile(const std::string& path) {
    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (crt::Query(place, kind, size) == 0 && kind == SourceKind::Folder) return kErrorAccessDenied;
    return _wremove(place.c_str()) == 0 ? kErrorSuccess : FromErrno(errno);
}

Win32Error CrtFolder::CreateFolder(const std::string& path) {
    std::wstring place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    if (_wmkdir(place.c_str()) == 0) return kErrorSuccess;
    return errno == EEXIST ? kErrorAlreadyExists : FromErrno(errno);
}

// The value of an environment variable as a path, empty when it is not set.
std::string PathVariable(const wchar_t* name) {
    const wchar_t* value = _wgetenv(name);
    return value != nullptr ? crt::Narrow(value) : std::string();
}

}  // namespace

Win32Error HostFolder::Open(const std::string& path, std::unique_ptr<HostFolder>& folder) {
    std::string real;
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    if (const int fault = HostRealPath(path, real); fault != 0) return FromErrno(fault);
    if (const int fault = HostQueryPath(real, kind, size); fault != 0) return FromErrno(fault);
    if (kind != SourceKind::Folder && kind != SourceKind::Link) return kErrorPathNotFound;
    folder = std::make_unique<CrtFolder>(crt::Wide(real));
    return kErrorSuccess;
}

// TMPDIR as on every other system, then what the platform itself asks.
std::string HostTempFolder() {
    for (const wchar_t* name : {L"TMPDIR", L"TMP", L"TEMP", L"USERPROFILE"}) {
        if (std::string folder = PathVariable(name); !folder.empty()) return folder;
    }
    return {};
}

// The run-time library keeps the path in the width of the program's main function.
std::string HostProgramPath() {
    if (const wchar_t* path = _wpgmptr; path != nullptr) return crt::Narrow(path);
    std::string path = _pgmptr != nullptr ? _pgmptr : "";
    std::replace(path.begin(), path.end(), '\\', '/');
    return path;
}

// The library cannot tell.
void HostMemory(std::uint64_t& total, std::uint64_t& available) { total = available = 0; }

LocalTime HostLocalTime() {
    const auto now = std::chrono::system_clock::now();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    std::tm local{};
    localtime_s(&local, &seconds);
    const auto since = now.time_since_epoch();
    LocalTime time;
    time.year = static_cast<std::uint16_t>(local.tm_year + 1900);
    time.month = static_cast<std::uint16_t>(local.tm_mon + 1);
    time.day = static_cast<std::uint16_t>(local.tm_mday);
    time.hour = static_cast<std::uint16_t>(local.tm_hour);
    time.minute = static_cast<std::uint16_t>(local.tm_min);
    time.second = static_cast<std::uint16_t>(local.tm_sec);
    time.millisecond =
        static_cast<std::uint16_t>(std::chrono::duration_cast<std::chrono::milliseconds>(since).count() % 1000);
    return time;
}

std::uint32_t HostThreadNumber() {
    return static_cast<std::uint32_t>(std::hash<std::thread::id>()(std::this_thread::get_id()));
}

bool HostRandom(void* buffer, std::size_t size) {
    auto* bytes = static_cast<unsigned char*>(buffer);
    while (size != 0) {
        unsigned word = 0;
        if (rand_s(&word) != 0) return false;
        const std::size_t count = std::min(size, sizeof word);
        std::memcpy(bytes, &word, count);
        bytes += count;
        size -= count;
    }
    return true;
}

}  // namespace roundup
