#include <iconv.h>

#include <string>

#include "platform/recorded/installer/codepage.h"

namespace roundup {

namespace {

// One conversion of the C library at a time; closed with the thread.
class Converter {
  public:
    Converter() = default;
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;
    ~Converter() { Close(); }

    iconv_t For(std::uint32_t page) {
        if (page != m_page) {
            Close();
            // ISO 8859 has numbers of its own.
            const std::string name = page > 28590 && page <= 28605 ? "ISO-8859-" + std::to_string(page - 28590)
                                                                   : "CP" + std::to_string(page);
            m_handle = iconv_open("UTF-16LE", name.c_str());
            m_page = page;
        }
        return m_handle;
    }
    static bool IsOpen(iconv_t handle) noexcept { return handle != reinterpret_cast<iconv_t>(-1); }

  private:
    void Close() noexcept {
        if (IsOpen(m_handle)) iconv_close(m_handle);
        m_handle = reinterpret_cast<iconv_t>(-1);
    }

    std::uint32_t m_page = 0;
    iconv_t m_handle = reinterpret_cast<iconv_t>(-1);
};

}  // namespace

std::size_t DecodeByPlatform(std::uint32_t page, std::string_view text, std::u16string& target, bool& known) {
    thread_local Converter converter;
    iconv_t handle = converter.For(page);
    known = Converter::IsOpen(handle);
    if (!known) return 0;
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    const std::size_t start = target.size();
    target.resize(start + 2 * text.size());        // no page has bytes that are worth more
    char* input = const_cast<char*>(text.data());  // iconv only reads it
    char* output = reinterpret_cast<char*>(target.data() + start);
    std::size_t inputLeft = text.size();
    std::size_t outputLeft = 2 * text.size() * sizeof(char16_t);
    iconv(handle, &input, &inputLeft, &output, &outputLeft);
    target.resize(target.size() - outputLeft / sizeof(char16_t));
    return text.size() - inputLeft;
}

}  // namespace roundup
