// A query on an installer database, record by record.
#pragma once

#include <string_view>

#include "platform/installer.h"
#include "utility/result.h"

namespace roundup {

// Used by one thread.
class CEnumMsiDatabase {
  public:
    using OnRecord = ResultCode (*)(void* context, const InstallerHandle* record);

    CEnumMsiDatabase() = default;
    CEnumMsiDatabase(const CEnumMsiDatabase&) = delete;
    CEnumMsiDatabase& operator=(const CEnumMsiDatabase&) = delete;
    ~CEnumMsiDatabase() { Close(); }

    // Zero-terminated; an empty query does nothing and succeeds. Small code 1 without a database, 0x18 when the
    // platform refuses the query, as for a table that is not there.
    ResultCode OpenView(InstallerHandle database, std::u16string_view query);
    // Hands the next record to onRecord, whose result is the result; the record is closed afterwards. Small code 8
    // behind the last one, 0xD without a view, 0x18 for a failure of the platform.
    ResultCode Fetch(OnRecord onRecord, void* context);

  private:
    void Close();

    InstallerHandle m_view = 0;
};

}  // namespace roundup
