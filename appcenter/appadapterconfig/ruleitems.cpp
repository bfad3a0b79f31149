#include "appcenter/appadapterconfig/ruleitems.h"

#include <utility>

namespace roundup {

bool RuleTexts::Add(std::u16string_view text) {
    if (text.empty() || m_index.contains(text)) return false;
    OwnedString copy(text);
    if (copy.IsNull()) return false;
    m_texts.push_back(std::move(copy));
    m_index.insert(m_texts.back().View());
    return true;
}

bool RuleRegItems::Add(std::uint32_t root, std::u16string_view path, std::uint32_t bRedirection) {
    if (path.empty() || Contains(root, path)) return false;
    RuleRegItem item{root, bRedirection, OwnedString(path)};
    if (item.path.IsNull()) return false;
    m_items.push_back(std::move(item));
    m_index.insert({root, m_items.back().path.View()});
    return true;
}

}  // namespace roundup
