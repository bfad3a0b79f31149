#include "platform/recorded/environment.h"

namespace roundup {

void Environment::Set(std::u16string_view name, std::u16string_view value) {
    m_variables.insert_or_assign(std::u16string(name), std::u16string(value));
}

void Environment::SetDefault(std::u16string_view name, std::u16string_view value) {
    m_variables.emplace(std::u16string(name), std::u16string(value));
}

const std::u16string* Environment::Find(std::u16string_view name) const {
    const auto found = m_variables.find(name);
    return found != m_variables.end() ? &found->second : nullptr;
}

// A "%" that no variable begins at stands for itself, and the next one may begin one: "100% of %TEMP%".
std::u16string Environment::Expand(std::u16string_view text) const {
    std::u16string result;
    for (;;) {
        const std::size_t start = text.find(u'%');
        result.append(text.substr(0, start));
        if (start == std::u16string_view::npos) return result;
        text.remove_prefix(start);
        const std::size_t end = text.find(u'%', 1);
        const std::u16string* value = end != std::u16string_view::npos ? Find(text.substr(1, end - 1)) : nullptr;
        if (value == nullptr) {
            result.push_back(u'%');
            text.remove_prefix(1);
            continue;
        }
        result.append(*value);
        text.remove_prefix(end + 1);
    }
}

}  // namespace roundup
