#include "appcenter/appadapterparse/placeholders.h"

#include <string>

#include "appcenter/appadapterconfig/pathtokens.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"

namespace roundup {
namespace {

// No path of the platform is longer, so that a placeholder of one character cannot make a text of gigabytes.
constexpr std::size_t kLongestPath = 32767;
constexpr std::int32_t kMaskMode = 1;

// The search goes on behind the word put in, which may hold the placeholder itself. Empty for what is no path.
std::u16string ReplaceAll(std::u16string_view text, std::u16string_view placeholder, std::u16string_view word) {
    if (text.size() > kLongestPath) return {};
    if (placeholder.empty() || word.empty()) return std::u16string(text);
    std::u16string result;
    for (;;) {
        const std::size_t at = text.find(placeholder);
        result += text.substr(0, at);
        if (at == std::u16string_view::npos) break;
        result += word;
        text.remove_prefix(at + placeholder.size());
        if (result.size() > kLongestPath) return {};
    }
    return result;
}

// The path that the text stands for; empty without a token.
std::u16string ExpandOne(std::u16string_view text, std::u16string_view placeholder, std::u16string_view word) {
    std::u16string_view probe = text;
    if (TakePathToken(probe) == nullptr) return {};
    const std::u16string replaced = ReplaceAll(text, placeholder, word);
    // The word may have changed the token itself.
    std::u16string_view rest = replaced;
    const char16_t* const folder = TakePathToken(rest);
    if (folder == nullptr) return {};
    std::u16string path = std::u16string(folder).append(rest);
    std::u16string real;
    if (CurrentMachine().ClosedLibraries().ExpandPathMask(path.c_str(), real, kMaskMode) && !real.empty()) return real;
    return path;
}

}  // namespace

ResultCode ExpandPlaceholderPaths(std::u16string_view placeholder, std::u16string_view word, const CStringSet& paths,
                                  CStringVec& expanded) {
    const auto failed = [&] {
        expanded.Clear();
        return Fail(SmallCode::GeneralFailure);
    };
    return AtBoundary(
        [&] {
            for (const OwnedString& text : paths) {
                const std::u16string path = ExpandOne(text, placeholder, word);
                if (PathExists(path.c_str()) && !expanded.Add(path)) return failed();
            }
            return kSuccess;
        },
        failed);
}

}  // namespace roundup
