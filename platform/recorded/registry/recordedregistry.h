// The registry of a machine that is not live, as programs see it: views, handles, access and errors of Win32.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>

#include "platform/recorded/registry/keyhandles.h"
#include "platform/recorded/registry/registrystore.h"
#include "platform/recorded/registry/registryviews.h"
#include "platform/registry.h"

namespace roundup {

// Answers from a store, which outlives it and may be changed through its own operations at any time. Writes stay in
// the store. Besides the errors of the interface: 87 for both view flags at once, 161 for a path that begins with a
// backslash, 1015 for a key whose source is damaged at that key, 1018 for a key that was deleted while open, 8 for
// want of memory. Without a view flag a path is walked in the view of the handle it starts from; a root has the 64-bit
// view. On a machine with one view the flags change nothing.
class RecordedRegistry final : public IRegistry {
  public:
    explicit RecordedRegistry(RegistryStore& store);

    Win32Error OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override;
    Win32Error CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) override;
    void CloseKey(KeyHandle key) override;
    Win32Error QueryInfo(KeyHandle key, KeyInfo& info) override;
    Win32Error EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) override;
    Win32Error EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length, std::uint32_t& type,
                         void* data, std::uint32_t& size) override;
    Win32Error QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                          std::uint32_t& size) override;
    Win32Error SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                        std::uint32_t size) override;
    Win32Error DeleteValue(KeyHandle key, const char16_t* name) override;

    // The path of an open key or a root as the store keeps it, its root in full: "HKEY_LOCAL_MACHINE\\SOFTWARE\\...".
    // Empty for what is no open key. Throws std::bad_alloc.
    std::u16string StoredPath(KeyHandle key);
    // The self-relative security descriptor of an open key or a root, good as long as the store; empty when the source
    // of the key has none.
    std::span<const std::byte> Security(KeyHandle key);

  private:
    // All of these need the store's lock.
    Win32Error State(KeyHandle key, OpenKeyState& state);
    Win32Error OpenState(KeyHandle key, std::uint32_t neededAccess, OpenKeyState& state);
    Win32Error ParentState(KeyHandle parent, std::u16string_view path, std::uint32_t access, OpenKeyState& state);
    Win32Error Finish(OpenKeyState& state, std::uint32_t access, KeyHandle& key);
    template <class Use>
    auto WithMerged(KeyHandle key, const OpenKeyState& state, Use use);
    RegistryNode* ChildAt(KeyHandle key, const OpenKeyState& state, std::uint32_t index);
    const RegistryValue* ValueAt(KeyHandle key, const OpenKeyState& state, std::uint32_t index);
    const RegistryValue* FindValue(const OpenKeyState& state, std::u16string_view name);

    RegistryStore& m_store;
    RegistryTree& m_tree;
    RegistryViews m_views;
    KeyHandles m_handles;
    const std::shared_ptr<MergedKey> m_classesRoot;  // for enumerations of HKEY_CLASSES_ROOT itself
};

}  // namespace roundup
