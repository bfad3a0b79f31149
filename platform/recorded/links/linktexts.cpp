#include "platform/recorded/links/linktexts.h"

#include <algorithm>
#include <cstring>

#include "platform/recorded/installer/codepage.h"

namespace roundup {

namespace {

// The page of the machine that a link was made on is told nowhere; this one is that of most.
constexpr std::uint32_t kWesternPage = 1252;

}  // namespace

std::u16string DecodeNarrow(ByteView bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.Data()), bytes.Size());
    const bool ascii = std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (ascii) return {text.begin(), text.end()};
    const std::unique_ptr<CodePage> page = CodePage::Open(kWesternPage);
    return page ? page->Decode(text) : std::u16string();
}

std::u16string DecodeWide(ByteView bytes) {
    std::u16string text(bytes.Size() / sizeof(char16_t), u'\0');
    if (!text.empty()) std::memcpy(text.data(), bytes.Data(), text.size() * sizeof(char16_t));
    return text;
}

std::u16string NarrowTextAt(ByteView block, std::uint64_t offset) {
    if (offset >= block.Size()) return {};
    const auto rest = block.Bytes().subspan(static_cast<std::size_t>(offset));
    const auto end = std::ranges::find(rest, std::byte{0});
    return DecodeNarrow(ByteView(rest.first(static_cast<std::size_t>(end - rest.begin()))));
}

std::u16string WideTextAt(ByteView block, std::uint64_t offset) {
    std::uint64_t end = offset;
    for (std::optional<char16_t> c; (c = block.At<char16_t>(end)) && *c != u'\0';) end += sizeof(char16_t);
    const std::optional<ByteView> bytes = block.Slice(offset, end - offset);
    return bytes ? DecodeWide(*bytes) : std::u16string();
}

}  // namespace roundup
