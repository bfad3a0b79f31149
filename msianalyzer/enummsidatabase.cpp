#include "msianalyzer/enummsidatabase.h"

#include <utility>

#include "platform/machine.h"

namespace roundup {

namespace {

// Closes a record when its handler has ended, in whatever way.
class OpenRecord {
  public:
    explicit OpenRecord(InstallerHandle handle) noexcept : m_handle(handle) {}
    OpenRecord(const OpenRecord&) = delete;
    OpenRecord& operator=(const OpenRecord&) = delete;
    ~OpenRecord() { CurrentMachine().Installer().CloseHandle(m_handle); }

  private:
    const InstallerHandle m_handle;
};

}  // namespace

ResultCode CEnumMsiDatabase::OpenView(InstallerHandle database, std::u16string_view query) {
    if (query.empty()) return kSuccess;
    if (database == 0) return Fail(SmallCode::GeneralFailure);
    Close();
    // Most databases lack some of the tables that are asked for: nothing to write about.
    IInstaller& installer = CurrentMachine().Installer();
    if (installer.OpenView(database, query.data(), m_view) != kErrorSuccess) {
        return FailQuiet(SmallCode::InstallerFailure);
    }
    const Win32Error error = installer.ExecuteView(m_view);
    return error == kErrorSuccess ? kSuccess : Fail(SmallCode::InstallerFailure, error);
}

ResultCode CEnumMsiDatabase::Fetch(OnRecord onRecord, void* context) {
    if (m_view == 0) return Fail(SmallCode::ObjectMissing);
    InstallerHandle record = 0;
    const Win32Error error = CurrentMachine().Installer().FetchRecord(m_view, record);
    if (error == kErrorNoMoreItems) return FailQuiet(SmallCode::NoMoreItems);
    if (error != kErrorSuccess) return Fail(SmallCode::InstallerFailure, error);
    const OpenRecord open(record);
    return onRecord != nullptr ? onRecord(context, &record) : kSuccess;
}

void CEnumMsiDatabase::Close() {
    if (m_view != 0) CurrentMachine().Installer().CloseHandle(std::exchange(m_view, 0));
}

}  // namespace roundup
