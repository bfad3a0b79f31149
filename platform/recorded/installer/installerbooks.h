// What the installer service has written down in the registry.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/filesystem.h"
#include "platform/registry.h"
#include "platform/threading.h"
#include "platform/win32.h"

namespace roundup {

// The books of the machine and of every user, in the 64-bit view, in which the service runs. The operations are those
// of IInstaller of the same names; every thread may call.
class InstallerBooks {
  public:
    InstallerBooks(IRegistry& registry, IFileSystem& files) noexcept : m_registry(registry), m_files(files) {}

    Win32Error EnumComponent(std::uint32_t index, char16_t (&component)[39]);
    std::int32_t GetComponentPath(const char16_t* product, const char16_t* component, char16_t* buffer,
                                  std::uint32_t& length);
    Win32Error GetProductInfo(const char16_t* product, const char16_t* property, char16_t* buffer,
                              std::uint32_t& length);

  private:
    using Text = std::optional<std::u16string>;

    std::vector<std::u16string> SubKeys(KeyHandle root, const std::u16string& path);
    // The first text of a value, a number in decimal digits. Nothing when the value or its key is absent.
    Text ValueText(KeyHandle root, const std::u16string& path, const char16_t* name);
    bool HasKey(KeyHandle root, const std::u16string& path);
    std::vector<std::u16string> ReadComponents();
    // The path of the key below one of the users' books that holds the value.
    Text ValueOfUsers(const std::u16string& path, const char16_t* name);

    IRegistry& m_registry;
    IFileSystem& m_files;
    Mutex m_lock;
    std::vector<std::u16string> m_components;  // guarded by m_lock; those of the enumeration under way
};

}  // namespace roundup
