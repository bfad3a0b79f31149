#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/sysinfo.h>
#include <sys/xattr.h>
#include <unistd.h>

#if __has_include(<linux/openat2.h>)
#include <linux/openat2.h>
#endif

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <thread>
#include <utility>

#include "platform/recorded/hosterror.h"
#include "platform/recorded/hostfs.h"
#include "platform/threading.h"

namespace roundup {

namespace {

class Descriptor {
  public:
    explicit Descriptor(int fd = -1) noexcept : m_fd(fd) {}
    Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (m_fd >= 0) close(m_fd);
    }
    int Get() const noexcept { return m_fd; }
    int Detach() noexcept { return std::exchange(m_fd, -1); }

  private:
    int m_fd;
};

class PosixStream final : public IFileStream {
  public:
    explicit PosixStream(Descriptor file) : m_file(std::move(file)) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return Move(position, size, done, [&](std::uint32_t from, std::size_t count, off_t at) {
            return pread(m_file.Get(), static_cast<char*>(buffer) + from, count, at);
        });
    }
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return Move(position, size, done, [&](std::uint32_t from, std::size_t count, off_t at) {
            return pwrite(m_file.Get(), static_cast<const char*>(buffer) + from, count, at);
        });
    }
    Win32Error GetSize(std::uint64_t& size) override {
        struct stat info {};
        if (fstat(m_file.Get(), &info) != 0) return FromErrno(errno);
        size = static_cast<std::uint64_t>(info.st_size);
        return kErrorSuccess;
    }
    Win32Error SetSize(std::uint64_t size) override {
        if (size > INT64_MAX) return kErrorInvalidParameter;
        return ftruncate(m_file.Get(), static_cast<off_t>(size)) == 0 ? kErrorSuccess : FromErrno(errno);
    }

  private:
    // The system may move fewer bytes than asked for; the platform does not, short of the end or an error.
    template <class Step>
    static Win32Error Move(std::uint64_t position, std::uint32_t size, std::uint32_t& done, Step step) {
        done = 0;
        if (position > static_cast<std::uint64_t>(INT64_MAX) - size) return kErrorInvalidParameter;
        while (done < size) {
            const ssize_t moved = step(done, size - done, static_cast<off_t>(position + done));
            if (moved < 0 && errno == EINTR) continue;
            if (moved < 0) return FromErrno(errno);
            if (moved == 0) break;
            done += static_cast<std::uint32_t>(moved);
        }
        return kErrorSuccess;
    }

    Descriptor m_file;
};

SourceKind KindOf(mode_t mode) noexcept {
    if (S_ISREG(mode)) return SourceKind::File;
    if (S_ISDIR(mode)) return SourceKind::Folder;
    return S_ISLNK(mode) ? SourceKind::Link : SourceKind::Other;
}

int OpenFlags(HostOpen how) noexcept {
    switch (how) {
        case HostOpen::Read:
            return O_RDONLY;
        case HostOpen::ReadWrite:
            return O_RDWR;
        case HostOpen::CreateNew:
            return O_RDWR | O_CREAT | O_EXCL;
        case HostOpen::CreateOrOpen:
            return O_RDWR | O_CREAT;
        case HostOpen::CreateOrEmpty:
            return O_RDWR | O_CREAT | O_TRUNC;
    }
    return O_RDONLY;
}

// Folders that were opened last, one for each of some threads: what is asked about a folder's files comes one file
// after the other. What is kept is the folder itself, so nothing that is done to the path meanwhile leads elsewhere.
class KeptFolders {
  public:
    using Folder = std::shared_ptr<const Descriptor>;

    Folder Find(std::string_view path) {
        Slot& slot = Mine();
        const std::lock_guard guard(slot.lock);
        return slot.folder && slot.path == path ? slot.folder : nullptr;
    }
    void Keep(std::string_view path, Folder folder) {
        Slot& slot = Mine();
        const std::lock_guard guard(slot.lock);
        slot.path = path;
        slot.folder = std::move(folder);
    }

  private:
    struct Slot {
        Mutex lock;
        std::string path;
        Folder folder;
    };

    Slot& Mine() noexcept { return m_slots[HostThreadNumber() % std::size(m_slots)]; }

    Slot m_slots[8];
};

class PosixFolder final : public HostFolder {
  public:
    PosixFolder(Descriptor folder, std::string path) : m_folder(std::move(folder)), m_path(std::move(path)) {}

    Win32Error OpenBelow(const std::string& path, std::unique_ptr<HostFolder>& folder) override {
        Descriptor opened;
        if (const Win32Error error = OpenFolder(path, opened); error != kErrorSuccess) return error;
        folder = std::make_unique<PosixFolder>(std::move(opened), m_path + "/" + path);
        return kErrorSuccess;
    }
    const std::string& Path() const noexcept override { return m_path; }
    Win32Error List(const std::string& path, std::vector<HostEntry>& entries) override;
    Win32Error Query(const std::string& path, SourceKind& kind, std::uint64_t& size) override;
    Win32Error ReadLink(const std::string& path, std::string& target) override;
    Win32Error OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) override;
    std::vector<std::byte> ReadSecurity(const std::string& path) override;
    Win32Error DeleteFile(const std::string& path) override;
    Win32Error CreateFolder(const std::string& path) override;
    void LockWriters() override;
    void UnlockWriters() override { (void)flock(m_folder.Get(), LOCK_UN); }

  private:
    // What a path's last part is opened, removed or made in.
    struct Place {
        KeptFolders::Folder opened;  // the folder that holds it, unless that is the root
        int folder = -1;
        std::string name;
    };

    Win32Error OpenFolder(std::string_view path, Descriptor& folder);
    Win32Error OpenStepwise(std::string_view path, Descriptor& folder);
    // The folder of a path, opened now.
    Win32Error Locate(std::string_view path, Place& place);
    // What ask(place) answers, less than 0 with errno for a failure. The folder may be one that was kept; when that has
    // gone meanwhile, the one that has its path now is asked.
    template <class Question>
    Win32Error Ask(std::string_view path, const Question& ask);

    const Descriptor m_folder;
    const std::string m_path;
    KeptFolders m_kept;
};

void PosixFolder::LockWriters() {
    constexpr int kTries = 400;
    for (int tries = 0; tries < kTries && flock(m_folder.Get(), LOCK_EX | LOCK_NB) != 0; ++tries) {
        if (errno != EWOULDBLOCK && errno != EINTR) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

bool HasOddPart(std::string_view path) noexcept {
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string_view part = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        if (part.empty() || part == "." || part == "..") return true;
    }
    return false;
}

// One call for the whole path, where the system has one that refuses links; everything but success is told by the walk.
Win32Error PosixFolder::OpenFolder(std::string_view path, Descriptor& folder) {
    if (HasOddPart(path)) return kErrorInvalidName;
#ifdef RESOLVE_NO_SYMLINKS
    if (!path.empty()) {
        open_how how{};
        how.flags = kFolderFlags;
        how.resolve = RESOLVE_NO_SYMLINKS | RESOLVE_BENEATH;
        const auto opened = syscall(SYS_openat2, m_folder.Get(), std::string(path).c_str(), &how, sizeof how);
        if (opened >= 0) {
            folder = Descriptor(static_cast<int>(opened));
            return kErrorSuccess;
        }
    }
#endif
    return OpenStepwise(path, folder);
}

// One openat for each part, each of which refuses a link: there is no moment at which a part that was looked at could
// be exchanged for a link and followed.
Win32Error PosixFolder::OpenStepwise(std::string_view path, Descriptor& folder) {
    Descriptor current(openat(m_folder.Get(), ".", kFolderFlags));
    if (current.Get() < 0) return FromErrno(errno);
    while (!path.empty()) {
        const std::size_t end = std::min(path.find('/'), path.size());
        const std::string part(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
        Descriptor next(openat(current.Get(), part.c_str(), kFolderFlags));
        if (next.Get() < 0) {
            const int error = errno;
            // With O_DIRECTORY a link answers ENOTDIR on some systems and ELOOP on others.
            struct stat info {};
            const bool link =
                fstatat(current.Get(), part.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(info.st_mode);
            if (link) return kErrorCannotAccessFile;
            return error == ENOENT ? kErrorPathNotFound : FromErrno(error);
        }
        current = std::move(next);
    }
    folder = std::move(current);
    return kErrorSuccess;
}

Win32Error PosixFolder::Locate(std::string_view path, Place& place) {
    const std::size_t cut = path.rfind('/');
    place.name = path.substr(cut == std::string_view::npos ? 0 : cut + 1);
    if (HasOddPart(place.name) || place.name.empty()) return kErrorInvalidName;
    if (cut == std::string_view::npos) {
        place.folder = m_folder.Get();
        return kErrorSuccess;
    }
    Descriptor opened;
    const Win32Error error = OpenFolder(path.substr(0, cut), opened);
    place.folder = opened.Get();
    if (error == kErrorSuccess) place.opened = std::make_shared<const Descriptor>(std::move(opened));
    return error;
}

template <class Question>
Win32Error PosixFolder::Ask(std::string_view path, const Question& ask) {
    const std::size_t cut = path.rfind('/');
    const std::string_view folder = path.substr(0, cut == std::string_view::npos ? 0 : cut);
    Place place;
    if (!folder.empty()) {
        place.opened = m_kept.Find(folder);
        if (place.opened) {
            place.folder = place.opened->Get();
            place.name = path.substr(cut + 1);
            if (HasOddPart(place.name) || place.name.empty()) return kErrorInvalidName;
            if (ask(place) >= 0) return kErrorSuccess;
        }
    }
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    if (ask(place) < 0) return FromErrno(errno);
    if (place.opened) m_kept.Keep(folder, std::move(place.opened));
    return kErrorSuccess;
}

Win32Error PosixFolder::List(const std::string& path, std::vector<HostEntry>& entries) {
    Descriptor folder;
    if (const Win32Error error = OpenFolder(path, folder); error != kErrorSuccess) return error;
    const int fd = folder.Get();
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(fdopendir(fd), closedir);
    if (!stream) return FromErrno(errno);
    (void)folder.Detach();  // the stream's from now on
    for (;;) {
        errno = 0;
        const dirent* entry = readdir(stream.get());
        if (entry == nullptr) return errno == 0 ? kErrorSuccess : FromErrno(errno);
        const std::string_view name(entry->d_name);
        if (name == "." || name == "..") continue;
        SourceKind kind = SourceKind::Other;
        switch (entry->d_type) {
            case DT_REG:
                kind = SourceKind::File;
                break;
            case DT_DIR:
                kind = SourceKind::Folder;
                break;
            case DT_LNK:
                kind = SourceKind::Link;
                break;
            case DT_UNKNOWN: {
                struct stat info {};
                if (fstatat(fd, entry->d_name, &info, AT_SYMLINK_NOFOLLOW) == 0) kind = KindOf(info.st_mode);
                break;
            }
            default:
                break;
        }
        entries.push_back({std::string(name), kind});
    }
}

Win32Error PosixFolder::Query(const std::string& path, SourceKind& kind, std::uint64_t& size) {
    struct stat info {};
    if (path.empty()) {
        if (fstat(m_folder.Get(), &info) != 0) return FromErrno(errno);
    } else {
        const Win32Error error = Ask(path, [&](const Place& place) {
            return fstatat(place.folder, place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW);
        });
        if (error != kErrorSuccess) return error;
    }
    kind = KindOf(info.st_mode);
    size = kind == SourceKind::File ? static_cast<std::uint64_t>(info.st_size) : 0;
    return kErrorSuccess;
}

Win32Error PosixFolder::ReadLink(const std::string& path, std::string& target) {
    char text[PATH_MAX];
    ssize_t length = 0;
    const Win32Error error = Ask(path, [&](const Place& place) {
        return length = readlinkat(place.folder, place.name.c_str(), text, sizeof text);
    });
    if (error != kErrorSuccess) return error;
    target.assign(text, static_cast<std::size_t>(length));
    return kErrorSuccess;
}

// Without waiting: opening a pipe that nobody writes to would not come back.
Win32Error PosixFolder::OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) {
    Place place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    const int flags = OpenFlags(how) | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    Descriptor file(openat(place.folder, place.name.c_str(), flags, 0666));
    if (file.Get() < 0) return FromErrno(errno);
    struct stat info {};
    if (fstat(file.Get(), &info) != 0) return FromErrno(errno);
    if (!S_ISREG(info.st_mode)) return kErrorAccessDenied;
    stream = std::make_unique<PosixStream>(std::move(file));
    return kErrorSuccess;
}

// The drivers of NTFS show the descriptor under this name. A descriptor has at most 64 KiB.
std::vector<std::byte> PosixFolder::ReadSecurity(const std::string& path) {
    constexpr const char* kAttribute = "system.ntfs_acl";
    constexpr std::size_t kLargest = 0x10000;
    Place place;
    if (Locate(path, place) != kErrorSuccess) return {};
    const Descriptor opened(
        openat(place.folder, place.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY));
    if (opened.Get() < 0) return {};
    const ssize_t size = fgetxattr(opened.Get(), kAttribute, nullptr, 0);
    if (size <= 0 || static_cast<std::size_t>(size) > kLargest) return {};
    std::vector<std::byte> bytes(static_cast<std::size_t>(size));
    const ssize_t read = fgetxattr(opened.Get(), kAttribute, bytes.data(), bytes.size());
    bytes.resize(read > 0 ? static_cast<std::size_t>(read) : 0);
    return bytes;
}

Win32Error PosixFolder::DeleteFile(const std::string& path) {
    Place place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    return unlinkat(place.folder, place.name.c_str(), 0) == 0 ? kErrorSuccess : FromErrno(errno);
}

Win32Error PosixFolder::CreateFolder(const std::string& path) {
    Place place;
    if (const Win32Error error = Locate(path, place); error != kErrorSuccess) return error;
    if (mkdirat(place.folder, place.name.c_str(), 0777) == 0) return kErrorSuccess;
    return errno == EEXIST ? kErrorAlreadyExists : FromErrno(errno);
}

}  // namespace

Win32Error HostFolder::Open(const std::string& path, std::unique_ptr<HostFolder>& folder) {
    Descriptor opened(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened.Get() < 0) return FromErrno(errno);
    const std::unique_ptr<char, void (*)(void*)> real(realpath(path.c_str(), nullptr), std::free);
    if (!real) return FromErrno(errno);
    folder = std::make_unique<PosixFolder>(std::move(opened), real.get());
    return kErrorSuccess;
}

std::string HostTempFolder() {
    const char* folder = std::getenv("TMPDIR");
    return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

std::string HostProgramPath() {
    char text[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", text, sizeof text);
    return length > 0 ? std::string(text, static_cast<std::size_t>(length)) : std::string();
}

void HostMemory(std::uint64_t& total, std::uint64_t& available) {
    struct sysinfo info {};
    total = available = 0;
    if (sysinfo(&info) != 0) return;
    total = std::uint64_t{info.totalram} * info.mem_unit;
    available = std::uint64_t{info.freeram + info.bufferram} * info.mem_unit;
}

LocalTime HostLocalTime() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    LocalTime time;
    time.year = static_cast<std::uint16_t>(local.tm_year + 1900);
    time.month = static_cast<std::uint16_t>(local.tm_mon + 1);
    time.day = static_cast<std::uint16_t>(local.tm_mday);
    time.hour = static_cast<std::uint16_t>(local.tm_hour);
    time.minute = static_cast<std::uint16_t>(local.tm_min);
    time.second = static_cast<std::uint16_t>(local.tm_sec);
    time.millisecond = static_cast<std::uint16_t>(now.tv_nsec / 1'000'000);
    return time;
}

std::uint32_t HostThreadNumber() {
    thread_local const auto number = static_cast<std::uint32_t>(syscall(SYS_gettid));
    return number;
}

bool HostRandom(void* buffer, std::size_t size) { return getrandom(buffer, size, 0) == static_cast<ssize_t>(size); }

}  // namespace roundup
