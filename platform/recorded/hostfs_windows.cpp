// Over the standard library alone. A link is refused wherever one is met, but a part that is exchanged for a link
// between the look and the use is followed: the standard library has no way to open a file below an opened folder.
#include <io.h>
#include <stdlib.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <random>
#include <thread>

#include "platform/recorded/hostfs.h"
#include "utility/utf.h"

namespace roundup {

namespace {

namespace fs = std::filesystem;

fs::path PathOf(std::string_view text) {
    return {std::u8string(reinterpret_cast<const char8_t*>(text.data()), text.size())};
}

std::string TextOf(const fs::path& path) {
    const std::u8string text = path.generic_u8string();
    return {reinterpret_cast<const char*>(text.data()), text.size()};
}

Win32Error FromCode(const std::error_code& code) {
    if (!code) return kErrorSuccess;
    if (code == std::errc::no_such_file_or_directory) return kErrorFileNotFound;
    if (code == std::errc::not_a_directory) return kErrorPathNotFound;
    if (code == std::errc::permission_denied || code == std::errc::operation_not_permitted) return kErrorAccessDenied;
    if (code == std::errc::no_space_on_device) return kErrorDiskFull;
    if (code == std::errc::file_exists) return kErrorFileExists;
    return kErrorReadFault;
}

SourceKind KindOf(const fs::file_status& status) noexcept {
    switch (status.type()) {
        case fs::file_type::regular:
            return SourceKind::File;
        case fs::file_type::directory:
            return SourceKind::Folder;
        case fs::file_type::symlink:
            return SourceKind::Link;
        default:
            return SourceKind::Other;
    }
}

class FileStream final : public IFileStream {
  public:
    FileStream(std::fstream stream, fs::path path) : m_stream(std::move(stream)), m_path(std::move(path)) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        const std::lock_guard guard(m_lock);
        m_stream.clear();
        m_stream.seekg(static_cast<std::streamoff>(position));
        m_stream.read(static_cast<char*>(buffer), size);
        done = static_cast<std::uint32_t>(m_stream.gcount());
        return m_stream.bad() ? kErrorReadFault : kErrorSuccess;
    }
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        const std::lock_guard guard(m_lock);
        m_stream.clear();
        m_stream.seekp(static_cast<std::streamoff>(position));
        m_stream.write(static_cast<const char*>(buffer), size).flush();
        done = m_stream ? size : 0;
        return m_stream ? kErrorSuccess : kErrorWriteFault;
    }
    Win32Error GetSize(std::uint64_t& size) override {
        std::error_code code;
        size = fs::file_size(m_path, code);
        return FromCode(code);
    }
    Win32Error SetSize(std::uint64_t size) override {
        const std::lock_guard guard(m_lock);
        std::error_code code;
        m_stream.flush();
        fs::resize_file(m_path, size, code);
        return FromCode(code);
    }

  private:
    std::mutex m_lock;
    std::fstream m_stream;  // guarded by m_lock
    const fs::path m_path;
};

// The system takes a name in any case; what is asked for here is the one of that spelling, as elsewhere.
bool IsSpelledSo(const fs::path& place) {
    _wfinddata_t found{};
    const std::intptr_t search = _wfindfirst(place.c_str(), &found);
    if (search == -1) return false;
    _findclose(search);
    return place.filename() == found.name;
}

class StandardFolder final : public HostFolder {
  public:
    explicit StandardFolder(fs::path folder) : m_folder(std::move(folder)), m_path(TextOf(m_folder)) {}

    Win32Error OpenBelow(const std::string& path, std::unique_ptr<HostFolder>& folder) override {
        fs::path place;
        if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
        if (KindOf(fs::symlink_status(place)) != SourceKind::Folder) return kErrorCannotAccessFile;
        folder = std::make_unique<StandardFolder>(std::move(place));
        return kErrorSuccess;
    }
    const std::string& Path() const noexcept override { return m_path; }
    Win32Error List(const std::string& path, std::vector<HostEntry>& entries) override;
    Win32Error Query(const std::string& path, SourceKind& kind, std::uint64_t& size) override;
    Win32Error ReadLink(const std::string& path, std::string& target) override;
    Win32Error OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) override;
    Win32Error DeleteFile(const std::string& path) override;
    Win32Error CreateFolder(const std::string& path) override;

  private:
    Win32Error Locate(std::string_view path, fs::path& place) const;

    const fs::path m_folder;
    const std::string m_path;
};

// The place of a path whose parts, but for the last, are folders and no links.
Win32Error StandardFolder::Locate(std::string_view path, fs::path& place) const {
    place = m_folder;
    while (!path.empty()) {
        if (place != m_folder) {
            std::error_code code;
            const SourceKind kind = KindOf(fs::symlink_status(place, code));
            if (kind == SourceKind::Link) return kErrorCannotAccessFile;
            if (kind != SourceKind::Folder) return kErrorPathNotFound;
        }
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part.empty() || part == "." || part == ".." || part.find_first_of("\\:") != std::string_view::npos) {
            return kErrorInvalidName;
        }
        place /= PathOf(part);
    }
    return kErrorSuccess;
}

Win32Error StandardFolder::List(const std::string& path, std::vector<HostEntry>& entries) {
    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::error_code code;
    if (KindOf(fs::symlink_status(place, code)) == SourceKind::Link) return kErrorCannotAccessFile;
    for (fs::directory_iterator entry(place, code), end; !code && entry != end; entry.increment(code)) {
        std::error_code ignored;
        entries.push_back({TextOf(entry->path().filename()), KindOf(entry->symlink_status(ignored))});
    }
    return FromCode(code);
}

Win32Error StandardFolder::Query(const std::string& path, SourceKind& kind, std::uint64_t& size) {
    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::error_code code;
    const fs::file_status status = fs::symlink_status(place, code);
    if (status.type() == fs::file_type::not_found || (!path.empty() && !IsSpelledSo(place))) {
        return kErrorFileNotFound;
    }
    if (code) return FromCode(code);
    kind = KindOf(status);
    size = kind == SourceKind::File ? fs::file_size(place, code) : 0;
    return FromCode(code);
}

Win32Error StandardFolder::ReadLink(const std::string& path, std::string& target) {
    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::error_code code;
    target = TextOf(fs::read_symlink(place, code));
    return FromCode(code);
}

Win32Error StandardFolder::OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) {
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    const Win32Error found = Query(path, kind, size);
    const bool creates = how != HostOpen::Read && how != HostOpen::ReadWrite;
    if (found != kErrorSuccess && !(found == kErrorFileNotFound && creates)) return found;
    if (found == kErrorSuccess && how == HostOpen::CreateNew) return kErrorFileExists;
    if (found == kErrorSuccess && kind == SourceKind::Link) return kErrorCannotAccessFile;
    if (found == kErrorSuccess && kind != SourceKind::File) return kErrorAccessDenied;

    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::ios::openmode mode = std::ios::binary | std::ios::in;
    if (how != HostOpen::Read) mode |= std::ios::out;
    if (found != kErrorSuccess || how == HostOpen::CreateOrEmpty) mode |= std::ios::trunc;
    std::fstream file(place, mode);
    if (!file.is_open()) return kErrorAccessDenied;
    stream = std::make_unique<FileStream>(std::move(file), std::move(place));
    return kErrorSuccess;
}

Win32Error StandardFolder::DeleteFile(const std::string& path) {
    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::error_code code;
    if (KindOf(fs::symlink_status(place, code)) == SourceKind::Folder) return kErrorAccessDenied;
    return fs::remove(place, code) ? kErrorSuccess : code ? FromCode(code) : kErrorFileNotFound;
}

Win32Error StandardFolder::CreateFolder(const std::string& path) {
    fs::path place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    std::error_code code;
    return fs::create_directory(place, code) ? kErrorSuccess : code ? FromCode(code) : kErrorAlreadyExists;
}

}  // namespace

Win32Error HostFolder::Open(const std::string& path, std::unique_ptr<HostFolder>& folder) {
    std::error_code code;
    fs::path place = fs::canonical(PathOf(path), code);
    if (code) return FromCode(code);
    if (!fs::is_directory(place, code)) return kErrorPathNotFound;
    folder = std::make_unique<StandardFolder>(std::move(place));
    return kErrorSuccess;
}

std::string HostTempFolder() {
    // As on every other system, when the variable is set.
    if (const wchar_t* folder = _wgetenv(L"TMPDIR"); folder != nullptr && *folder != L'\0')
        return TextOf(fs::path(folder));
    std::error_code code;
    return TextOf(fs::temp_directory_path(code));
}

// The run time library keeps the path in the width of the program's main function.
std::string HostProgramPath() {
    if (const wchar_t* path = _wpgmptr; path != nullptr) return TextOf(fs::path(path));
    const char* path = _pgmptr;
    return path != nullptr ? TextOf(fs::path(path)) : std::string();
}

// The standard library cannot tell.
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
    std::random_device source;
    std::uniform_int_distribution<int> byte(0, 255);
    auto* bytes = static_cast<unsigned char*>(buffer);
    std::generate(bytes, bytes + size, [&] { return static_cast<unsigned char>(byte(source)); });
    return true;
}

}  // namespace roundup
