// Loads catalogues of test machines.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appeunm/appmanager.h"
#include "tests/support/machinetest.h"

namespace roundup {

// The Uninstall keys where they stand on disk, with a backslash at the end.
inline constexpr std::u16string_view kMachineKey = u"HKLM\\SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
inline constexpr std::u16string_view kMachine32Key =
    u"HKLM\\SOFTWARE\\Wow6432Node\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
inline constexpr std::u16string_view kUserKey = u"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";

inline std::u16string Under(std::u16string_view key, std::u16string_view name) {
    return std::u16string(key).append(name);
}

// A text value as bytes, with its terminator.
std::string TextBytes(std::u16string_view text);

// One load: what the callback was told, and what it answers.
struct LoadRun {
    std::uint32_t cancelAt = 0;
    std::vector<std::uint32_t> percents;

    ResultCode Load(CAppManager& manager, bool useCache = false);
};

// The entries of one Uninstall key of the current machine.
AppList ReadSource(KeyHandle root, bool view64);

// The applications as "key/flags" texts.
std::vector<std::string> Keys(const AppList& apps);

class CatalogueTest : public MachineTest {
  protected:
    // Adds an entry with a name, and with a package, without which it would be no application.
    MachineBuilder& Entry(std::u16string_view key, std::u16string_view name) {
        return builder.Text(Under(key, name), u"DisplayName", name)
            .Text(Under(key, name), u"LocalPackage", u"C:\\Windows\\Installer\\1.msi");
    }
    // Loads the machine of the builder. The manager is gone with the next call.
    CAppManager& Load();
    void TearDown() override { m_manager.Reset(); }

    static const CApp& AppAt(CAppManager& manager, std::size_t index) {
        return static_cast<const CApp&>(*manager.Applications().at(index));
    }

  private:
    RefPtr<CAppManager> m_manager;
};

}  // namespace roundup
