#include "appcenter/appadapterconfig/ruletext.h"

#include <bit>

#include "appcenter/appadapterconfig/ruleitems.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/kvobject.h"

namespace roundup {
namespace {

// Bytes go into characters as they stand.
static_assert(std::endian::native == std::endian::little);

constexpr RuleWord<std::uint32_t> kRoots[] = {
    {u"HKCU,", RuleRoot::kCurrentUser},   {u"HKCR,", RuleRoot::kClassesRoot}, {u"HKLM,", RuleRoot::kLocalMachine},
    {u"HKCC,", RuleRoot::kCurrentConfig}, {u"HKU,", RuleRoot::kUsers},
};

// Reads up to size bytes, in as many pieces as the file object makes of them; answers the bytes read.
bool ReadBytes(const char16_t* path, void* buffer, std::uint32_t size, std::uint32_t& done) {
    const auto file = RefPtr<IProbeIO>::Adopt(CurrentMachine().ClosedLibraries().GetProbeIO());
    if (!file || file->Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting) == -1) return false;
    done = 0;
    const bool read = file->Read(0, buffer, size, &done) == 0 && done <= size;
    file->Close(0);
    return read;
}

}  // namespace

bool ReadRuleText(const char16_t* path, OwnedString& text) {
    text.Reset();
    const FsRedirectGuard guard;
    const std::uint64_t size = GetFileSize64(path);
    if (size == 0 || size > kLargestRuleFile) return false;
    OwnedString whole;
    if (!whole.Allocate(static_cast<std::size_t>(size + 1) / 2)) return false;
    std::uint32_t done = 0;
    if (!ReadBytes(path, whole.Data(), static_cast<std::uint32_t>(size), done)) return false;
    whole.Truncate(done / 2);
    const std::u16string_view behindMark = whole.View().substr(whole.IsEmpty() ? 0 : 1);
    return text.Assign(behindMark.substr(0, behindMark.find(u'\0')));
}

bool RuleTextLines::Next(std::u16string_view& line) noexcept {
    while (!m_rest.empty()) {
        const std::size_t end = m_rest.find(u"\r\n");
        line = m_rest.substr(0, end);
        m_rest = end != std::u16string_view::npos ? m_rest.substr(end + 2) : std::u16string_view();
        if (line.empty() || line.front() != u';') return true;
    }
    return false;
}

std::optional<std::uint32_t> TakeRegistryRoot(std::u16string_view& text) noexcept {
    const RuleWord<std::uint32_t>* const root = TakeWord(text, kRoots);
    return root != nullptr ? std::optional(root->value) : std::nullopt;
}

}  // namespace roundup
