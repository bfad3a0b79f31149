// Single values of a machine's registry, for what the machine itself says about its folders and its version.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/registry.h"

namespace roundup {

// The text of a value of type 1 or 2 in the 64-bit view, up to its first zero; nothing when there is none.
std::optional<std::u16string> ReadRegistryText(IRegistry& registry, KeyHandle root, const char16_t* key,
                                               const char16_t* name, std::uint32_t* type = nullptr);
std::optional<std::uint32_t> ReadRegistryNumber(IRegistry& registry, KeyHandle root, const char16_t* key,
                                                const char16_t* name);

// The bytes of a value and its type, which need be none that is known; false when there is none.
bool ReadRegistryBytes(IRegistry& registry, KeyHandle root, const char16_t* key, const char16_t* name,
                       std::uint32_t& type, std::vector<std::byte>& data);

struct RegistryTextValue {
    std::u16string name;
    std::u16string text;
    std::uint32_t type;
};
// All values of type 1 or 2 of the key, in order.
std::vector<RegistryTextValue> ReadRegistryTexts(IRegistry& registry, KeyHandle root, const char16_t* key);
// The names of the key's subkeys.
std::vector<std::u16string> ReadSubKeyNames(IRegistry& registry, KeyHandle root, const char16_t* key);

}  // namespace roundup
