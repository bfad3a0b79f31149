// Paths of keys: their components and the roots that they begin with.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace roundup {

enum class RegistryRoot : std::uint8_t { ClassesRoot, CurrentUser, LocalMachine, Users, CurrentConfig };

// Takes the next component off a path. Backslashes that follow one another count as one, as in the kernel. Empty when
// the path has no component left.
std::u16string_view TakeComponent(std::u16string_view& path) noexcept;

// Takes the root off a path: the full name, or a short one such as HKLM when those are allowed. Nothing is taken when
// the first component is no root.
std::optional<RegistryRoot> TakeRoot(std::u16string_view& path, bool shortNames) noexcept;

}  // namespace roundup
