#include "platform/recorded/hostfs.h"
#include "utility/utf.h"

namespace roundup {

LinkTarget ParseLinkText(std::string_view text, std::string_view root) {
    LinkTarget target;
    if (text.starts_with('/')) {
        target.fromRoot = true;
        while (root.ends_with('/')) root.remove_suffix(1);
        const bool below = text.starts_with(root) && (text.size() == root.size() || text[root.size()] == '/');
        if (!below) {
            target.outside = true;
            return target;
        }
        text.remove_prefix(root.size());
    }
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('/'), text.size());
        const std::string_view part = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (part.empty() || part == ".") continue;
        std::u16string name;
        std::size_t fault = 0;
        // A name that is not UTF-8 is not shown, so nothing can lead to it.
        if (!FromUtf8Strict(part, name, fault)) {
            target.outside = true;
            return target;
        }
        target.parts.push_back(std::move(name));
    }
    return target;
}

}  // namespace roundup
