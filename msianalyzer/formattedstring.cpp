#include "msianalyzer/formattedstring.h"

#include <algorithm>

#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/tables/filetable.h"
#include "platform/machine.h"
#include "utility/log.h"

namespace roundup {

namespace {

// Replacements in one text.
constexpr std::uint32_t kMaxPasses = 1000;
// Texts come from packages, and a property may well lead to itself: a token in a token makes a text of its own to
// expand, so these, the replacements in all of them and the length that they may add are bounded too.
constexpr std::uint32_t kMaxDepth = 16;
constexpr std::uint32_t kMaxPassesInAll = 10'000;
constexpr std::size_t kMaxGrowth = 0x8000;  // characters

constexpr std::size_t kNone = std::u16string_view::npos;

// Writes the one line that tells of a text that does not end.
ResultCode Endless(std::u16string_view text, std::u16string_view token, std::u16string_view value,
                   std::source_location where = std::source_location::current()) {
    constexpr std::size_t kShown = 260;
    TraceLine(u"File:%S Line:%d, strOld=%s, strFormat=%s, strValue=%s\n", where.file_name(),
              static_cast<std::int32_t>(where.line()), text.substr(0, kShown), token.substr(0, kShown),
              value.substr(0, kShown));
    return FailQuiet(SmallCode::GeneralFailure, where);
}

// "X:\" at the start of the path.
ResultCode VolumeOf(std::u16string_view path, std::u16string& value) {
    const bool has = path.size() >= 3 && path[1] == u':' && path[2] == u'\\';
    const char16_t letter = has ? static_cast<char16_t>(path[0] | 0x20U) : u'\0';
    if (letter < u'a' || letter > u'z') return FailQuiet(SmallCode::BadData);
    value = path.substr(0, 3);
    return kSuccess;
}

}  // namespace

ResultCode ReadVariable(std::u16string_view name, std::u16string& value) {
    const std::u16string variable(name);
    ISystem& system = CurrentMachine().System();
    // Without room the answer counts the terminator, which tells an empty variable from an undefined one.
    const std::uint32_t room = system.GetEnvironment(variable.c_str(), nullptr, 0);
    if (room == 0) return FailQuiet(SmallCode::InstallerFailure);
    value.resize(room);
    const std::uint32_t length = system.GetEnvironment(variable.c_str(), value.data(), room);
    if (length >= room) return FailQuiet(SmallCode::InstallerFailure);  // changed meanwhile
    value.resize(length);
    return kSuccess;
}

ResultCode CFormattedString::Format(std::u16string& text) const {
    Bounds bounds{kMaxPassesInAll, text.size() + kMaxGrowth};
    return Expand(text, 0, bounds);
}

ResultCode CFormattedString::Format(std::u16string_view text, std::u16string& result) const {
    result = text;
    return Format(result);
}

ResultCode CFormattedString::Expand(std::u16string& text, std::uint32_t depth, Bounds& bounds) const {
    if (std::count(text.begin(), text.end(), u'[') != std::count(text.begin(), text.end(), u']')) return kSuccess;
    std::size_t open = 0;
    std::size_t close = 0;
    for (std::uint32_t pass = 0; pass < kMaxPasses; ++pass) {
        // Nothing in front of a bracket changes any more.
        open = text.find(u'[', open);
        if (open == kNone) return kSuccess;
        close = text.find(u']', open);
        if (close == kNone) return FailQuiet(SmallCode::GeneralFailure);
        if (bounds.passes-- == 0 || depth > kMaxDepth || text.size() > bounds.length) {
            bounds.passes = 0;
            return Endless(text, u"", u"");
        }
        if (text[open + 1] != u'[') {
            if (const ResultCode rc = ReplaceToken(text, open, close); Failed(rc)) return PassQuiet(rc);
            continue;
        }
        std::u16string inner = text.substr(open + 1, close - open);
        if (const ResultCode rc = Expand(inner, depth + 1, bounds); Failed(rc)) return PassQuiet(rc);
        text.replace(open + 1, close - open, inner);
    }
    open = text.find(u'[', open);
    if (open == kNone) return kSuccess;
    close = std::min(text.find(u']', open), text.size());
    const std::u16string_view token = std::u16string_view(text).substr(open + 1, close - open - 1);
    std::u16string value;
    Ignore(Evaluate(token, value), u"the value is for the log alone");
    return Endless(text, token, value);
}

ResultCode CFormattedString::ReplaceToken(std::u16string& text, std::size_t open, std::size_t close) const {
    std::u16string value;
    const std::u16string_view token = std::u16string_view(text).substr(open + 1, close - open - 1);
    if (const ResultCode rc = Evaluate(token, value); Failed(rc)) return PassQuiet(rc);
    std::size_t length = close + 1 - open;
    const bool doubled = !value.empty() && value.back() == u'\\' && close + 1 < text.size() && text[close + 1] == u'\\';
    if (doubled) ++length;
    text.replace(open, length, value);
    return kSuccess;
}

ResultCode CFormattedString::Evaluate(std::u16string_view token, std::u16string& value) const {
    const std::u16string_view rest = token.substr(token.empty() ? 0 : 1);
    switch (token.empty() ? u'\0' : token.front()) {
        case u'#':
            return FileOf(rest, value);
        case u'!':
            return FailQuiet(SmallCode::BadData);
        case u'$':
            return m_analyzer->GetComponentPath(rest, value, false);
        case u'%':
            return ReadVariable(rest, value);
        case u'\\':
            if (rest.empty()) return FailQuiet(SmallCode::BadData);
            value = rest.front();
            return kSuccess;
        case u'~':
            value.assign(1, u'\0');
            return kSuccess;
        case u';':
            return SpecialForm(rest, value);
        default:
            return PropertyOf(token, value);
    }
}

ResultCode CFormattedString::FileOf(std::u16string_view key, std::u16string& value) const {
    const CFileTableRow* row = nullptr;
    if (Failed(m_analyzer->FindFile(key, row))) return FailQuiet(SmallCode::GeneralFailure);
    if (const ResultCode rc = m_analyzer->GetComponentPath(row->component, value, false); Failed(rc))
        return PassQuiet(rc);
    value += GetLongName(row->fileName);
    return kSuccess;
}

ResultCode CFormattedString::PropertyOf(std::u16string_view name, std::u16string& value) const {
    const std::u16string* const property = m_analyzer->FindProperty(name);
    if (property == nullptr) return m_analyzer->ResolveDirectory(name, value);
    value = *property;
    return kSuccess;
}

ResultCode CFormattedString::SpecialForm(std::u16string_view form, std::u16string& value) const {
    const std::size_t at = form.find(u'@');
    const std::u16string_view name = form.substr(0, at);
    if (at == kNone) {
        if (name == u"VolumeOfInstallSource") return VolumeOf(m_analyzer->InstallSource(), value);
        return FailQuiet(SmallCode::BadData);
    }
    const std::u16string_view argument = form.substr(at + 1);
    if (name == u"FilePath") return NamedFile(argument, false, value);
    if (name == u"FilePathName") return NamedFile(argument, true, value);
    if (name != u"VolumeOfProperty") return FailQuiet(SmallCode::BadData);
    std::u16string property;
    if (const ResultCode rc = PropertyOf(argument, property); Failed(rc)) return PassQuiet(rc);
    return VolumeOf(property, value);
}

ResultCode CFormattedString::NamedFile(std::u16string_view name, bool withFile, std::u16string& value) const {
    const auto* row = static_cast<const CFileTableRow*>(m_analyzer->RowsByName(MsiTable::File).Find(name));
    if (row == nullptr) return FailQuiet(SmallCode::GeneralFailure);
    if (const ResultCode rc = m_analyzer->GetComponentPath(row->component, value, false); Failed(rc))
        return PassQuiet(rc);
    if (withFile) value += GetLongName(row->fileName);
    return kSuccess;
}

}  // namespace roundup
