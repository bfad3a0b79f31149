// What a file on disk is. Paths are zero-terminated; null and empty ones do not exist.
#pragma once

#include <cstdint>

namespace roundup {

class CStringSet;

// Shows the calling thread the native system folder of a 64-bit machine to a 32-bit process, for a scope. Begins and
// ends on one thread; may be nested.
class FsRedirectGuard {
  public:
    FsRedirectGuard();
    ~FsRedirectGuard();
    FsRedirectGuard(const FsRedirectGuard&) = delete;
    FsRedirectGuard& operator=(const FsRedirectGuard&) = delete;

  private:
    void* m_state = nullptr;
    bool m_disabled = false;
};

// noRedirect asks inside an FsRedirectGuard.
bool PathExists(const char16_t* path, bool noRedirect = false);
// True for what exists and is no folder.
bool IsFilePath(const char16_t* path, bool noRedirect = false);
// Bytes; 0 for what cannot be had, and for a folder.
std::uint64_t GetFileSize64(const char16_t* path, bool noRedirect = false);
// True when the path, whose last part may hold "*" and "?", finds something.
bool PatternExists(const char16_t* pattern);
// True for a folder that is a reparse point, such as a junction.
bool IsReparseFolder(const char16_t* path);

// Adds at most 100 key names of the ini file's section to keys. True when the set is not empty afterwards; a file
// that is missing, empty or above 0x100000 bytes adds nothing.
bool ReadIniKeys(const char16_t* folder, const char16_t* file, const char16_t* section, CStringSet& keys);

}  // namespace roundup
