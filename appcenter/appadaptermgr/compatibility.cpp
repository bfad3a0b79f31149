#include "appcenter/appadaptermgr/compatibility.h"

#include <set>
#include <string>
#include <utility>

#include "appcenter/appadapterconfig/rulefilestore.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/formattext.h"
#include "utility/ininumber.h"

namespace roundup {
namespace {

constexpr const char16_t* kSection = u"component";
constexpr const char16_t* kCountKey = u"count";
constexpr const char16_t* kMissing = u"\\";
constexpr std::int32_t kNoCount = -1;
constexpr std::uint64_t kLargestList = 0x100000;  // bytes
// Each position is a question to the platform, which reads the file anew; far more than a suite has parts.
constexpr std::int32_t kHighestPosition = 4096;

// The digits that the text begins with, kept within the range of the positions.
std::int32_t LeadingNumber(std::u16string_view text) noexcept {
    std::int32_t number = 0;
    for (const char16_t c : text) {
        if (c < u'0' || c > u'9' || number > kHighestPosition) break;
        number = number * 10 + (c - u'0');
    }
    return number;
}

class ListFile {
  public:
    explicit ListFile(std::u16string path) : m_path(std::move(path)) {
        const std::uint64_t bytes = GetFileSize64(m_path.c_str());
        // A list of names has one character more than the longest text, and no text has more characters than bytes.
        if (bytes != 0 && bytes <= kLargestList) m_buffer.resize(static_cast<std::size_t>(bytes) + 2);
    }
    bool IsUsable() const noexcept { return !m_buffer.empty(); }

    std::u16string_view Value(const char16_t* key) { return Ask(key, kMissing); }
    std::int32_t Count() const {
        return static_cast<std::int32_t>(
            ReadIniNumber(kSection, kCountKey, static_cast<std::uint32_t>(kNoCount), m_path.c_str()));
    }

    // The positions that the file has, lowest first.
    std::set<std::int32_t> Positions() {
        std::set<std::int32_t> positions;
        std::u16string_view names = Ask(nullptr, nullptr);
        while (!names.empty()) {
            const std::u16string_view name = names.substr(0, names.find(u'\0'));
            const std::int32_t number = LeadingNumber(name);
            // "01" and "1st" are other keys than "1".
            if (number >= 1 && number <= kHighestPosition && FormatText(u"%ld", number) == name) {
                positions.insert(number);
            }
            names.remove_prefix(name.size() < names.size() ? name.size() + 1 : names.size());
        }
        return positions;
    }

  private:
    std::u16string_view Ask(const char16_t* key, const char16_t* fallback) {
        const std::uint32_t length = CurrentMachine().Profile().GetString(
            kSection, key, fallback, m_buffer.data(), static_cast<std::uint32_t>(m_buffer.size()), m_path.c_str());
        return std::u16string_view(m_buffer).substr(0, length);
    }

    const std::u16string m_path;
    std::u16string m_buffer;
};

std::u16string FindList(std::u16string_view key) {
    RuleFileStore& store = ProcessWide<RuleFileStore>();
    std::u16string path = store.CompatibilityFile(key);
    const std::size_t dash = key.find(u'-');
    if (!path.empty() || dash == std::u16string_view::npos) return path;
    const std::size_t last = key.substr(0, dash).find_last_not_of(u' ');
    if (last == std::u16string_view::npos) return {};
    return store.CompatibilityFile(key.substr(0, last + 1));
}

}  // namespace

void LoadCompatibility(std::u16string_view key, CompatibilityMap& map) {
    if (key.empty()) return;
    std::u16string path = FindList(key);
    if (path.empty()) return;
    ListFile file(std::move(path));
    if (!file.IsUsable()) return;
    const std::int32_t count = file.Count();
    std::int32_t next = 1;
    for (const std::int32_t position : file.Positions()) {
        // The numbers between are missing; the list ends there when one of them is the count or lies behind it.
        if (position != next && (count == kNoCount || position - 1 >= count)) return;
        next = position + 1;
        const std::u16string_view value = file.Value(FormatText(u"%ld", position).c_str());
        if (value == kMissing) {
            if (count == kNoCount || position >= count) return;
            continue;
        }
        OwnedString name(value);
        if (!name.IsEmpty()) map.try_emplace(std::move(name), static_cast<std::uint32_t>(position));
    }
}

}  // namespace roundup
