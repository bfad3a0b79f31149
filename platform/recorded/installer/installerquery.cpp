#include "platform/recorded/installer/installerquery.h"

#include <charconv>
#include <utility>

#include "utility/casemap.h"

namespace roundup {

namespace {

using Test = QueryCondition::Test;

constexpr bool IsBlank(char16_t c) noexcept { return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n'; }
constexpr bool IsDigit(char16_t c) noexcept { return c >= u'0' && c <= u'9'; }
constexpr bool IsNamePart(char16_t c) noexcept {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || IsDigit(c) || c == u'_' || c >= 0x80;
}

// The longer signs first, so that none is taken for the beginning of another.
struct Sign {
    std::u16string_view text;
    Test test;
};
constexpr Sign kSigns[] = {{u"<=", Test::LessOrEqual}, {u">=", Test::GreaterOrEqual},
                           {u"<>", Test::Unequal},     {u"=", Test::Equal},
                           {u"<", Test::Less},         {u">", Test::Greater}};

// Every Take leaves the text as it is unless what it looks for stands there, blanks before it left aside.
class Parser {
  public:
    explicit Parser(std::u16string_view text) noexcept : m_text(text) {}

    bool Parse(InstallerQuery& query) {
        if (!TakeWord(u"SELECT") || !TakeColumns(query)) return false;
        if (!TakeWord(u"FROM") || !TakeName(query.table)) return false;
        if (TakeWord(u"WHERE")) {
            do {
                if (!TakeCondition(query.conditions.emplace_back())) return false;
            } while (TakeWord(u"AND"));
        }
        SkipBlanks();
        return m_text.empty() && BelongTo(query.table);
    }

  private:
    void SkipBlanks() noexcept {
        while (!m_text.empty() && IsBlank(m_text.front())) m_text.remove_prefix(1);
    }
    bool TakeSign(std::u16string_view sign) noexcept {
        SkipBlanks();
        if (m_text.substr(0, sign.size()) != sign) return false;
        m_text.remove_prefix(sign.size());
        return true;
    }
    bool TakeWord(std::u16string_view word) noexcept {
        SkipBlanks();
        if (!EqualsNoCase(m_text.substr(0, word.size()), word)) return false;
        if (m_text.size() > word.size() && IsNamePart(m_text[word.size()])) return false;
        m_text.remove_prefix(word.size());
        return true;
    }
    bool TakeName(std::u16string& name) {
        SkipBlanks();
        std::size_t length = 0;
        if (TakeSign(u"`")) {
            length = m_text.find(u'`');
            if (length == std::u16string_view::npos || length == 0) return false;
            name = m_text.substr(0, length);
            m_text.remove_prefix(length + 1);
            return true;
        }
        while (length < m_text.size() && IsNamePart(m_text[length])) ++length;
        if (length == 0 || IsDigit(m_text.front())) return false;
        name = m_text.substr(0, length);
        m_text.remove_prefix(length);
        return true;
    }
    bool TakeColumn(std::u16string& column) {
        if (!TakeName(column)) return false;
        if (!TakeSign(u".")) return true;
        m_qualifiers.push_back(std::move(column));
        return TakeName(column);
    }
    bool TakeColumns(InstallerQuery& query) {
        if (TakeSign(u"*")) return true;
        do {
            if (!TakeColumn(query.columns.emplace_back())) return false;
        } while (TakeSign(u","));
        return true;
    }
    bool TakeCondition(QueryCondition& condition) {
        if (!TakeColumn(condition.column)) return false;
        if (TakeWord(u"IS")) {
            condition.test = TakeWord(u"NOT") ? Test::Unequal : Test::Equal;
            return TakeWord(u"NULL");
        }
        for (const Sign& sign : kSigns) {
            if (!TakeSign(sign.text)) continue;
            condition.test = sign.test;
            return TakeValue(condition);
        }
        return false;
    }
    bool TakeValue(QueryCondition& condition) {
        if (TakeSign(u"'")) {
            const std::size_t length = m_text.find(u'\'');
            if (length == std::u16string_view::npos) return false;
            condition.value = std::u16string(m_text.substr(0, length));
            m_text.remove_prefix(length + 1);
            return condition.test == Test::Equal || condition.test == Test::Unequal;
        }
        SkipBlanks();
        std::string digits;
        while (!m_text.empty() && (IsDigit(m_text.front()) || (digits.empty() && m_text.front() == u'-'))) {
            digits.push_back(static_cast<char>(m_text.front()));
            m_text.remove_prefix(1);
        }
        std::int32_t number = 0;
        const char* end = digits.data() + digits.size();
        const auto read = std::from_chars(digits.data(), end, number);
        condition.value = number;
        return read.ec == std::errc() && read.ptr == end;
    }
    bool BelongTo(std::u16string_view table) const noexcept {
        for (const std::u16string& qualifier : m_qualifiers) {
            if (qualifier != table) return false;
        }
        return true;
    }

    std::u16string_view m_text;
    std::vector<std::u16string> m_qualifiers;  // tables that stood before columns
};

}  // namespace

std::optional<InstallerQuery> ParseInstallerQuery(std::u16string_view text) {
    InstallerQuery query;
    return Parser(text).Parse(query) ? std::optional(std::move(query)) : std::nullopt;
}

}  // namespace roundup
