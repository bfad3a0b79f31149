// The registry of a machine that is not live, in memory: what the readers of sources and the builder of test machines
// fill, and what RecordedRegistry answers from.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/recorded/registry/readerlock.h"
#include "platform/recorded/registry/registrytree.h"
#include "platform/registry.h"

namespace roundup {

// How a machine shows its registry to 32-bit and 64-bit programs.
enum class RegistryLayout {
    Windows64,  // two views, by the table of redirected and shared keys of Windows 10
    Windows32,  // one view
    // The prefix holds its rules itself: a key Wow6432Node redirects the key that it is in, links share. As in Wine 8,
    // HKEY_CLASSES_ROOT is the machine's Software\Classes alone, and keys stand in the order of lower-cased names.
    Wine64,
    Wine32,
};

constexpr bool HasTwoViews(RegistryLayout layout) noexcept {
    return layout == RegistryLayout::Windows64 || layout == RegistryLayout::Wine64;
}
constexpr bool IsWine(RegistryLayout layout) noexcept {
    return layout == RegistryLayout::Wine64 || layout == RegistryLayout::Wine32;
}

// The security identifier of the user, when the source does not say another.
inline constexpr std::u16string_view kDefaultUserSid = u"S-1-5-21-0-0-0-1000";

// Keys are named by the path under which Windows keeps them, beginning with a root: HKEY_LOCAL_MACHINE or HKLM,
// HKEY_USERS or HKU, HKEY_CURRENT_USER or HKCU (stands for HKEY_USERS\<sid of the user>), HKEY_CLASSES_ROOT or HKCR
// (the user's Software\Classes when the key is there, else the machine's), HKEY_CURRENT_CONFIG or HKCC. What the
// 32-bit view of a 64-bit machine shows stands under Wow6432Node; SOFTWARE\Wow6432Node\Classes is
// SOFTWARE\Classes\Wow6432Node, and HKEY_USERS\<sid>_Classes is HKEY_USERS\<sid>\Software\Classes.
//
// Every operation may be called from every thread at any time, also while the registry is read. An operation that
// names a key answers false or nothing when the root is unknown or, unless it makes the key, the key is missing.
// Throws std::bad_alloc alone.
class RegistryStore {
  public:
    explicit RegistryStore(RegistryLayout layout = RegistryLayout::Windows64,
                           std::u16string_view userSid = kDefaultUserSid);

    RegistryLayout Layout() const noexcept { return m_layout; }
    // Before the first key is made.
    void SetLayout(RegistryLayout layout) noexcept;

    std::u16string UserSid();
    // Says who the user is. What was recorded for the user so far moves along and wins over what that key of
    // HKEY_USERS has.
    void SetUser(std::u16string_view sid);

    bool CreateKey(std::u16string_view path);
    bool HasKey(std::u16string_view path);
    // Makes the key. The default value has the name "". Texts are stored with a terminator.
    bool SetValue(std::u16string_view path, std::u16string_view name, std::uint32_t type, const void* data,
                  std::size_t size);
    bool SetText(std::u16string_view path, std::u16string_view name, std::u16string_view text,
                 std::uint32_t type = kRegSz);
    bool SetDword(std::u16string_view path, std::u16string_view name, std::uint32_t number);
    // Deletes the key and all that is below it.
    bool DeleteKey(std::u16string_view path);
    bool DeleteValue(std::u16string_view path, std::u16string_view name);
    // Makes the key a symbolic link to \Registry\Machine\... or \Registry\User\...
    bool SetLink(std::u16string_view path, std::u16string_view target);
    // Makes the key and says who may open it: nobody (error 5), or those who do not ask for writing.
    bool SetAccess(std::u16string_view path, KeyAccess access);

    // Lays all keys out anew, in the order in which walks read them: once the registry is filled, before the first key
    // of it is opened.
    void Settle();

    // For readers of sources and for the views, who take the lock themselves: shared for reading, exclusive for what
    // the tree or StoredKeys change. Whoever changed something says so with Changed.
    ReaderLock& Lock() noexcept { return m_lock; }
    RegistryTree& Tree() noexcept { return m_tree; }
    RegistryNode& User() noexcept { return *m_user; }
    void Changed() noexcept { ++m_version; }
    std::uint64_t Version() const noexcept { return m_version; }

  private:
    RegistryLayout m_layout;
    ReaderLock m_lock;
    RegistryTree m_tree;          // m_lock
    RegistryNode* m_user;         // m_lock: the key of the user in HKEY_USERS
    std::uint64_t m_version = 0;  // m_lock: grows with every change
};

}  // namespace roundup
