#include "platform/recorded/registry/registrystore.h"

#include <limits>
#include <new>
#include <shared_mutex>
#include <utility>
#include <vector>

#include "platform/recorded/registry/storedkeys.h"

namespace roundup {

namespace {

std::uint32_t ValueSize(std::size_t size) {
    if (size > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    return static_cast<std::uint32_t>(size);
}

// Copies all that is in one key to another, where it wins. Without recursion, since the depth is the source's choice.
void CopyContent(RegistryTree& tree, RegistryNode& from, RegistryNode& to) {
    std::vector<std::pair<RegistryNode*, RegistryNode*>> open{{&from, &to}};
    while (!open.empty()) {
        const auto [source, target] = open.back();
        open.pop_back();
        for (std::uint32_t i = 0; const RegistryValue* value = tree.ValueAt(*source, i); ++i) {
            tree.SetValue(*target, tree.Fold(value->Name()), value->type, value->data, value->size);
        }
        for (std::uint32_t i = 0; RegistryNode* child = tree.ChildAt(*source, i); ++i) {
            RegistryNode& copy = tree.MakeChild(*target, tree.Fold(child->Name()));
            copy.link = child->link;
            copy.access = child->access;
            open.emplace_back(child, &copy);
        }
    }
}

}  // namespace

RegistryStore::RegistryStore(RegistryLayout layout, std::u16string_view userSid)
    : m_layout(layout), m_user(&m_tree.MakeChild(m_tree.Users(), m_tree.Fold(userSid))) {
    SetLayout(layout);
}

void RegistryStore::SetLayout(RegistryLayout layout) noexcept {
    m_layout = layout;
    m_tree.OrderByLowerCase(IsWine(layout));
}

std::u16string RegistryStore::UserSid() {
    const std::shared_lock guard(m_lock);
    return std::u16string(m_user->Name());
}

void RegistryStore::SetUser(std::u16string_view sid) {
    const std::lock_guard guard(m_lock);
    const FoldedName name = m_tree.Fold(sid);
    RegistryNode* const existing = m_tree.FindChild(m_tree.Users(), name);
    if (existing == m_user) return;
    Changed();
    if (existing == nullptr) {
        m_tree.Rename(*m_user, name);
        return;
    }
    CopyContent(m_tree, *m_user, *existing);
    m_tree.Delete(*m_user);
    m_user = existing;
}

void RegistryStore::Settle() {
    const std::lock_guard guard(m_lock);
    Changed();
    m_tree.Settle(m_user);
}

bool RegistryStore::CreateKey(std::u16string_view path) {
    const std::lock_guard guard(m_lock);
    Changed();
    return StoredKeys(*this).Make(path) != nullptr;
}

bool RegistryStore::HasKey(std::u16string_view path) {
    const std::shared_lock guard(m_lock);
    return StoredKeys(*this).Find(path) != nullptr;
}

bool RegistryStore::SetValue(std::u16string_view path, std::u16string_view name, std::uint32_t type, const void* data,
                             std::size_t size) {
    const std::lock_guard guard(m_lock);
    Changed();
    RegistryNode* const node = StoredKeys(*this).Make(path);
    if (node != nullptr) m_tree.SetValue(*node, m_tree.Fold(name), type, data, ValueSize(size));
    return node != nullptr;
}

bool RegistryStore::SetText(std::u16string_view path, std::u16string_view name, std::u16string_view text,
                            std::uint32_t type) {
    const std::u16string terminated(text);
    return SetValue(path, name, type, terminated.c_str(), (terminated.size() + 1) * sizeof(char16_t));
}

bool RegistryStore::SetDword(std::u16string_view path, std::u16string_view name, std::uint32_t number) {
    return SetValue(path, name, kRegDword, &number, sizeof(number));
}

bool RegistryStore::DeleteKey(std::u16string_view path) {
    const std::lock_guard guard(m_lock);
    Changed();
    RegistryNode* const node = StoredKeys(*this).Find(path);
    if (node == nullptr || node->parent == nullptr || node == m_user) return false;
    m_tree.Delete(*node);
    return true;
}

bool RegistryStore::DeleteValue(std::u16string_view path, std::u16string_view name) {
    const std::lock_guard guard(m_lock);
    Changed();
    RegistryNode* const node = StoredKeys(*this).Find(path);
    return node != nullptr && m_tree.DeleteValue(*node, m_tree.Fold(name));
}

bool RegistryStore::SetLink(std::u16string_view path, std::u16string_view target) {
    if (!SetValue(path, u"SymbolicLinkValue", kRegLink, target.data(), target.size() * sizeof(char16_t))) return false;
    const std::lock_guard guard(m_lock);
    RegistryNode* const node = StoredKeys(*this).Find(path);
    if (node != nullptr) node->link = true;
    return node != nullptr;
}

bool RegistryStore::SetAccess(std::u16string_view path, KeyAccess access) {
    const std::lock_guard guard(m_lock);
    Changed();
    RegistryNode* const node = StoredKeys(*this).Make(path);
    if (node != nullptr) node->access = access;
    return node != nullptr;
}

}  // namespace roundup
