#include "platform/recorded/registry/sharednames.h"

#include <algorithm>

#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::size_t kLongest = 64;
constexpr std::size_t kFirstNames = 256;

}  // namespace

const char16_t* SharedNames::Get(Arena& arena, std::u16string_view name, std::uint32_t hash) {
    if (name.size() > kLongest) return arena.CopyText(name);
    if (m_count * 2 >= m_names.size()) Grow();
    const std::size_t mask = m_names.size() - 1;
    std::size_t at = hash & mask;
    for (; m_names[at].text != nullptr; at = (at + 1) & mask) {
        const Name& shared = m_names[at];
        if (shared.hash == hash && EqualsExactly({shared.text, shared.length}, name)) return shared.text;
    }
    m_names[at] = {arena.CopyText(name), static_cast<std::uint32_t>(name.size()), hash};
    ++m_count;
    return m_names[at].text;
}

void SharedNames::Grow() {
    std::vector<Name> names(std::max(kFirstNames, m_names.size() * 2));
    const std::size_t mask = names.size() - 1;
    for (const Name& name : m_names) {
        if (name.text == nullptr) continue;
        std::size_t at = name.hash & mask;
        while (names[at].text != nullptr) at = (at + 1) & mask;
        names[at] = name;
    }
    m_names.swap(names);
}

}  // namespace roundup
