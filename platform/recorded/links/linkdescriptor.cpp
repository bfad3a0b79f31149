#include <cstring>

#include "platform/recorded/links/linkfile.h"
#include "utility/guid.h"

namespace roundup {

namespace {

// The installer packs a code into 20 characters: each 32-bit word of it is five digits of base 85, lowest first.
constexpr std::u16string_view kDigits =
    u"!$%&'()*+,-.0123456789=?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`abcdefghijklmnopqrstuvwxyz{}~";
static_assert(kDigits.size() == 85);
constexpr std::size_t kPackedCode = 20;

std::u16string UnpackCode(std::u16string_view packed) {
    if (packed.size() != kPackedCode) return {};
    Guid code;
    for (std::size_t word = 0; word < 4; ++word) {
        std::uint64_t value = 0;
        for (std::size_t digit = 5; digit-- > 0;) {
            const std::size_t found = kDigits.find(packed[word * 5 + digit]);
            if (found == std::u16string_view::npos) return {};
            value = value * 85 + found;
        }
        if (value > 0xFFFFFFFFU) return {};
        const auto number = static_cast<std::uint32_t>(value);
        std::memcpy(code.bytes.data() + word * 4, &number, sizeof number);
    }
    return std::u16string(GuidText(code, GuidForm::Braced).View());
}

}  // namespace

// Product, feature, then ">" and the component, or "<" for a feature without one.
bool ParseDescriptor(std::u16string_view descriptor, std::u16string& product, std::u16string& feature,
                     std::u16string& component) {
    product = UnpackCode(descriptor.substr(0, kPackedCode));
    if (product.empty()) return false;
    descriptor.remove_prefix(kPackedCode);
    const std::size_t end = descriptor.find_first_of(u"<>");
    if (end == std::u16string_view::npos) return false;
    feature = descriptor.substr(0, end);
    component.clear();
    if (descriptor[end] == u'<') return true;
    component = UnpackCode(descriptor.substr(end + 1, kPackedCode));
    return !component.empty();
}

}  // namespace roundup
