#include "appcenter/appfile/removerepeatreg.h"

#include "utility/formattext.h"
#include "utility/pathchecksum.h"

namespace roundup {

namespace {

using ItemText = FixedText<520>;

bool IsEmpty(const char16_t* text) noexcept { return text == nullptr || *text == u'\0'; }

}  // namespace

std::int32_t CRemoveRepeatReg::Seen::Enter(std::u16string_view text) {
    // The terminator behind the text counts as well.
    const std::uint64_t checksum = PathChecksum(text.data(), (text.size() + 1) * sizeof(char16_t));
    const LockGuard guard(lock);
    return checksums.insert(checksum).second ? 0 : 1;
}

std::int32_t CRemoveRepeatReg::IsKeySeen(const std::uint32_t* root, const char16_t* key, bool view) {
    if (root == nullptr || IsEmpty(key)) return 0;
    ItemText text;
    FormatText(text, u"%x%s%d", *root, key, view ? 1 : 0);
    return m_keys.Enter(text);
}

std::int32_t CRemoveRepeatReg::IsValueSeen(const std::uint32_t* root, const char16_t* key, const char16_t* name,
                                           bool view) {
    if (root == nullptr || IsEmpty(key) || IsEmpty(name)) return 0;
    ItemText text;
    FormatText(text, u"%x%s%s%d", *root, key, name, view ? 1 : 0);
    return m_values.Enter(text);
}

std::int32_t CRemoveRepeatReg::IsItemSeen(std::uint32_t root, const char16_t* path, bool view, bool redirected) {
    if (root == 0 || IsEmpty(path)) return 0;
    ItemText text;
    FormatText(text, u"%x%s%d%d", root, path, view ? 1 : 0, redirected ? 1 : 0);
    return m_items.Enter(text);
}

std::int32_t CRemoveRepeatReg::IsDirectorySeen(const char16_t* path) {
    if (IsEmpty(path)) return 0;
    ItemText text;
    FormatText(text, u"%s", path);
    return m_directories.Enter(text);
}

}  // namespace roundup
