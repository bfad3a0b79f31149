// Installer databases of a machine that is not live.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/filesystem.h"
#include "platform/win32.h"

namespace roundup {

// Columns count from 1; a column that is not there is like a null field. Databases, views and records may be used and
// destroyed in any order and on any thread: each keeps what it stands on, and those of one database wait for each
// other.
class IInstallerRecord {
  public:
    virtual ~IInstallerRecord() = default;
    virtual std::u16string Text(std::uint32_t column) = 0;
    // kNullInteger for a null field or one that is no number.
    virtual std::int32_t Integer(std::uint32_t column) = 0;
    // Bytes of a stream or a number, characters of a text.
    virtual std::uint32_t DataSize(std::uint32_t column) = 0;
    // As ReadStream of IInstaller: error 87 for a column that is not there, 1804 for one that holds no stream.
    virtual Win32Error ReadStream(std::uint32_t column, void* buffer, std::uint32_t& size) = 0;
};

class IInstallerView {
  public:
    virtual ~IInstallerView() = default;
    virtual Win32Error Execute() = 0;
    // Error 259 behind the last row.
    virtual Win32Error Fetch(std::shared_ptr<IInstallerRecord>& record) = 0;
};

class IInstallerDatabase {
  public:
    virtual ~IInstallerDatabase() = default;
    // Error 1615 for a query that is none, or on a table that is not there.
    virtual Win32Error OpenView(const char16_t* query, std::shared_ptr<IInstallerView>& view) = 0;
};

// Reads the file whole; nothing of the source is touched afterwards. Error 110 for a file that is absent or no
// database, and on systems without a reader of databases. Throws std::bad_alloc.
Win32Error OpenInstallerDatabase(IFileSystem& files, const char16_t* path,
                                 std::shared_ptr<IInstallerDatabase>& database);

}  // namespace roundup
