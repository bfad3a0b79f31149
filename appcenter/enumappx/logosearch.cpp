#include "appcenter/enumappx/logosearch.h"

#include <vector>

#include "utility/filesearch.h"

namespace roundup {
namespace {

constexpr std::size_t kNone = std::u16string_view::npos;
constexpr std::u16string_view kUsualStem = u"Square150x150Logo";

std::size_t LastSeparator(std::u16string_view path) noexcept {
    const std::size_t backslash = path.rfind(u'\\');
    return backslash != kNone ? backslash : path.rfind(u'/');
}

std::u16string PatternOf(std::u16string_view folder) { return std::u16string(folder).append(u"\\*.*"); }

// The name of the first entry of the folder that fits the stem; empty when none does.
std::u16string FirstFitting(const std::vector<std::u16string>& names, std::u16string_view stem) {
    for (const std::u16string& name : names) {
        if (name.starts_with(stem) && name.find(u"white") == kNone) return name;
    }
    return {};
}

std::u16string SearchFolder(std::u16string_view folder, std::u16string_view stem) {
    std::vector<std::u16string> names;
    for (FileSearch search(PatternOf(folder).c_str()); search.Next();) names.emplace_back(search.Name());
    std::u16string name = FirstFitting(names, stem);
    if (name.empty()) name = FirstFitting(names, kUsualStem);
    if (name.empty()) return {};
    return std::u16string(folder).append(u"\\").append(name);
}

}  // namespace

std::u16string FindLogoFile(std::u16string_view path) {
    const std::size_t separator = LastSeparator(path);
    if (separator == kNone) return {};
    const std::u16string_view folder = path.substr(0, separator);
    const std::u16string_view name = path.substr(separator + 1);
    const std::size_t dot = name.find(u'.');
    const std::u16string_view stem = name.substr(0, dot != kNone ? dot : 0);
    std::u16string found = SearchFolder(folder, stem);
    if (!found.empty()) return found;
    for (FileSearch search(PatternOf(folder).c_str()); search.Next();) {
        if (search.Entry().attributes != kAttributeDirectory) continue;
        found = SearchFolder(std::u16string(folder).append(u"\\").append(search.Name()), stem);
        if (!found.empty()) break;
    }
    return found;
}

}  // namespace roundup
