#include "platform/recorded/installer/recordedinstaller.h"

#include <utility>

#include "platform/recorded/installer/installeranswer.h"
#include "platform/recorded/links/linkfile.h"

namespace roundup {

namespace {

// Handles of the installer have 32 bits, those of the tables without their mark. A process that used them all up gets
// no more.
constexpr std::uint64_t TableValue(InstallerHandle handle) noexcept { return kHandleMark | handle; }

template <class T>
Win32Error AddObject(HandleTable<T>& table, std::shared_ptr<T> object, InstallerHandle& handle) {
    const std::uint64_t value = table.Add(std::move(object));
    handle = static_cast<InstallerHandle>(value);
    if (TableValue(handle) == value) return kErrorSuccess;
    handle = 0;
    table.Take(value);
    return kErrorNotEnoughMemory;
}

}  // namespace

Win32Error RecordedInstaller::OpenDatabase(const char16_t* path, InstallerHandle& database) {
    database = 0;
    if (path == nullptr) return kErrorInvalidParameter;
    std::shared_ptr<InstallerDatabase> opened;
    if (const Win32Error error = OpenInstallerDatabase(m_files, path, opened); error != kErrorSuccess) return error;
    return AddObject(m_databases, std::move(opened), database);
}

Win32Error RecordedInstaller::OpenView(InstallerHandle database, const char16_t* query, InstallerHandle& view) {
    view = 0;
    const std::shared_ptr<InstallerDatabase> found = m_databases.Find(TableValue(database));
    if (found == nullptr) return kErrorInvalidHandle;
    if (query == nullptr) return kErrorInvalidParameter;
    std::shared_ptr<InstallerView> opened;
    if (const Win32Error error = found->OpenView(query, opened); error != kErrorSuccess) return error;
    return AddObject(m_views, std::move(opened), view);
}

Win32Error RecordedInstaller::ExecuteView(InstallerHandle view) {
    const std::shared_ptr<InstallerView> found = m_views.Find(TableValue(view));
    return found != nullptr ? found->Execute() : kErrorInvalidHandle;
}

Win32Error RecordedInstaller::FetchRecord(InstallerHandle view, InstallerHandle& record) {
    record = 0;
    const std::shared_ptr<InstallerView> found = m_views.Find(TableValue(view));
    if (found == nullptr) return kErrorInvalidHandle;
    std::shared_ptr<InstallerRecord> fetched;
    if (const Win32Error error = found->Fetch(fetched); error != kErrorSuccess) return error;
    return AddObject(m_records, std::move(fetched), record);
}

Win32Error RecordedInstaller::GetString(InstallerHandle record, std::uint32_t column, char16_t* buffer,
                                        std::uint32_t& length) {
    const std::shared_ptr<InstallerRecord> found = m_records.Find(TableValue(record));
    return found != nullptr ? found->Text(column, buffer, length) : kErrorInvalidHandle;
}

std::int32_t RecordedInstaller::GetInteger(InstallerHandle record, std::uint32_t column) {
    const std::shared_ptr<InstallerRecord> found = m_records.Find(TableValue(record));
    return found != nullptr ? found->Integer(column) : kNullInteger;
}

std::uint32_t RecordedInstaller::GetDataSize(InstallerHandle record, std::uint32_t column) {
    const std::shared_ptr<InstallerRecord> found = m_records.Find(TableValue(record));
    return found != nullptr ? found->DataSize(column) : 0;
}

Win32Error RecordedInstaller::ReadStream(InstallerHandle record, std::uint32_t column, void* buffer,
                                         std::uint32_t& size) {
    const std::shared_ptr<InstallerRecord> found = m_records.Find(TableValue(record));
    return found != nullptr ? found->ReadStream(column, buffer, size) : kErrorInvalidHandle;
}

void RecordedInstaller::CloseHandle(InstallerHandle handle) {
    const std::uint64_t value = TableValue(handle);
    if (m_records.Take(value) == nullptr && m_views.Take(value) == nullptr) m_databases.Take(value);
}

// The service finds the parts in the link itself. A feature's name has 38 characters at most.
Win32Error RecordedInstaller::GetShortcutTarget(const char16_t* path, char16_t (&product)[39], char16_t (&feature)[39],
                                                char16_t (&component)[39]) {
    LinkFile link;
    std::u16string parts[3];
    if (path == nullptr || !LoadLinkFile(m_files, path, link)) return kErrorFunctionFailed;
    if (!ParseDescriptor(link.descriptor, parts[0], parts[1], parts[2])) return kErrorFunctionFailed;
    const auto answer = [](const std::u16string& text, char16_t(&buffer)[39]) {
        std::uint32_t room = 39;
        (void)AnswerInstallerText(text, buffer, room);
    };
    answer(parts[0], product);
    answer(parts[1], feature);
    answer(parts[2], component);
    return kErrorSuccess;
}

}  // namespace roundup
