#include "platform/recorded/installer/stringpool.h"

#include "platform/recorded/installer/streamname.h"
#include "utility/byteview.h"

namespace roundup {

namespace {

constexpr std::size_t kPoolEntry = 4;
constexpr std::uint32_t kWideReferences = 0x80000000U;  // in the first entry, beside the code page

}  // namespace

bool StringPool::Read(CompoundFile& file) {
    const CompoundFile::Entry* lengths = file.Find(EncodeStreamName(u"_StringPool", StreamKind::Table));
    const CompoundFile::Entry* texts = file.Find(EncodeStreamName(u"_StringData", StreamKind::Table));
    std::unique_ptr<std::byte[]> pool;
    std::size_t poolSize = 0;
    if (lengths == nullptr || texts == nullptr || !file.ReadWhole(*lengths, pool, poolSize)) return false;
    if (!file.ReadWhole(*texts, m_data, m_dataSize) || poolSize < kPoolEntry) return false;
    const std::span<const std::byte> bytes(pool.get(), poolSize);
    const std::uint32_t first = *ByteView(bytes).At<std::uint32_t>(0);
    m_referenceSize = (first & kWideReferences) != 0 ? 3 : 2;
    m_page = CodePage::Open(first & ~kWideReferences);
    if (m_page == nullptr) return false;
    const Fit fit = ReadLengths(bytes, LongForm::HighFirst);
    if (fit == Fit::Exact || ReadLengths(bytes, LongForm::HighLast) == Fit::Exact) return true;
    return fit == Fit::Within && ReadLengths(bytes, LongForm::HighFirst) == Fit::Within;
}

// An entry has the text's length and how often tables name it, 16 bits each. A length that needs more takes two
// entries, and the first one's length is 0. The platform writes the upper half of the length where the first one's
// count would be, and the count in the second; other writers put the count into the first, and the second is the
// length, low half first. Nothing in the entries tells which it is, but their sum does: it is the size of the data.
StringPool::Fit StringPool::ReadLengths(std::span<const std::byte> pool, LongForm form) {
    const ByteView view(pool);
    const std::size_t count = pool.size() / kPoolEntry;
    m_ends.clear();
    m_ends.reserve(count);
    m_ends.push_back(0);
    std::uint64_t end = 0;
    for (std::size_t i = 1; i < count; ++i) {
        std::uint32_t length = *view.At<std::uint16_t>(i * kPoolEntry);
        const std::uint32_t uses = *view.At<std::uint16_t>(i * kPoolEntry + 2);
        if (length == 0 && uses != 0) {
            if (++i == count) return Fit::Beyond;
            const std::uint32_t next = *view.At<std::uint32_t>(i * kPoolEntry);
            length = form == LongForm::HighFirst ? uses << 16U | (next & 0xFFFFU) : next;
        }
        end += length;
        if (end > m_dataSize) return Fit::Beyond;
        m_ends.push_back(static_cast<std::uint32_t>(end));
    }
    return end == m_dataSize ? Fit::Exact : Fit::Within;
}

bool StringPool::IsText(std::uint32_t number, std::u16string_view text) const {
    const std::string_view bytes = At(number);
    if (!m_page->IsUnitPerByte(bytes)) return m_page->Decode(bytes) == text;
    if (bytes.size() != text.size()) return false;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (m_page->UnitOf(bytes[i]) != text[i]) return false;
    }
    return true;
}

}  // namespace roundup
