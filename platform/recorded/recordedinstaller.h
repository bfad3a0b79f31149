// The installer service of a machine whose books are empty, or cannot be read.
#pragma once

#include "platform/installer.h"
#include "platform/recorded/lastfailure.h"

namespace roundup {

class RecordedInstaller : public IInstaller {
  public:
    Win32Error OpenDatabase(const char16_t*, InstallerHandle& database) override {
        database = 0;
        return kErrorOpenFailed;
    }
    Win32Error OpenView(InstallerHandle, const char16_t*, InstallerHandle& view) override {
        view = 0;
        return kErrorInvalidHandle;
    }
    Win32Error ExecuteView(InstallerHandle) override { return kErrorInvalidHandle; }
    Win32Error FetchRecord(InstallerHandle, InstallerHandle& record) override {
        record = 0;
        return kErrorInvalidHandle;
    }
    Win32Error GetString(InstallerHandle, std::uint32_t, char16_t*, std::uint32_t&) override {
        return kErrorInvalidHandle;
    }
    std::int32_t GetInteger(InstallerHandle, std::uint32_t) override { return kNullInteger; }
    std::uint32_t GetDataSize(InstallerHandle, std::uint32_t) override { return 0; }
    Win32Error ReadStream(InstallerHandle, std::uint32_t, void*, std::uint32_t&) override {
        return kErrorInvalidHandle;
    }
    void CloseHandle(InstallerHandle) override {}
    Win32Error EnumComponent(std::uint32_t, char16_t (&)[39]) override { return kErrorNoMoreItems; }
    std::int32_t GetComponentPath(const char16_t*, const char16_t*, char16_t*, std::uint32_t&) override {
        return kInstallStateUnknown;
    }
    Win32Error GetProductInfo(const char16_t*, const char16_t*, char16_t*, std::uint32_t&) override {
        return kErrorUnknownProduct;
    }
    Win32Error GetShortcutTarget(const char16_t*, char16_t (&)[39], char16_t (&)[39], char16_t (&)[39]) override {
        return kErrorFunctionFailed;
    }
};

}  // namespace roundup
