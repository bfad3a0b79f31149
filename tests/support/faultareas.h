// The interfaces of FaultInjectingMachine: each asks its gate, then the interface behind it.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

#include "platform/machine.h"
#include "tests/support/faultmachine.h"

namespace roundup::fault {

template <class Interface>
class Area : public Interface {
  public:
    explicit Area(Interface& behind) noexcept : inner(behind) {}
    FaultGate gate;
    std::atomic<std::int64_t> held{0};  // handles given out and not taken back

  protected:
    // What an operation behind the gate answers, or the gate's error.
    template <class... Params, class... Args>
    Win32Error Ask(Win32Error (Interface::*operation)(Params...), Args&&... args) {
        const Win32Error error = gate.Next();
        return error != 0 ? error : (inner.*operation)(std::forward<Args>(args)...);
    }
    // The same for an operation that answers no error: it fails with false, 0 or null.
    template <class Answer, class... Params, class... Args>
    Answer Tell(Answer (Interface::*operation)(Params...), Args&&... args) {
        return gate.Next() != 0 ? Answer{} : (inner.*operation)(std::forward<Args>(args)...);
    }
    Win32Error Give(Win32Error error) noexcept {
        if (error == 0) ++held;
        return error;
    }
    template <class Handle>
    void Take(void (Interface::*operation)(Handle), Handle handle) {
        --held;
        (inner.*operation)(handle);
    }
    Interface& inner;
};

class Registry final : public Area<IRegistry> {
  public:
    using Area::Area;
    Win32Error OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        key = 0;
        return Give(Ask(&IRegistry::OpenKey, parent, subKey, access, key));
    }
    Win32Error CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override {
        key = 0;
        return Give(Ask(&IRegistry::CreateKey, parent, subKey, access, key));
    }
    void CloseKey(KeyHandle key) override { Take(&IRegistry::CloseKey, key); }
    Win32Error QueryInfo(KeyHandle key, KeyInfo& info) override { return Ask(&IRegistry::QueryInfo, key, info); }
    Win32Error EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) override {
        return Ask(&IRegistry::EnumKey, key, index, name, length);
    }
    Win32Error EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length, std::uint32_t& type,
                         void* data, std::uint32_t& size) override {
        return Ask(&IRegistry::EnumValue, key, index, name, length, type, data, size);
    }
    Win32Error QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                          std::uint32_t& size) override {
        return Ask(&IRegistry::QueryValue, key, name, type, data, size);
    }
    Win32Error SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                        std::uint32_t size) override {
        return Ask(&IRegistry::SetValue, key, name, type, data, size);
    }
    Win32Error DeleteValue(KeyHandle key, const char16_t* name) override {
        return Ask(&IRegistry::DeleteValue, key, name);
    }
};

class Files final : public Area<IFileSystem> {
  public:
    using Area::Area;
    std::uint32_t GetAttributes(const char16_t* path) override {
        return gate.Next() != 0 ? kInvalidAttributes : inner.GetAttributes(path);
    }
    Win32Error GetInfo(const char16_t* path, FileInfo& info) override { return Ask(&IFileSystem::GetInfo, path, info); }
    Win32Error FindFirst(const char16_t* pattern, FindHandle& find, FindData& data) override {
        find = kInvalidFile;
        return Give(Ask(&IFileSystem::FindFirst, pattern, find, data));
    }
    Win32Error FindNext(FindHandle find, FindData& data) override { return Ask(&IFileSystem::FindNext, find, data); }
    void FindClose(FindHandle find) override { Take(&IFileSystem::FindClose, find); }
    Win32Error Open(const char16_t* path, std::uint32_t access, std::uint32_t share, std::uint32_t disposition,
                    FileHandle& file) override {
        file = kInvalidFile;
        return Give(Ask(&IFileSystem::Open, path, access, share, disposition, file));
    }
    Win32Error Read(FileHandle file, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        done = 0;
        return Ask(&IFileSystem::Read, file, buffer, size, done);
    }
    Win32Error Write(FileHandle file, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        done = 0;
        return Ask(&IFileSystem::Write, file, buffer, size, done);
    }
    Win32Error GetSize(FileHandle file, std::uint64_t& size) override { return Ask(&IFileSystem::GetSize, file, size); }
    Win32Error SetPosition(FileHandle file, std::uint64_t position) override {
        return Ask(&IFileSystem::SetPosition, file, position);
    }
    Win32Error SetEnd(FileHandle file) override { return Ask(&IFileSystem::SetEnd, file); }
    void Close(FileHandle file) override { Take(&IFileSystem::Close, file); }
    Win32Error Delete(const char16_t* path) override { return Ask(&IFileSystem::Delete, path); }
    Win32Error CreateDirectory(const char16_t* path) override { return Ask(&IFileSystem::CreateDirectory, path); }
    std::uint32_t GetLongPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return Tell(&IFileSystem::GetLongPath, path, buffer, size);
    }
    std::uint32_t GetShortPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return Tell(&IFileSystem::GetShortPath, path, buffer, size);
    }
    std::uint32_t GetFullPath(const char16_t* path, char16_t* buffer, std::uint32_t size) override {
        return Tell(&IFileSystem::GetFullPath, path, buffer, size);
    }
    Win32Error GetVolumeFileSystem(const char16_t* root, char16_t* name, std::uint32_t size) override {
        return Ask(&IFileSystem::GetVolumeFileSystem, root, name, size);
    }
    Win32Error ReadReparsePoint(const char16_t* path, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        done = 0;
        return Ask(&IFileSystem::ReadReparsePoint, path, buffer, size, done);
    }
    bool DisableRedirection(void*& state) override { return Tell(&IFileSystem::DisableRedirection, state); }
    void RevertRedirection(void* state) override { inner.RevertRedirection(state); }
};

class Profile final : public Area<IProfile> {
  public:
    using Area::Area;
    // A file that cannot be read gives the fallback.
    std::uint32_t GetString(const char16_t* section, const char16_t* key, const char16_t* fallback, char16_t* buffer,
                            std::uint32_t size, const char16_t* path) override {
        return inner.GetString(section, key, fallback, buffer, size, gate.Next() != 0 ? u"?:" : path);
    }
    bool WriteString(const char16_t* section, const char16_t* key, const char16_t* value,
                     const char16_t* path) override {
        return Tell(&IProfile::WriteString, section, key, value, path);
    }
};

class Installer final : public Area<IInstaller> {
  public:
    using Area::Area;
    Win32Error OpenDatabase(const char16_t* path, InstallerHandle& database) override {
        database = 0;
        return Give(Ask(&IInstaller::OpenDatabase, path, database));
    }
    Win32Error OpenView(InstallerHandle database, const char16_t* query, InstallerHandle& view) override {
        view = 0;
        return Give(Ask(&IInstaller::OpenView, database, query, view));
    }
    Win32Error ExecuteView(InstallerHandle view) override { return Ask(&IInstaller::ExecuteView, view); }
    Win32Error FetchRecord(InstallerHandle view, InstallerHandle& record) override {
        record = 0;
        return Give(Ask(&IInstaller::FetchRecord, view, record));
    }
    Win32Error GetString(InstallerHandle record, std::uint32_t column, char16_t* buffer,
                         std::uint32_t& length) override {
        return Ask(&IInstaller::GetString, record, column, buffer, length);
    }
    std::int32_t GetInteger(InstallerHandle record, std::uint32_t column) override {
        return gate.Next() != 0 ? kNullInteger : inner.GetInteger(record, column);
    }
    std::uint32_t GetDataSize(InstallerHandle record, std::uint32_t column) override {
        return Tell(&IInstaller::GetDataSize, record, column);
    }
    Win32Error ReadStream(InstallerHandle record, std::uint32_t column, void* buffer, std::uint32_t& size) override {
        return Ask(&IInstaller::ReadStream, record, column, buffer, size);
    }
    void CloseHandle(InstallerHandle handle) override { Take(&IInstaller::CloseHandle, handle); }
    Win32Error EnumComponent(std::uint32_t index, char16_t (&component)[39]) override {
        return Ask(&IInstaller::EnumComponent, index, component);
    }
    std::int32_t GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                  std::uint32_t& length) override {
        return gate.Next() != 0 ? kInstallStateUnknown : inner.GetComponentPath(product, component, buffer, length);
    }
    Win32Error GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                              std::uint32_t& length) override {
        return Ask(&IInstaller::GetProductInfo, product, property, buffer, length);
    }
    Win32Error GetShortcutTarget(const char16_t* path, char16_t (&product)[39], char16_t (&feature)[39],
                                 char16_t (&component)[39]) override {
        return Ask(&IInstaller::GetShortcutTarget, path, product, feature, component);
    }
};

class Processes final : public Area<IProcesses> {
  public:
    using Area::Area;
    Win32Error Start(const char16_t* commandLine, std::uint32_t flags, ProcessHandle& process,
                     std::uint32_t& id) override {
        process = 0;
        return Give(Ask(&IProcesses::Start, commandLine, flags, process, id));
    }
    Win32Error Wait(ProcessHandle process) override { return Ask(&IProcesses::Wait, process); }
    Win32Error GetExitCode(ProcessHandle process, std::uint32_t& code) override {
        return Ask(&IProcesses::GetExitCode, process, code);
    }
    void Close(ProcessHandle process) override { Take(&IProcesses::Close, process); }
};

class Security final : public Area<ISecurity> {
  public:
    using Area::Area;
    Win32Error GetLocalGroups(std::vector<std::u16string>& groups) override {
        return Ask(&ISecurity::GetLocalGroups, groups);
    }
    Win32Error GetGroupMembers(const char16_t* group, std::vector<std::u16string>& members) override {
        return Ask(&ISecurity::GetGroupMembers, group, members);
    }
    Win32Error GetFileAccounts(const char16_t* path, std::vector<std::u16string>& accounts) override {
        return Ask(&ISecurity::GetFileAccounts, path, accounts);
    }
    Win32Error GetKeyAccounts(KeyHandle key, std::vector<std::u16string>& accounts) override {
        return Ask(&ISecurity::GetKeyAccounts, key, accounts);
    }
};

class ClosedLibraries final : public Area<IClosedLibraries> {
  public:
    using Area::Area;
    IHearthRuntime* OpenHearthRuntime() override { return Tell(&IClosedLibraries::OpenHearthRuntime); }
    IProbeIO* GetProbeIO() override { return Tell(&IClosedLibraries::GetProbeIO); }
    bool ExpandPathMask(const char16_t* path, std::u16string& expanded, std::int32_t mode) override {
        return Tell(&IClosedLibraries::ExpandPathMask, path, expanded, mode);
    }
};

}  // namespace roundup::fault
