// The installer of a machine that is not live.
#pragma once

#include "platform/installer.h"
#include "platform/recorded/handletable.h"
#include "platform/recorded/installer/installerbooks.h"
#include "platform/recorded/installer/installerdatabase.h"

namespace roundup {

// Databases are files of the machine, the service's answers stand in its registry. Every thread may call.
class RecordedInstaller final : public IInstaller {
  public:
    RecordedInstaller(IRegistry& registry, IFileSystem& files) noexcept : m_files(files), m_books(registry, files) {}

    Win32Error OpenDatabase(const char16_t* path, InstallerHandle& database) override;
    Win32Error OpenView(InstallerHandle database, const char16_t* query, InstallerHandle& view) override;
    Win32Error ExecuteView(InstallerHandle view) override;
    Win32Error FetchRecord(InstallerHandle view, InstallerHandle& record) override;
    Win32Error GetString(InstallerHandle record, std::uint32_t column, char16_t* buffer,
                         std::uint32_t& length) override;
    std::int32_t GetInteger(InstallerHandle record, std::uint32_t column) override;
    std::uint32_t GetDataSize(InstallerHandle record, std::uint32_t column) override;
    Win32Error ReadStream(InstallerHandle record, std::uint32_t column, void* buffer, std::uint32_t& size) override;
    void CloseHandle(InstallerHandle handle) override;

    Win32Error EnumComponent(std::uint32_t index, char16_t (&component)[39]) override {
        return m_books.EnumComponent(index, component);
    }
    std::int32_t GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                  std::uint32_t& length) override {
        return m_books.GetComponentPath(product, component, buffer, length);
    }
    Win32Error GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                              std::uint32_t& length) override {
        return m_books.GetProductInfo(product, property, buffer, length);
    }
    Win32Error GetShortcutTarget(const char16_t* path, char16_t (&product)[39], char16_t (&feature)[39],
                                 char16_t (&component)[39]) override;

  private:
    IFileSystem& m_files;
    InstallerBooks m_books;
    HandleTable<InstallerDatabase> m_databases;
    HandleTable<InstallerView> m_views;
    HandleTable<InstallerRecord> m_records;
};

}  // namespace roundup
