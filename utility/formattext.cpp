// A format was checked against its arguments when the program was compiled. The run of it still looks at the count
// and the kind of each argument, so that no mistake of that check could make it read what is not there.
#include "utility/formattext.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "utility/utf.h"

namespace roundup::formattext_detail {

namespace {

bool IsHigh(char16_t c) noexcept { return (c & 0xFC00) == 0xD800; }
bool IsLow(char16_t c) noexcept { return (c & 0xFC00) == 0xDC00; }

// Writes into an array as far as it goes and counts on behind its end.
class Writer {
  public:
    Writer(char16_t* target, std::size_t room) noexcept : m_target(target), m_room(room) {}

    void Put(char16_t c) noexcept {
        if (m_total < m_room) {
            m_target[m_total] = c;
        } else if (m_total == m_room) {
            m_firstCut = c;
        }
        ++m_total;
    }
    void Put(std::u16string_view text) noexcept {
        if (text.empty()) return;
        const std::size_t kept = m_total < m_room ? std::min(text.size(), m_room - m_total) : 0;
        std::copy_n(text.data(), kept, m_target + (kept != 0 ? m_total : 0));
        if (m_total <= m_room && kept < text.size() && m_total + kept == m_room) m_firstCut = text[kept];
        m_total += text.size();
    }
    void Fill(char16_t c, std::size_t count) noexcept {
        const std::size_t kept = m_total < m_room ? std::min(count, m_room - m_total) : 0;
        std::fill_n(m_target + (kept != 0 ? m_total : 0), kept, c);
        m_total += count;
    }
    std::size_t Total() const noexcept { return m_total; }
    // What was written, less one half of a surrogate pair that the end of the array cut.
    std::size_t Kept() const noexcept {
        if (m_total <= m_room) return m_total;
        const bool split = m_room != 0 && IsHigh(m_target[m_room - 1]) && IsLow(m_firstCut);
        return split ? m_room - 1 : m_room;
    }

  private:
    char16_t* m_target;
    std::size_t m_room;
    std::size_t m_total = 0;
    char16_t m_firstCut = 0;  // the unit that was the first not to fit
};

class Run {
  public:
    Run(Writer& out, const Argument* list, std::size_t count) noexcept : m_out(out), m_list(list), m_count(count) {}

    void Write(std::u16string_view format) noexcept {
        std::size_t at = 0;
        while (at < format.size()) {
            const std::size_t percent = std::min(format.find(u'%', at), format.size());
            m_out.Put(format.substr(at, percent - at));
            if (percent == format.size()) return;
            Conversion conversion = ConversionParser(format, percent + 1).Parse();
            at = conversion.next;
            TakeStars(conversion);
            Convert(conversion);
        }
    }

  private:
    Argument Next() noexcept { return m_next < m_count ? m_list[m_next++] : Argument(); }

    // A negative width means left and its value, a negative precision none, as in C.
    void TakeStars(Conversion& c) noexcept {
        if (c.starWidth) {
            const auto width = static_cast<std::int32_t>(Next().Number());
            c.left = c.left || width < 0;
            c.width = width < 0 ? 0U - static_cast<std::uint32_t>(width) : static_cast<std::uint32_t>(width);
        }
        if (c.starPrecision) {
            const auto precision = static_cast<std::int32_t>(Next().Number());
            c.hasPrecision = precision >= 0;
            c.precision = c.hasPrecision ? static_cast<std::uint32_t>(precision) : 0;
        }
    }

    void Convert(const Conversion& c) noexcept {
        switch (c.type) {
            case u'%':
                return m_out.Put(u'%');
            case u's':
                return ConvertWide(c, Next());
            case u'S':
                return ConvertNarrow(c, Next());
            case u'c':
                return ConvertCharacter(c, Next());
            case u'p':
                return ConvertPointer(c, Next());
            default:
                return ConvertNumber(c, Next());
        }
    }

    void Padded(const Conversion& c, std::u16string_view text) noexcept {
        const std::size_t pad = c.width > text.size() ? c.width - text.size() : 0;
        if (!c.left) m_out.Fill(u' ', pad);
        m_out.Put(text);
        if (c.left) m_out.Fill(u' ', pad);
    }

    void ConvertWide(const Conversion& c, const Argument& argument) noexcept {
        std::u16string_view text = u"(null)";
        const std::size_t limit = c.hasPrecision ? c.precision : std::u16string_view::npos;
        if (argument.GetKind() == Kind::Wide && argument.Wide() != nullptr) {
            // Reads no further than the limit: with a precision the text needs no terminator.
            const std::size_t most = std::min(argument.Length(), limit);
            std::size_t length = 0;
            while (length < most && argument.Wide()[length] != u'\0') ++length;
            text = {argument.Wide(), length};
        } else if (argument.GetKind() == Kind::Wide && argument.Length() == 0) {
            text = {};
        }
        if (text.size() >= limit) text = text.substr(0, limit);
        if (c.hasPrecision && text.size() == limit && !text.empty() && IsHigh(text.back())) text.remove_suffix(1);
        Padded(c, text);
    }

    void ConvertNarrow(const Conversion& c, const Argument& argument) noexcept {
        if (argument.GetKind() != Kind::Narrow || (argument.Narrow() == nullptr && argument.Length() != 0)) {
            return Padded(c, std::u16string_view(u"(null)").substr(0, c.hasPrecision ? c.precision : 6));
        }
        std::size_t length = 0;
        while (length < argument.Length() && argument.Narrow()[length] != '\0') ++length;
        const std::string_view text(argument.Narrow(), length);
        const std::size_t limit = c.hasPrecision ? c.precision : std::u16string_view::npos;
        const std::size_t units = DecodeUpTo(text, limit, false);
        const std::size_t pad = c.width > units ? c.width - units : 0;
        if (!c.left) m_out.Fill(u' ', pad);
        DecodeUpTo(text, limit, true);
        if (c.left) m_out.Fill(u' ', pad);
    }

    // The units of a narrow text, whole characters up to limit, which are also put out when write is set.
    std::size_t DecodeUpTo(std::string_view text, std::size_t limit, bool write) noexcept {
        std::size_t units = 0;
        while (!text.empty()) {
            const char32_t character = TakeCharacter(text);
            char16_t pair[2];
            const std::size_t count = ToUnits(character, pair);
            if (count > limit - units) break;
            if (write) m_out.Put({pair, count});
            units += count;
        }
        return units;
    }

    void ConvertCharacter(const Conversion& c, const Argument& argument) noexcept {
        const auto unit = static_cast<char16_t>(argument.Number());
        Padded(c, {&unit, 1});
    }

    // As many digits as an address of the machine can have, as Windows writes it.
    void ConvertPointer(const Conversion& c, const Argument& argument) noexcept {
        char16_t digits[2 * sizeof(void*)];
        auto value = reinterpret_cast<std::uintptr_t>(argument.Address());
        for (std::size_t i = std::size(digits); i-- > 0; value >>= 4) digits[i] = u"0123456789ABCDEF"[value & 0xF];
        Padded(c, {digits, std::size(digits)});
    }

    static std::uint64_t CutToSize(std::uint64_t value, Size size) noexcept {
        switch (size) {
            case Size::Byte:
                return value & 0xFFU;
            case Size::Short:
                return value & 0xFFFFU;
            case Size::Int:
                return value & 0xFFFFFFFFU;
            case Size::Long64:
                break;
        }
        return value;
    }
    static std::uint64_t SignBit(Size size) noexcept {
        return std::uint64_t{1} << (size == Size::Byte ? 7 : size == Size::Short ? 15 : size == Size::Int ? 31 : 63);
    }

    void ConvertNumber(const Conversion& c, const Argument& argument) noexcept {
        const bool isSigned = c.type == u'd' || c.type == u'i';
        const bool isHex = c.type == u'x' || c.type == u'X';
        std::uint64_t value = CutToSize(argument.Number(), c.size);
        const bool negative = isSigned && (value & SignBit(c.size)) != 0;
        if (negative) value = CutToSize(0 - value, c.size);

        const std::u16string_view alphabet = c.type == u'x' ? u"0123456789abcdef" : u"0123456789ABCDEF";
        const std::uint64_t base = isHex ? 16 : 10;
        char16_t digits[20];
        std::size_t first = std::size(digits);
        for (std::uint64_t rest = value; rest != 0; rest /= base)
            digits[--first] = alphabet[static_cast<std::size_t>(rest % base)];
        // Zero has one digit, but for a precision of 0, which gives none.
        if (value == 0 && !(c.hasPrecision && c.precision == 0)) digits[--first] = u'0';

        char16_t prefix[2];
        std::size_t prefixLength = 0;
        if (isSigned && (negative || c.plus || c.blank)) {
            prefix[prefixLength++] = negative ? u'-' : c.plus ? u'+' : u' ';
        } else if (isHex && c.alternate && value != 0) {
            prefix[prefixLength++] = u'0';
            prefix[prefixLength++] = c.type;
        }
        PutNumber(c, {prefix, prefixLength}, {digits + first, std::size(digits) - first});
    }

    void PutNumber(const Conversion& c, std::u16string_view prefix, std::u16string_view digits) noexcept {
        std::size_t zeros = c.hasPrecision && c.precision > digits.size() ? c.precision - digits.size() : 0;
        const std::size_t length = prefix.size() + zeros + digits.size();
        std::size_t pad = c.width > length ? c.width - length : 0;
        // A precision or the left flag takes the zero flag's meaning away.
        if (c.zero && !c.left && !c.hasPrecision) zeros = std::exchange(pad, 0);
        if (!c.left) m_out.Fill(u' ', pad);
        m_out.Put(prefix);
        m_out.Fill(u'0', zeros);
        m_out.Put(digits);
        if (c.left) m_out.Fill(u' ', pad);
    }

    Writer& m_out;
    const Argument* m_list;
    std::size_t m_count;
    std::size_t m_next = 0;
};

}  // namespace

std::size_t Measure(std::u16string_view format, const Argument* list, std::size_t count) noexcept {
    Writer out(nullptr, 0);
    Run(out, list, count).Write(format);
    return out.Total();
}

std::u16string ToString(std::u16string_view format, const Argument* list, std::size_t count) {
    std::u16string text(Measure(format, list, count), u'\0');
    // The second run is cut to what the first one measured, should another thread have changed an argument meanwhile.
    Writer out(text.data(), text.size());
    Run(out, list, count).Write(format);
    text.resize(out.Kept());
    return text;
}

bool ToArray(char16_t* target, std::size_t size, std::u16string_view format, const Argument* list,
             std::size_t count) noexcept {
    if (size == 0) return false;
    Writer out(target, size - 1);
    Run(out, list, count).Write(format);
    target[out.Kept()] = u'\0';
    return out.Total() < size;
}

}  // namespace roundup::formattext_detail
