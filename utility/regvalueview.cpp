#include "platform/machine.h"
#include "utility/reg.h"
#include "utility/textscan.h"

namespace roundup {

ResultCode CWFYRegKey::EnumValueView(RegValueView& value) {
    if (m_valueIndex >= m_valueCount) return FailQuiet(SmallCode::NoMoreItems);
    // A read that fails leaves an empty view: what the last one showed is overwritten.
    value.m_data = {};
    value.m_nameLength = 0;
    std::uint32_t length = RegValueView::kNameSize;
    std::uint32_t size = m_bufferSize;
    const Win32Error error = CurrentMachine().Registry().EnumValue(m_key, m_valueIndex++, value.m_name, length,
                                                                   value.m_type, m_buffer, size);
    if (error != kErrorSuccess) return FailWin32Quiet(error);
    EndText(size);
    value.m_nameLength = length;
    value.m_data = Bytes(size);
    return kSuccess;
}

// The key keeps zeros behind the data, so a character of which only the lower half is there may be read whole.
std::u16string_view RegValueView::Text() const noexcept {
    const auto* text = reinterpret_cast<const char16_t*>(m_data.data());
    return UpToZero({text, (m_data.size() + 1) / sizeof(char16_t)});
}

std::u16string_view RegValueView::TextList() const noexcept {
    if (m_type != kRegMultiSz) return Text();
    return {reinterpret_cast<const char16_t*>(m_data.data()), m_data.size() / sizeof(char16_t)};
}

}  // namespace roundup
