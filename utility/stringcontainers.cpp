#include "utility/stringcontainers.h"

#include <utility>

namespace roundup {

bool CStringVec::Add(TextOrNull text) {
    if (text.IsNull()) return false;
    OwnedString copy(text.View());
    if (copy.IsNull()) return false;
    push_back(std::move(copy));
    return true;
}

void CStringSet::Remove(TextOrNull text) {
    if (text.IsNull()) return;
    if (const auto at = find(text.View()); at != end()) erase(at);
}

bool CStringSet::Add(TextOrNull text) {
    if (text.IsNull()) return false;
    const auto at = lower_bound(text.View());
    if (at != end() && !key_comp()(text.View(), *at)) return true;
    OwnedString copy(text.View());
    if (copy.IsNull()) return false;
    emplace_hint(at, std::move(copy));
    return true;
}

bool CStringSet::Contains(TextOrNull text) const { return !text.IsNull() && contains(text.View()); }

bool CStringMap::Add(TextOrNull key, TextOrNull value) {
    if (key.IsEmpty() || value.IsEmpty()) return false;
    const auto at = lower_bound(key.View());
    if (at != end() && !key_comp()(key.View(), at->first)) return EqualsNoCase(at->second, value.View());
    OwnedString ownKey(key.View());
    OwnedString ownValue(value.View());
    if (ownKey.IsNull() || ownValue.IsNull()) return false;
    emplace_hint(at, std::move(ownKey), std::move(ownValue));
    return true;
}

const OwnedString* CStringMap::Find(TextOrNull key) const {
    if (key.IsEmpty()) return nullptr;
    const auto at = find(key.View());
    return at != end() ? &at->second : nullptr;
}

}  // namespace roundup
