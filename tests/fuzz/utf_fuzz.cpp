// UTF-8 from outside: what the two decoders say of a text must agree, and must come back from its units.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "utility/utf.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::u16string text = roundup::FromUtf8(bytes);
    std::u16string strict;
    std::size_t fault = size;
    const bool valid = roundup::FromUtf8Strict(bytes, strict, fault);
    const std::string back = roundup::ToUtf8(text);
    // Only what was valid comes back as it was; the rest has become replacement characters, which are valid.
    if (valid != (back == bytes) || (valid && strict != text)) std::abort();
    if (!valid && (fault >= size || back.compare(0, fault, bytes.substr(0, fault)) != 0)) std::abort();
    if (roundup::FromUtf8(back) != text) std::abort();
    return 0;
}
