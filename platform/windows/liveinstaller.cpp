// Windows Installer of the live machine: each operation is the function of msi.dll that the seam names, and an
// InstallerHandle is its MSIHANDLE. Every Windows has msi.dll, so the loader binds it.

#include "platform/windows/liveareas.h"

// The order matters: windows.h comes first.
// clang-format off
#include "platform/windows/wintext.h"
#include <msi.h>
#include <msiquery.h>
// clang-format on

namespace roundup {

namespace {

static_assert(sizeof(MSIHANDLE) == sizeof(InstallerHandle));
static_assert(kInstallStateMoreData == INSTALLSTATE_MOREDATA && kInstallStateUnknown == INSTALLSTATE_UNKNOWN &&
              kInstallStateAbsent == INSTALLSTATE_ABSENT && kInstallStateLocal == INSTALLSTATE_LOCAL &&
              kInstallStateSource == INSTALLSTATE_SOURCE);
static_assert(kNullInteger == static_cast<std::int32_t>(MSI_NULL_INTEGER));

// Runs a call whose length goes in and comes out as a DWORD, which is another type than that of the seam.
template <class Call>
auto WithLength(std::uint32_t& length, Call call) {
    DWORD value = length;
    const auto answer = call(&value);
    length = value;
    return answer;
}

class LiveInstaller final : public IInstaller {
  public:
    Win32Error OpenDatabase(const char16_t* path, InstallerHandle& database) override {
        database = 0;
        // MSIDBOPEN_READONLY is a pointer of value 0, which the header's cast makes of the narrow type.
        return ::MsiOpenDatabaseW(ToWide(path), nullptr, Out(database));
    }
    Win32Error OpenView(InstallerHandle database, const char16_t* query, InstallerHandle& view) override {
        view = 0;
        return ::MsiDatabaseOpenViewW(database, ToWide(query), Out(view));
    }
    Win32Error ExecuteView(InstallerHandle view) override { return ::MsiViewExecute(view, 0); }
    Win32Error FetchRecord(InstallerHandle view, InstallerHandle& record) override {
        record = 0;
        return ::MsiViewFetch(view, Out(record));
    }
    Win32Error GetString(InstallerHandle record, std::uint32_t column, char16_t* buffer,
                         std::uint32_t& length) override {
        const std::uint32_t room = length;
        const Win32Error error = WithLength(
            length, [&](DWORD* value) { return ::MsiRecordGetStringW(record, column, ToWide(buffer), value); });
        // Wine fills the buffer to its end with a text that does not fit; Windows terminates it.
        if (error == kErrorMoreData && room != 0) buffer[room - 1] = 0;
        return error;
    }
    std::int32_t GetInteger(InstallerHandle record, std::uint32_t column) override {
        return ::MsiRecordGetInteger(record, column);
    }
    std::uint32_t GetDataSize(InstallerHandle record, std::uint32_t column) override {
        return ::MsiRecordDataSize(record, column);
    }
    Win32Error ReadStream(InstallerHandle record, std::uint32_t column, void* buffer, std::uint32_t& size) override {
        return WithLength(size, [&](DWORD* value) {
            return ::MsiRecordReadStream(record, column, static_cast<char*>(buffer), value);
        });
    }
    void CloseHandle(InstallerHandle handle) override {
        if (handle != 0) ::MsiCloseHandle(handle);
    }

    Win32Error EnumComponent(std::uint32_t index, char16_t (&component)[39]) override {
        return ::MsiEnumComponentsW(index, ToWide(component));
    }
    std::int32_t GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                  std::uint32_t& length) override {
        return WithLength(length, [&](DWORD* value) {
            return ::MsiGetComponentPathW(ToWide(product), ToWide(component), ToWide(buffer), value);
        });
    }
    Win32Error GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                              std::uint32_t& length) override {
        return WithLength(length, [&](DWORD* value) {
            return ::MsiGetProductInfoW(ToWide(product), ToWide(property), ToWide(buffer), value);
        });
    }
    Win32Error GetShortcutTarget(const char16_t* path, char16_t (&product)[39], char16_t (&feature)[39],
                                 char16_t (&component)[39]) override {
        return ::MsiGetShortcutTargetW(ToWide(path), ToWide(product), ToWide(feature), ToWide(component));
    }

  private:
    static MSIHANDLE* Out(InstallerHandle& handle) noexcept { return reinterpret_cast<MSIHANDLE*>(&handle); }
};

}  // namespace

std::unique_ptr<IInstaller> MakeLiveInstaller() { return std::make_unique<LiveInstaller>(); }

}  // namespace roundup
