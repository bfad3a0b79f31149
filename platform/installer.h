// Windows Installer: databases and the service's answers, as msi.dll gives them (msi.h, msiquery.h).
#pragma once

#include <cstdint>

#include "platform/win32.h"

namespace roundup {

// Databases, views and records, each closed once with CloseHandle. 0 is none.
using InstallerHandle = std::uint32_t;

// INSTALLSTATE of msi.h, as far as GetComponentPath gives it.
inline constexpr std::int32_t kInstallStateMoreData = -3;
inline constexpr std::int32_t kInstallStateUnknown = -1;
inline constexpr std::int32_t kInstallStateAbsent = 2;
inline constexpr std::int32_t kInstallStateLocal = 3;
inline constexpr std::int32_t kInstallStateSource = 4;

inline constexpr std::int32_t kNullInteger = INT32_MIN;  // MSI_NULL_INTEGER

// A database and what was opened from it are used by one thread at a time. Columns count from 1.
class IInstaller {
  public:
    IInstaller() = default;
    IInstaller(const IInstaller&) = delete;
    IInstaller& operator=(const IInstaller&) = delete;
    virtual ~IInstaller() = default;

    // MsiOpenDatabaseW, read-only. 110 or another error for a file that is absent or no database.
    virtual Win32Error OpenDatabase(const char16_t* path, InstallerHandle& database) = 0;
    // MsiDatabaseOpenViewW, MsiViewExecute without parameters. 1615 for a query on a table that is not there.
    virtual Win32Error OpenView(InstallerHandle database, const char16_t* query, InstallerHandle& view) = 0;
    virtual Win32Error ExecuteView(InstallerHandle view) = 0;
    // MsiViewFetch: 259 behind the last row.
    virtual Win32Error FetchRecord(InstallerHandle view, InstallerHandle& record) = 0;
    // MsiRecordGetStringW. length: in, characters of room with the terminator; out, characters of the text without
    // it. 234 when it does not fit; a null field is an empty text.
    virtual Win32Error GetString(InstallerHandle record, std::uint32_t column, char16_t* buffer,
                                 std::uint32_t& length) = 0;
    // MsiRecordGetInteger: kNullInteger for a null field or one that is no number.
    virtual std::int32_t GetInteger(InstallerHandle record, std::uint32_t column) = 0;
    // MsiRecordDataSize: bytes of a stream, 0 for a null field.
    virtual std::uint32_t GetDataSize(InstallerHandle record, std::uint32_t column) = 0;
    // MsiRecordReadStream. size: in, bytes of room; out, bytes read, from where the last read of the field ended.
    virtual Win32Error ReadStream(InstallerHandle record, std::uint32_t column, void* buffer, std::uint32_t& size) = 0;
    virtual void CloseHandle(InstallerHandle handle) = 0;

    // MsiEnumComponentsW: the index-th installed component in braces (38 characters and the terminator); 259 past
    // the end.
    virtual Win32Error EnumComponent(std::uint32_t index, char16_t (&component)[39]) = 0;
    // MsiGetComponentPathW: an install state. length as in GetString, in characters.
    virtual std::int32_t GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                          std::uint32_t& length) = 0;
    // MsiGetProductInfoW, such as "AssignmentType". 1605 for an unknown product, 1608 for an unknown property.
    virtual Win32Error GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                                      std::uint32_t& length) = 0;
    // MsiGetShortcutTargetW: product code, feature and component code of an advertised link.
    virtual Win32Error GetShortcutTarget(const char16_t* path, char16_t (&product)[39], char16_t (&feature)[39],
                                         char16_t (&component)[39]) = 0;
};

}  // namespace roundup
