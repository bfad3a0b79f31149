// Files and folders of the machine. Paths are Windows paths, zero-terminated, with a drive letter or a UNC prefix.
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace roundup {

using FileHandle = std::uint64_t;
using FindHandle = std::uint64_t;
inline constexpr std::uint64_t kInvalidFile = 0xFFFFFFFFFFFFFFFFU;

// Attributes (winnt.h). A failed query answers kInvalidAttributes, in which every bit is set.
inline constexpr std::uint32_t kAttributeReadOnly = 0x1;
inline constexpr std::uint32_t kAttributeHidden = 0x2;
inline constexpr std::uint32_t kAttributeSystem = 0x4;
inline constexpr std::uint32_t kAttributeDirectory = 0x10;
inline constexpr std::uint32_t kAttributeArchive = 0x20;
inline constexpr std::uint32_t kAttributeReparsePoint = 0x400;
inline constexpr std::uint32_t kInvalidAttributes = 0xFFFFFFFFU;

// Access, sharing, disposition and flags of CreateFileW (fileapi.h, winnt.h).
inline constexpr std::uint32_t kGenericRead = 0x80000000U;
inline constexpr std::uint32_t kGenericWrite = 0x40000000U;
inline constexpr std::uint32_t kShareRead = 1;
inline constexpr std::uint32_t kShareWrite = 2;
inline constexpr std::uint32_t kCreateNew = 1;
inline constexpr std::uint32_t kCreateAlways = 2;
inline constexpr std::uint32_t kOpenExisting = 3;
inline constexpr std::uint32_t kOpenAlways = 4;

struct FileInfo {
    std::uint32_t attributes = 0;
    std::uint64_t size = 0;  // bytes; 0 for a folder
};

// One entry of an enumeration. Names of NTFS have at most 255 characters.
struct FindData {
    std::uint32_t attributes = 0;
    std::uint64_t size = 0;  // bytes; 0 for a folder
    char16_t name[260] = {};
};

// Error 2 says that the last part of a path is absent, 3 that a folder on the way is, 5 that access was denied, 123
// that the text is no path. Handles are used by one thread at a time.
class IFileSystem {
  public:
    IFileSystem() = default;
    IFileSystem(const IFileSystem&) = delete;
    IFileSystem& operator=(const IFileSystem&) = delete;
    virtual ~IFileSystem() = default;

    // GetFileAttributesW: the attribute word, kInvalidAttributes when the path cannot be had.
    virtual std::uint32_t GetAttributes(const char16_t* path) = 0;

    // GetFileAttributesExW.
    virtual Win32Error GetInfo(const char16_t* path, FileInfo& info) = 0;

    // FindFirstFileW, FindNextFileW, FindClose. The last part of pattern may hold "*" and "?"; entries come in
    // ascending order of their upper-cased names, "." and ".." first where a mask matches them (not in a drive's
    // root). Nothing found is error 2 of FindFirst, the end error 18 of FindNext. find must be closed on success.
    virtual Win32Error FindFirst(const char16_t* pattern, FindHandle& find, FindData& data) = 0;
    virtual Win32Error FindNext(FindHandle find, FindData& data) = 0;
    virtual void FindClose(FindHandle find) = 0;

    // CreateFileW on a file, with normal attributes. A folder is error 5. On failure file is kInvalidFile.
    virtual Win32Error Open(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                            FileHandle& file) = 0;
    // ReadFile, WriteFile at the file's position, which moves on. done tells the bytes moved; reading at the end
    // succeeds with 0.
    virtual Win32Error Read(FileHandle file, void* buffer, std::uint32_t size, std::uint32_t& done) = 0;
    virtual Win32Error Write(FileHandle file, const void* buffer, std::uint32_t size, std::uint32_t& done) = 0;
    // GetFileSizeEx.
    virtual Win32Error GetSize(FileHandle file, std::uint64_t& size) = 0;
    // SetFilePointerEx, counted from the start; SetEndOfFile at the position.
    virtual Win32Error SetPosition(FileHandle file, std::uint64_t position) = 0;
    virtual Win32Error SetEnd(FileHandle file) = 0;
    virtual void Close(FileHandle file) = 0;

    // DeleteFileW, CreateDirectoryW (error 183 when it is there, 3 when its parent is not).
    virtual Win32Error Delete(const char16_t* path) = 0;
    virtual Win32Error CreateDirectory(const char16_t* path) = 0;

    // GetLongPathNameW, GetShortPathNameW, GetFullPathNameW: the characters written without the terminator; the size
    // needed with it when that is above size, and buffer is untouched; 0 on failure. The first two need the path to
    // exist.
    virtual std::uint32_t GetLongPath(const char16_t* path, char16_t* buffer, std::uint32_t size) = 0;
    virtual std::uint32_t GetShortPath(const char16_t* path, char16_t* buffer, std::uint32_t size) = 0;
    virtual std::uint32_t GetFullPath(const char16_t* path, char16_t* buffer, std::uint32_t size) = 0;

    // GetVolumeInformationW: the name of the file system of a drive root such as "C:\", at most size characters with
    // the terminator.
    virtual Win32Error GetVolumeFileSystem(const char16_t* root, char16_t* name, std::uint32_t size) = 0;

    // Opens the path as a reparse point (CreateFileW with read access, no sharing, flags 0x2200000) and asks
    // FSCTL_GET_REPARSE_POINT: a REPARSE_DATA_BUFFER (ntifs.h) of done bytes. Error 4390 when it is none.
    virtual Win32Error ReadReparsePoint(const char16_t* path, void* buffer, std::uint32_t size,
                                        std::uint32_t& done) = 0;

    // Wow64DisableWow64FsRedirection and Wow64RevertWow64FsRedirection, for the calling thread. The first answers
    // false, and the second must not be called, where the platform lacks them or the process needs none.
    virtual bool DisableRedirection(void*& state) = 0;
    virtual void RevertRedirection(void* state) = 0;
};

}  // namespace roundup
