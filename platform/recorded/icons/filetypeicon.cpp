#include "platform/recorded/icons/filetypeicon.h"

#include <cstddef>
#include <optional>

#include "platform/recorded/registrytext.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::u16string_view kShell = u"C:\\Windows\\System32\\shell32.dll";
// Places of the shell's own pictures.
constexpr std::int32_t kDocument = 0;
constexpr std::int32_t kProgram = 2;
constexpr std::int32_t kFolder = 3;

// The default value of a class key; nothing when it is absent or has no text.
std::optional<std::u16string> DefaultText(IRegistry& registry, const std::u16string& key) {
    std::optional<std::u16string> text = ReadRegistryText(registry, kHkeyClassesRoot, key.c_str(), u"");
    if (text && text->empty()) text.reset();
    return text;
}

// "path,index", the path perhaps quoted. "%1" is the file itself, which has been tried already.
std::optional<IconPlace> ParsePlace(std::u16string text) {
    IconPlace place;
    const std::size_t comma = text.rfind(u',');
    if (comma != std::u16string::npos) {
        bool negative = false;
        for (std::size_t i = comma + 1; i < text.size(); ++i) {
            if (text[i] == u'-') negative = true;
            if (text[i] >= u'0' && text[i] <= u'9' && place.index < 100'000) {
                place.index = place.index * 10 + (text[i] - u'0');
            }
        }
        if (negative) place.index = -place.index;
        text.resize(comma);
    }
    std::erase(text, u'"');
    if (text.empty() || text == u"%1") return std::nullopt;
    place.path = std::move(text);
    return place;
}

}  // namespace

std::vector<IconPlace> FileTypeIcons(IRegistry& registry, std::u16string_view path, bool folder) {
    std::vector<IconPlace> places;
    const std::size_t name = path.find_last_of(u"\\/");
    const std::size_t dot = path.rfind(u'.');
    const bool hasEnding = dot != std::u16string_view::npos && (name == std::u16string_view::npos || dot > name);
    const std::u16string ending(hasEnding && !folder ? path.substr(dot) : std::u16string_view());
    const auto add = [&](const std::u16string& key) {
        const std::optional<std::u16string> text = DefaultText(registry, key + u"\\DefaultIcon");
        if (!text) return;
        if (std::optional<IconPlace> place = ParsePlace(*text)) places.push_back(std::move(*place));
    };
    if (folder) {
        add(u"Folder");
    } else if (!ending.empty()) {
        if (const auto kind = DefaultText(registry, ending)) add(*kind);
        add(ending);
    }
    const std::int32_t own = folder ? kFolder : EqualsNoCase(ending, u".exe") ? kProgram : kDocument;
    places.push_back({std::u16string(kShell), own});
    return places;
}

}  // namespace roundup
