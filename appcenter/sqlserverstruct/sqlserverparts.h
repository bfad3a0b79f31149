// The steps in which the picture of the database server is made.
#pragma once

#include <string>
#include <string_view>

#include "appcenter/sqlserverstruct/sqlserverinfo.h"
#include "utility/result.h"

namespace roundup {

class CWFYRegKey;

// Fills an empty picture. The first failure ends it: small code 1 for a machine without the server's keys, for one
// whose services cannot be listed, and for one whose local groups cannot.
ResultCode BuildSqlServerInfo(SqlServerInfo& info);

// The steps, in their order. Failures are small code 1 too.
ResultCode ReadSqlServices(SqlServerInfo& info);
ResultCode ReadSqlInstances(SqlServerInfo& info);
ResultCode ReadSqlSecurity(SqlServerInfo& info);

// The name without "MACHINE", "USERS", "CURRENT_USER" or "CLASSES_ROOT" in front is small code 2.
inline constexpr std::uint32_t kSqlServerCacheMagic = 0x01025689;

enum class SqlObjectKind { FileOrFolder, RegistryKey };
// The accounts of the server in an object's access list: those with "SQL" or "$" in their names, ascending, each once.
// Empty after any failure, which is logged.
SqlTexts FindSqlAccounts(std::u16string_view path, SqlObjectKind kind);

// Writes the picture to the machine's cache file of that version, path tells where. Small code 1 when the folder is
// not known or the file cannot be written whole, 10 when memory is short.
ResultCode WriteSqlServerCache(const SqlServerInfo& info, std::uint32_t version, std::u16string& path);

// The text of a value up to its first zero; empty without one. TrimmedText cuts the backslashes at its end.
std::u16string SqlValueText(CWFYRegKey& key, const char16_t* name);
std::u16string SqlTrimmedText(CWFYRegKey& key, const char16_t* name);
bool PathExists(const std::u16string& path);

}  // namespace roundup
