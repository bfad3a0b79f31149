#include "appcenter/appadaptermgr/adapternameindex.h"

#include "utility/casemap.h"

namespace roundup {

void AdapterNameIndex::Add(std::u16string_view name, std::size_t number) {
    if (name.empty()) return;
    const char16_t first = ToUpper(name.front());
    m_first.set(first);
    m_byFirst[first].push_back({name, number});
}

void AdapterNameIndex::Find(std::u16string_view text, std::vector<bool>& found) const {
    for (; !text.empty(); text.remove_prefix(1)) {
        const char16_t first = ToUpper(text.front());
        if (!m_first.test(first)) continue;
        for (const Name& name : m_byFirst.at(first)) {
            if (StartsWithNoCase(text, name.text)) found[name.number] = true;
        }
    }
}

}  // namespace roundup
