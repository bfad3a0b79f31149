#include "platform/recorded/initext.h"

#include "utility/casemap.h"

namespace roundup {

namespace {

bool IsBlank(char16_t c) noexcept { return c == u' ' || (c >= u'\t' && c <= u'\r') || c == 0x1A; }

std::u16string_view WithoutQuotes(std::u16string_view value) noexcept {
    const bool quoted =
        value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.front() == value.back();
    return quoted ? value.substr(1, value.size() - 2) : value;
}

}  // namespace

std::u16string_view TrimIni(std::u16string_view text) noexcept {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool IniLines::Next(IniLine& line) noexcept {
    if (m_next >= m_text.size()) return false;
    line = IniLine();
    line.start = m_next;
    std::size_t end = std::min(m_text.find_first_of(u"\r\n", m_next), m_text.size());
    const std::u16string_view content = TrimIni(m_text.substr(m_next, end - m_next));
    if (end < m_text.size()) end += m_text.substr(end).starts_with(u"\r\n") ? 2 : 1;
    line.end = m_next = end;

    if (content.starts_with(u'[')) {
        const std::size_t close = content.rfind(u']');
        if (close == std::u16string_view::npos) return true;
        line.kind = IniLine::Kind::Section;
        line.name = content.substr(1, close - 1);
        return true;
    }
    const std::size_t equals = content.find(u'=');
    if (content.starts_with(u';') || equals == std::u16string_view::npos) return true;
    line.kind = IniLine::Kind::Key;
    line.name = TrimIni(content.substr(0, equals));
    line.value = WithoutQuotes(TrimIni(content.substr(equals + 1)));
    return true;
}

std::optional<IniSection> FindIniSection(std::u16string_view text, std::u16string_view name) noexcept {
    std::optional<IniSection> found;
    IniLine line;
    for (IniLines lines(text); lines.Next(line);) {
        if (line.kind != IniLine::Kind::Section) continue;
        if (found) {
            found->end = line.start;
            return found;
        }
        if (EqualsNoCase(line.name, name)) found = IniSection{line.start, line.end, text.size()};
    }
    return found;
}

std::optional<IniLine> FindIniKey(std::u16string_view text, const IniSection& section,
                                  std::u16string_view key) noexcept {
    IniLine line;
    for (IniLines lines(text.substr(0, section.end), section.start); lines.Next(line);) {
        if (line.kind == IniLine::Kind::Key && EqualsNoCase(line.name, key)) return line;
    }
    return std::nullopt;
}

void SetIniKey(std::u16string& text, std::u16string_view section, std::u16string_view key, std::u16string_view value) {
    const auto ended = [&] { return text.empty() || text.back() == u'\n' || text.back() == u'\r'; };
    std::optional<IniSection> found = FindIniSection(text, section);
    if (!found) {
        if (!ended()) text += u"\r\n";
        text.append(u"[").append(section).append(u"]\r\n");
        found = IniSection{text.size(), text.size(), text.size()};
    }
    if (const std::optional<IniLine> line = FindIniKey(text, *found, key)) {
        const std::u16string_view old = std::u16string_view(text).substr(line->start, line->end - line->start);
        const std::u16string ending(old.substr(std::min(old.find_first_of(u"\r\n"), old.size())));
        const std::u16string fresh = std::u16string(line->name).append(u"=").append(value).append(ending);
        text.replace(line->start, line->end - line->start, fresh);
        return;
    }
    // Behind the section's last line that says something, so that an empty line stays in front of the next section.
    std::size_t place = found->start;
    IniLine line;
    for (IniLines lines(std::u16string_view(text).substr(0, found->end), found->start); lines.Next(line);) {
        const std::u16string_view content = std::u16string_view(text).substr(line.start, line.end - line.start);
        if (!TrimIni(content).empty()) place = line.end;
    }
    std::u16string fresh = std::u16string(key).append(u"=").append(value).append(u"\r\n");
    if (place == text.size() && !ended()) fresh.insert(0, u"\r\n");
    text.insert(place, fresh);
}

void RemoveIniKey(std::u16string& text, std::u16string_view section, std::u16string_view key) {
    const std::optional<IniSection> found = FindIniSection(text, section);
    if (!found) return;
    if (const std::optional<IniLine> line = FindIniKey(text, *found, key)) {
        text.erase(line->start, line->end - line->start);
    }
}

void RemoveIniSection(std::u16string& text, std::u16string_view section) {
    if (const auto found = FindIniSection(text, section)) text.erase(found->header, found->end - found->header);
}

}  // namespace roundup
