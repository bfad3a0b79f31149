#include "platform/recorded/registry/recordedregistry.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <optional>
#include <shared_mutex>
#include <vector>

namespace roundup {

namespace {

constexpr Win32Error kErrorBadPathName = 161;       // ERROR_BAD_PATHNAME
constexpr Win32Error kErrorRegistryCorrupt = 1015;  // ERROR_REGISTRY_CORRUPT
constexpr Win32Error kErrorKeyDeleted = 1018;       // ERROR_KEY_DELETED

// Access rights of keys (winnt.h), generic ones with the rights of keys that they stand for.
constexpr std::uint32_t kKeyQueryValue = 0x0001;
constexpr std::uint32_t kKeyEnumerateSubKeys = 0x0008;
constexpr std::uint32_t kWritingRights = 0x0002 | 0x0004 | 0x0020 | 0x10000 | 0x40000 | 0x80000;
constexpr std::uint32_t kMaximumAllowed = 0x02000000;
constexpr std::uint32_t kGenericAll = 0x10000000;
constexpr std::uint32_t kGenericExecute = 0x20000000;
constexpr std::uint32_t kGenericWrite = 0x40000000;
constexpr std::uint32_t kGenericRead = 0x80000000;
constexpr std::uint32_t kKeyWrite = 0x20006;

constexpr std::uint32_t kLongestValueName = 16383;

std::u16string_view TextOrEmpty(const char16_t* text) noexcept {
    return text != nullptr ? std::u16string_view(text) : std::u16string_view();
}

std::optional<RegistryRoot> RootOf(KeyHandle key) noexcept {
    switch (key) {
        case kHkeyClassesRoot:
            return RegistryRoot::ClassesRoot;
        case kHkeyCurrentUser:
            return RegistryRoot::CurrentUser;
        case kHkeyLocalMachine:
            return RegistryRoot::LocalMachine;
        case kHkeyUsers:
            return RegistryRoot::Users;
        case kHkeyCurrentConfig:
            return RegistryRoot::CurrentConfig;
        default:
            return std::nullopt;
    }
}

// The rights that an access mask asks for; nothing when the key does not grant them.
std::optional<std::uint32_t> GrantedRights(std::uint32_t mask, KeyAccess access) noexcept {
    if (access == KeyAccess::Denied) return std::nullopt;
    std::uint32_t rights = mask & 0xFFFFF & ~(kKeyWow64Key32 | kKeyWow64Key64);
    if ((mask & (kGenericRead | kGenericExecute)) != 0) rights |= kKeyRead;
    if ((mask & kGenericWrite) != 0) rights |= kKeyWrite;
    if ((mask & kGenericAll) != 0) rights |= kKeyAllAccess;
    if (access == KeyAccess::ReadOnly && (rights & kWritingRights) != 0) return std::nullopt;
    if ((mask & kMaximumAllowed) != 0) rights |= access == KeyAccess::Full ? kKeyAllAccess : kKeyRead;
    return rights;
}

// Hands a name out as the enumerations do: length in is room with the terminator, out the characters without it.
bool CopyName(std::u16string_view name, char16_t* out, std::uint32_t& length) noexcept {
    if (out == nullptr || name.size() >= length) return false;
    if (!name.empty()) std::memcpy(out, name.data(), name.size() * sizeof(char16_t));
    out[name.size()] = u'\0';
    length = static_cast<std::uint32_t>(name.size());
    return true;
}

Win32Error CopyData(const RegistryValue& value, std::uint32_t& type, void* data, std::uint32_t& size) noexcept {
    const std::uint32_t room = size;
    type = value.type;
    size = value.size;
    if (data == nullptr) return kErrorSuccess;
    if (value.size > room) return kErrorMoreData;
    if (value.size != 0) std::memcpy(data, value.data, value.size);
    return kErrorSuccess;
}

// The boundary at which want of memory becomes an error number.
template <class Operation>
Win32Error Guarded(Operation operation) noexcept {
    try {
        return operation();
    } catch (const std::bad_alloc&) {
        return kErrorNotEnoughMemory;
    }
}

}  // namespace

RecordedRegistry::RecordedRegistry(RegistryStore& store)
    : m_store(store), m_tree(store.Tree()), m_views(store), m_classesRoot(std::make_shared<MergedKey>()) {}

// Calls use with what two nodes make up, as it is now.
template <class Use>
auto RecordedRegistry::WithMerged(KeyHandle key, const OpenKeyState& state, Use use) {
    // Without a kept one the key is a root that is empty, or is being closed: made for this call.
    MergedKey own;
    std::shared_ptr<MergedKey> kept;
    if (!state.key.IsMissing()) kept = key == kHkeyClassesRoot ? m_classesRoot : m_handles.Merged(key);
    MergedKey& merged = kept != nullptr ? *kept : own;
    const std::lock_guard guard(merged.mutex);
    if (!merged.isMade || merged.version != m_store.Version()) {
        merged.content = state.key.IsMissing() ? KeyContent() : m_views.Content(state.key);
        merged.info = merged.content.Info();
        merged.version = m_store.Version();
        merged.isMade = true;
    }
    return use(merged);
}

Win32Error RecordedRegistry::OpenKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) {
    key = 0;
    return Guarded([&]() -> Win32Error {
        const std::shared_lock guard(m_store.Lock());
        OpenKeyState state;
        const std::u16string_view path = TextOrEmpty(subKey);
        if (const Win32Error error = ParentState(parent, path, access, state); error != kErrorSuccess) return error;
        state.key = m_views.Open(state.key, path, state.view);
        return Finish(state, access, key);
    });
}

Win32Error RecordedRegistry::CreateKey(KeyHandle parent, const char16_t* subKey, std::uint32_t access, KeyHandle& key) {
    // What is there already needs no lock that keeps all readers out.
    const Win32Error opened = OpenKey(parent, subKey, access, key);
    if (opened != kErrorFileNotFound) return opened;
    return Guarded([&]() -> Win32Error {
        const std::lock_guard guard(m_store.Lock());
        OpenKeyState state;
        const std::u16string_view path = TextOrEmpty(subKey);
        if (const Win32Error error = ParentState(parent, path, access, state); error != kErrorSuccess) return error;
        m_store.Changed();
        const auto root = RootOf(parent);
        if (state.key.IsMissing() && root) state.key = m_views.MakeRoot(*root, state.view);
        bool denied = false;
        state.key = m_views.Make(state.key, path, state.view, denied);
        return denied ? kErrorAccessDenied : Finish(state, access, key);
    });
}

void RecordedRegistry::CloseKey(KeyHandle key) { m_handles.Remove(key); }

Win32Error RecordedRegistry::QueryInfo(KeyHandle key, KeyInfo& info) {
    return Guarded([&]() -> Win32Error {
        const std::shared_lock guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeyQueryValue, state); error != kErrorSuccess) return error;
        RegistryNode* const single = state.key.Single();
        info = single != nullptr ? m_tree.Info(*single)
                                 : WithMerged(key, state, [](const MergedKey& merged) { return merged.info; });
        return kErrorSuccess;
    });
}

Win32Error RecordedRegistry::EnumKey(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length) {
    return Guarded([&]() -> Win32Error {
        const std::shared_lock guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeyEnumerateSubKeys, state); error != kErrorSuccess) return error;
        const RegistryNode* const child = ChildAt(key, state, index);
        if (child == nullptr) return kErrorNoMoreItems;
        return CopyName(child->Name(), name, length) ? kErrorSuccess : kErrorMoreData;
    });
}

Win32Error RecordedRegistry::EnumValue(KeyHandle key, std::uint32_t index, char16_t* name, std::uint32_t& length,
                                       std::uint32_t& type, void* data, std::uint32_t& size) {
    return Guarded([&]() -> Win32Error {
        const std::shared_lock guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeyQueryValue, state); error != kErrorSuccess) return error;
        const RegistryValue* const value = ValueAt(key, state, index);
        if (value == nullptr) return kErrorNoMoreItems;
        if (!CopyName(value->Name(), name, length)) return kErrorMoreData;
        return CopyData(*value, type, data, size);
    });
}

Win32Error RecordedRegistry::QueryValue(KeyHandle key, const char16_t* name, std::uint32_t& type, void* data,
                                        std::uint32_t& size) {
    return Guarded([&]() -> Win32Error {
        const std::shared_lock guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeyQueryValue, state); error != kErrorSuccess) return error;
        const RegistryValue* const value = FindValue(state, TextOrEmpty(name));
        return value != nullptr ? CopyData(*value, type, data, size) : kErrorFileNotFound;
    });
}

Win32Error RecordedRegistry::SetValue(KeyHandle key, const char16_t* name, std::uint32_t type, const void* data,
                                      std::uint32_t size) {
    return Guarded([&]() -> Win32Error {
        const std::u16string_view text = TextOrEmpty(name);
        if ((data == nullptr && size != 0) || text.size() > kLongestValueName) return kErrorInvalidParameter;
        const std::lock_guard guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeySetValue, state); error != kErrorSuccess) return error;
        if (state.key.IsMissing()) state.key = m_views.MakeRoot(*RootOf(key), state.view);
        m_store.Changed();
        m_tree.SetValue(m_views.WritableNode(state.key), m_tree.Fold(text), type, data, size);
        return kErrorSuccess;
    });
}

Win32Error RecordedRegistry::DeleteValue(KeyHandle key, const char16_t* name) {
    return Guarded([&]() -> Win32Error {
        const std::lock_guard guard(m_store.Lock());
        OpenKeyState state;
        if (const Win32Error error = OpenState(key, kKeySetValue, state); error != kErrorSuccess) return error;
        RegistryNode* const node = state.key.Primary();
        if (node == nullptr || !m_tree.DeleteValue(*node, m_tree.Fold(TextOrEmpty(name)))) return kErrorFileNotFound;
        m_store.Changed();
        return kErrorSuccess;
    });
}

// What the handle stands for. The key is Missing for a root that no key of the source has: such a root is empty.
Win32Error RecordedRegistry::State(KeyHandle key, OpenKeyState& state) {
    if (const auto root = RootOf(key)) {
        state.key = m_views.Root(*root, RegistryView::Native);
        state.view = RegistryView::Native;
        const RegistryNode* const node = state.key.Primary();
        state.access = node == nullptr || node->access == KeyAccess::Full ? kKeyAllAccess : kKeyRead;
        return kErrorSuccess;
    }
    if (!m_handles.Get(key, state)) return kErrorInvalidHandle;
    // A key of two nodes lives as long as one of them does.
    KeyRef& ref = state.key;
    const bool nodeGone = ref.node == nullptr || ref.node->deleted;
    const bool otherGone = ref.other == nullptr || ref.other->deleted;
    if (nodeGone && otherGone) return kErrorKeyDeleted;
    if (nodeGone) ref.node = nullptr;
    if (otherGone) ref.other = nullptr;
    return kErrorSuccess;
}

Win32Error RecordedRegistry::OpenState(KeyHandle key, std::uint32_t neededAccess, OpenKeyState& state) {
    if (const Win32Error error = State(key, state); error != kErrorSuccess) return error;
    return (state.access & neededAccess) == neededAccess ? kErrorSuccess : kErrorAccessDenied;
}

Win32Error RecordedRegistry::ParentState(KeyHandle parent, std::u16string_view path, std::uint32_t access,
                                         OpenKeyState& state) {
    const std::uint32_t flags = access & (kKeyWow64Key32 | kKeyWow64Key64);
    if (flags == (kKeyWow64Key32 | kKeyWow64Key64)) return kErrorInvalidParameter;
    if (const Win32Error error = State(parent, state); error != kErrorSuccess) return error;
    if (path.starts_with(u'\\')) return kErrorBadPathName;
    if (!HasTwoViews(m_store.Layout())) {
        state.view = RegistryView::Native;
    } else if (flags != 0) {
        state.view = flags == kKeyWow64Key32 ? RegistryView::Wow32 : RegistryView::Native;
    }
    return kErrorSuccess;
}

// Grants the access and hands out the handle.
Win32Error RecordedRegistry::Finish(OpenKeyState& state, std::uint32_t access, KeyHandle& key) {
    if (state.key.IsMissing()) return kErrorFileNotFound;
    RegistryNode* const primary = state.key.Primary();
    const auto rights = GrantedRights(access, primary != nullptr ? primary->access : KeyAccess::Full);
    if (!rights) return kErrorAccessDenied;
    if (primary != nullptr && m_tree.IsDamaged(*primary)) return kErrorRegistryCorrupt;
    // The machine's half of a class that this user may not read shows nothing.
    KeyRef& ref = state.key;
    if (ref.kind == KeyRef::Kind::Classes && ref.other != nullptr && ref.other != primary &&
        ref.other->access == KeyAccess::Denied) {
        ref.other = nullptr;
    }
    state.access = *rights;
    key = m_handles.Add(state);
    return key != 0 ? kErrorSuccess : kErrorNotEnoughMemory;
}

std::u16string RecordedRegistry::StoredPath(KeyHandle key) {
    const std::shared_lock guard(m_store.Lock());
    OpenKeyState state;
    if (State(key, state) != kErrorSuccess) return {};
    std::vector<std::u16string_view> names;
    for (const RegistryNode* node = state.key.Primary(); node != nullptr; node = node->parent) {
        if (!node->Name().empty()) names.push_back(node->Name());
    }
    std::u16string path;
    std::ranges::reverse(names);
    for (const std::u16string_view name : names) path.append(path.empty() ? u"" : u"\\").append(name);
    return path;
}

std::span<const std::byte> RecordedRegistry::Security(KeyHandle key) {
    const std::shared_lock guard(m_store.Lock());
    OpenKeyState state;
    if (State(key, state) != kErrorSuccess || state.key.Primary() == nullptr) return {};
    return m_tree.Security(*state.key.Primary());
}

RegistryNode* RecordedRegistry::ChildAt(KeyHandle key, const OpenKeyState& state, std::uint32_t index) {
    if (RegistryNode* const single = state.key.Single()) return m_tree.ChildAt(*single, index);
    return WithMerged(key, state, [index](const MergedKey& merged) {
        return index < merged.content.children.size() ? merged.content.children[index] : nullptr;
    });
}

const RegistryValue* RecordedRegistry::ValueAt(KeyHandle key, const OpenKeyState& state, std::uint32_t index) {
    if (RegistryNode* const single = state.key.Single()) return m_tree.ValueAt(*single, index);
    return WithMerged(key, state, [index](const MergedKey& merged) {
        return index < merged.content.values.size() ? merged.content.values[index] : nullptr;
    });
}

const RegistryValue* RecordedRegistry::FindValue(const OpenKeyState& state, std::u16string_view name) {
    const FoldedName folded = m_tree.Fold(name);
    const KeyRef& key = state.key;
    const RegistryValue* value = key.node != nullptr ? m_tree.FindValue(*key.node, folded) : nullptr;
    const bool hasSecond = key.kind == KeyRef::Kind::Classes && key.other != nullptr;
    return value == nullptr && hasSecond ? m_tree.FindValue(*key.other, folded) : value;
}

}  // namespace roundup
