#include <iconv.h>

#include <cstring>
#include <string>

#include "platform/codepagetext.h"

namespace roundup {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

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

bool DecodeByPlatform(std::uint32_t page, std::string_view text, std::u16string& target) {
    thread_local Converter converter;
    iconv_t handle = converter.For(page);
    if (!Converter::IsOpen(handle)) return false;
    iconv(handle, nullptr, nullptr, nullptr, nullptr);
    const std::size_t room = 2 * text.size() + 2;  // no page has bytes that are worth more
    target.resize(room);
    char* input = const_cast<char*>(text.data());  // iconv only reads it
    char* output = reinterpret_cast<char*>(target.data());
    std::size_t inputLeft = text.size();
    std::size_t outputLeft = room * sizeof(char16_t);
    while (inputLeft > 0 && outputLeft > sizeof(char16_t)) {
        iconv(handle, &input, &inputLeft, &output, &outputLeft);
        if (inputLeft == 0) break;
        std::memcpy(output, &kReplacement, sizeof kReplacement);
        output += sizeof kReplacement;
        outputLeft -= sizeof kReplacement;
        ++input;
        --inputLeft;
    }
    iconv(handle, nullptr, nullptr, &output, &outputLeft);  // some pages hold a letter back until its accent is known
    target.resize(room - outputLeft / sizeof(char16_t));
    return true;
}

}  // namespace roundup
