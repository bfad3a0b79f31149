// The log file belongs to the machine. Its lock is a leaf: nothing in here logs or takes another lock of the system,
// so that a line may be written from everywhere. Whatever goes wrong in here stays in here.
#include "utility/log.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string_view>

#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fixedtext.h"
#include "utility/locks.h"
#include "utility/ownedstring.h"

namespace roundup {

namespace {

using formattext_detail::Argument;

constexpr std::u16string_view kTag = u"[ITL]";
constexpr std::u16string_view kLineEnd = u"\r\n";
constexpr std::u16string_view kProduct = u"Wayferry";
constexpr std::size_t kLineExtra = 20;            // units of a line's buffer beside the message
constexpr std::uint64_t kMostSize = 0x800000;     // bytes that the file may have before its head is dropped
constexpr std::uint32_t kTailSize = 0x400000;     // bytes of it that stay
constexpr std::uint32_t kWriteSize = 0x40000000;  // bytes for one call of the platform
constexpr std::size_t kMaxPath = log_detail::kMaxPath;

// The host's executable; empty when it cannot be had.
OwnedString HostExecutable(ISystem& system) {
    OwnedString path;
    std::uint32_t size = kMaxPath;
    // A longer path tells the size that it needs.
    for (int tries = 0; tries < 2; ++tries) {
        if (!path.Allocate(size)) break;
        const std::uint32_t answer = system.GetHostExecutable(path.Data(), size);
        if (answer < size) {
            path.Truncate(answer);
            return path;
        }
        size = answer;
    }
    return OwnedString();
}

class LogFile {
  public:
    LogFile() noexcept : m_files(CurrentMachine().Files()), m_system(CurrentMachine().System()) {}
    LogFile(const LogFile&) = delete;
    LogFile& operator=(const LogFile&) = delete;
    ~LogFile() {
        if (m_file != kInvalidFile) m_files.Close(m_file);
    }

    void WriteLine(std::u16string_view format, const Argument* list, std::size_t count) {
        const std::size_t room = formattext_detail::Measure(format, list, count) + kLineExtra;
        const std::unique_ptr<char16_t[]> line(new (std::nothrow) char16_t[room]);
        if (line == nullptr) return;
        const LockGuard guard(m_lock);
        char16_t* const message = std::copy(kTag.begin(), kTag.end(), line.get());
        formattext_detail::ToArray(message, room - kTag.size() - kLineEnd.size(), format, list, count);
        const std::size_t length = kTag.size() + std::u16string_view(message).size();
        if (!Open()) return;
        CheckSize();
        WriteStamp();
        std::copy(kLineEnd.begin(), kLineEnd.end(), line.get() + length);
        WriteText({line.get(), length + kLineEnd.size()});
    }

  private:
    void WorkOutPath() {
        FixedText<kMaxPath> folder;
        if (m_system.GetTempFolder(folder.Data(), kMaxPath) >= kMaxPath) folder.Clear();
        log_detail::NameFile(folder, HostExecutable(m_system), m_path);
        m_pathKnown = true;
    }

    bool Open() {
        if (!m_pathKnown) WorkOutPath();
        if (m_file != kInvalidFile) return true;
        // An empty path is one that cannot be opened either.
        const Win32Error error =
            m_files.Open(m_path.Text(), kGenericRead | kGenericWrite, kShareRead | kShareWrite, kOpenAlways, m_file);
        if (error == kErrorSuccess && m_file != kInvalidFile) return true;
        m_file = kInvalidFile;
        FixedText<64> text;
        FormatText(text, u"[ITL]open file fail=0x%X\r\n", error);
        m_system.WriteDebugText(text.Text());
        return false;
    }

    // Another process may have the file open too: its size is asked anew for each line, and what it holds decides.
    // Leaves the position at the end.
    void CheckSize() {
        std::uint64_t size = 0;
        if (m_files.GetSize(m_file, size) != kErrorSuccess) return;
        if (size == 0) {
            m_files.SetPosition(m_file, 0);
            WriteHead();
        } else if (size <= kMostSize || !KeepTail(size)) {
            m_files.SetPosition(m_file, size);
        }
    }

    // Cuts the file to its last 4 MiB. False when it stays as it was: the next line tries again.
    bool KeepTail(std::uint64_t size) {
        const std::unique_ptr<char[]> tail(new (std::nothrow) char[kTailSize]);
        if (tail == nullptr) return false;
        // An even offset, so that no unit is cut in two.
        const std::uint64_t start = (size - kTailSize) & ~std::uint64_t{1};
        std::uint32_t length = 0;
        if (m_files.SetPosition(m_file, start) != kErrorSuccess) return false;
        if (m_files.Read(m_file, tail.get(), kTailSize, length) != kErrorSuccess || length == 0) return false;
        if (m_files.SetPosition(m_file, 0) != kErrorSuccess) return false;
        if (m_files.SetEnd(m_file) != kErrorSuccess) return false;
        WriteHead();
        WriteBytes(tail.get(), length);
        return true;
    }

    void WriteHead() {
        const unsigned char mark[] = {0xFF, 0xFE};
        WriteBytes(mark, sizeof mark);
        MemoryStatus memory;
        m_system.GetMemoryStatus(memory);
        FixedText<160> text;
        FormatText(text, u"Computer information: ullTotalPhys = %I64u, ullAvailPhys = %I64u.\r\n", memory.totalPhysical,
                   memory.availablePhysical);
        WriteText(text);
    }

    void WriteStamp() {
        const LocalTime now = m_system.GetTime();
        FixedText<64> text;
        FormatText(text, u"%04d-%02d-%02d %02d:%02d:%02d:%03d(%u): ", now.year, now.month, now.day, now.hour,
                   now.minute, now.second, now.millisecond, m_system.GetThreadNumber());
        WriteText(text);
    }

    // The file is little-endian, as every machine that this system runs on.
    void WriteText(std::u16string_view text) { WriteBytes(text.data(), text.size() * sizeof(char16_t)); }

    void WriteBytes(const void* data, std::size_t size) {
        const char* at = static_cast<const char*>(data);
        while (size != 0) {
            const auto part = static_cast<std::uint32_t>(std::min<std::size_t>(size, kWriteSize));
            std::uint32_t done = 0;
            if (m_files.Write(m_file, at, part, done) != kErrorSuccess || done != part) return;
            at += part;
            size -= part;
        }
    }

    // Constant after construction.
    IFileSystem& m_files;
    ISystem& m_system;

    SpyNameLock m_lock;
    // Guarded by m_lock.
    FixedText<kMaxPath> m_path;
    bool m_pathKnown = false;
    FileHandle m_file = kInvalidFile;
};

}  // namespace

void log_detail::NameFile(std::u16string_view folder, std::u16string_view executable,
                          FixedText<kMaxPath>& path) noexcept {
    std::u16string_view name = executable;
    name.remove_prefix(name.find_last_of(u"\\/:") + 1);
    name = name.substr(0, name.rfind(u'.'));
    // The product's own host, and one whose name is a piece of the product's, has the shared file.
    const bool whole = kProduct.find(name) != std::u16string_view::npos
                           ? FormatText(path, u"%smorrowWayferry.log", folder)
                           : FormatText(path, u"%smorrowWayferry_%s.log", folder, name);
    if (folder.empty() || !whole) path.Clear();
}

void log_detail::WriteLine(std::u16string_view format, const Argument* list, std::size_t count) noexcept {
    if (!HasCurrentMachine()) return;
    // Memory for the log's own state may be short too: the line is dropped, as one that could not be had.
    AtBoundary([&] { ProcessWide<LogFile>().WriteLine(format, list, count); }, [] {});
}

}  // namespace roundup
