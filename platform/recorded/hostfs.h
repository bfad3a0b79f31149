// The files of the computer that the process runs on: the one place of this folder that knows its operating system.
// Texts are UTF-8 here; a name that is not comes as it is, and the caller leaves it out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/filesource.h"
#include "platform/system.h"

namespace roundup {

struct HostEntry {
    std::string name;
    SourceKind kind = SourceKind::File;
};

enum class HostOpen : std::uint8_t {
    Read,
    ReadWrite,      // must be there
    CreateNew,      // for reading and writing; must not be there: error 80
    CreateOrOpen,   // likewise
    CreateOrEmpty,  // likewise
};

// A folder of this computer with everything below it, opened once. Paths are relative to it, with "/" between their
// parts and no "." or ".."; "" is the folder itself. No operation follows a link on the way or at the end, so that
// nothing outside is reached, whatever is done to the folder meanwhile; error 1920 says that there was one. Every
// thread may call at any time.
class HostFolder {
  public:
    HostFolder() = default;
    HostFolder(const HostFolder&) = delete;
    HostFolder& operator=(const HostFolder&) = delete;
    virtual ~HostFolder() = default;

    // Links on the way to the folder itself are followed.
    static Win32Error Open(const std::string& path, std::unique_ptr<HostFolder>& folder);
    // A folder below this one, from then on as closed as this one.
    virtual Win32Error OpenBelow(const std::string& path, std::unique_ptr<HostFolder>& folder) = 0;

    // The folder's own place on this computer, without links in it.
    virtual const std::string& Path() const noexcept = 0;

    virtual Win32Error List(const std::string& path, std::vector<HostEntry>& entries) = 0;
    virtual Win32Error Query(const std::string& path, SourceKind& kind, std::uint64_t& size) = 0;
    virtual Win32Error ReadLink(const std::string& path, std::string& target) = 0;
    // A folder is error 5; so is what is neither file nor folder.
    virtual Win32Error OpenFile(const std::string& path, HostOpen how, std::unique_ptr<IFileStream>& stream) = 0;
    // The self-relative security descriptor of a file or folder, where the file system hands it out as it stands on
    // its volume; empty otherwise. Throws std::bad_alloc.
    virtual std::vector<std::byte> ReadSecurity(const std::string& /*path*/) { return {}; }
    virtual Win32Error DeleteFile(const std::string& path) = 0;
    virtual Win32Error CreateFolder(const std::string& path) = 0;

    // Keeps other processes that ask for the same out until UnlockWriters. One thread at a time, whose caller sees to
    // that. Where the system has no such lock, and when another process does not let go of it in two seconds, the
    // caller goes on without.
    virtual void LockWriters() {}
    virtual void UnlockWriters() {}
};

// Where the text of a link leads, seen from a folder whose own place is root.
LinkTarget ParseLinkText(std::string_view text, std::string_view root);

// The folder for temporary files of this process: TMPDIR, else the system's own.
std::string HostTempFolder();
// The program that is running, with its folder; empty when it cannot be known.
std::string HostProgramPath();
// Bytes of memory; 0 when unknown.
void HostMemory(std::uint64_t& total, std::uint64_t& available);
LocalTime HostLocalTime();
// The number that the operating system gives the calling thread.
std::uint32_t HostThreadNumber();
// Fills the buffer from the system's source of randomness; false when there is none.
bool HostRandom(void* buffer, std::size_t size);

}  // namespace roundup
