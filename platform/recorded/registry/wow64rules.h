// Which keys the two registry views of a 64-bit machine share and which they hold apart.
//
// Source: "Registry Keys Affected by WOW64" and "Registry Redirector" of the Windows documentation, as of Windows 10.
#pragma once

#include <cstdint>
#include <string_view>

namespace roundup {

// What a key means to the views, by its place in the tree. A key without a part in them is Ordinary, and so is all
// that lies below it.
struct KeyRole {
    enum class Kind : std::uint8_t {
        Ordinary,
        Machine,       // HKEY_LOCAL_MACHINE
        Users,         // HKEY_USERS
        User,          // HKEY_USERS\<sid>
        UserSoftware,  // HKEY_USERS\<sid>\Software
        Classes,       // Software\Classes of the machine or of a user
        ClassesWow,    // Wow6432Node below Classes
        Software,      // HKEY_LOCAL_MACHINE\SOFTWARE, and what lies between it and a shared key
        SoftwareWow,   // Wow6432Node below SOFTWARE, and what lies between it and the place of a shared key
        Shared,        // a shared key below SOFTWARE, or the place below Wow6432Node where it would be
    };

    Kind kind = Kind::Ordinary;
    std::uint8_t rule = 0;  // for Software and SoftwareWow: position in the table of shared keys
};

// The role of the child of that name of a key with that role.
KeyRole RoleOfChild(KeyRole parent, std::u16string_view name) noexcept;

// The shared keys below SOFTWARE as a tree of rules by the components of their paths. Rule 0 is SOFTWARE itself; a rule
// without a child is a shared key. 0 ends a list.
std::uint8_t FirstRuleBelow(std::uint8_t rule) noexcept;
std::uint8_t NextRule(std::uint8_t rule) noexcept;
std::u16string_view RuleName(std::uint8_t rule) noexcept;

// True for the subkeys of Classes that each view has for itself.
bool IsRedirectedClassesKey(std::u16string_view name) noexcept;

}  // namespace roundup
