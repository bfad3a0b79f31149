#include "platform/recorded/machinesettings.h"

#include <algorithm>
#include <functional>
#include <limits>

#include "platform/recorded/initext.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// Reads one line "key=value" of a section. Empty when all went well, else what is wrong.
using LineReader = std::function<std::string(MachineSettings&, std::u16string_view, std::u16string_view)>;

bool ReadNumber(std::u16string_view text, unsigned base, std::uint32_t& number) noexcept {
    std::uint64_t value = 0;
    if (text.empty()) return false;
    for (const char16_t c : text) {
        const char16_t lower = ToLower(c);
        unsigned digit = 0;
        if (lower >= u'0' && lower <= u'9') {
            digit = lower - u'0';
        } else if (lower >= u'a' && lower <= u'f') {
            digit = lower - u'a' + 10U;
        } else {
            return false;
        }
        if (digit >= base) return false;
        value = value * base + digit;
        if (value > std::numeric_limits<std::uint32_t>::max()) return false;
    }
    number = static_cast<std::uint32_t>(value);
    return true;
}

std::vector<std::u16string> SplitNames(std::u16string_view text) {
    std::vector<std::u16string> names;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(u';'), text.size());
        const std::u16string_view name = TrimIni(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!name.empty()) names.emplace_back(name);
    }
    return names;
}

bool ReadVersion(std::u16string_view text, MachineSettings::Version& version) noexcept {
    const std::size_t first = text.find(u'.');
    const std::size_t second = text.find(u'.', first == std::u16string_view::npos ? first : first + 1);
    return second != std::u16string_view::npos && ReadNumber(text.substr(0, first), 10, version.major) &&
           ReadNumber(text.substr(first + 1, second - first - 1), 10, version.minor) &&
           ReadNumber(text.substr(second + 1), 10, version.build);
}

std::string ReadSystem(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    if (EqualsNoCase(key, u"architecture")) {
        if (EqualsNoCase(value, u"x64")) {
            settings.architecture = kArchitectureAmd64;
        } else if (EqualsNoCase(value, u"x86")) {
            settings.architecture = kArchitectureIntel;
        } else {
            return "the architecture is x64 or x86, not \"" + ToUtf8(value) + "\"";
        }
    } else if (EqualsNoCase(key, u"version")) {
        if (!ReadVersion(value, settings.version))
            return "a version is major.minor.build, not \"" + ToUtf8(value) + "\"";
    } else if (EqualsNoCase(key, u"computer")) {
        settings.computer = value;
    } else if (EqualsNoCase(key, u"user")) {
        // The name becomes part of paths.
        if (value.empty() || value.find_first_of(u"\\/:*?\"<>|") != std::u16string_view::npos || value == u"." ||
            value == u"..") {
            return "\"" + ToUtf8(value) + "\" cannot be the name of a user";
        }
        settings.user = value;
    } else if (EqualsNoCase(key, u"processors")) {
        if (!ReadNumber(value, 10, settings.processors) || settings.processors == 0) {
            return "the number of processors is 1 or more, not \"" + ToUtf8(value) + "\"";
        }
    } else {
        return "the section [system] has no key \"" + ToUtf8(key) + "\"";
    }
    return {};
}

std::string ReadFolder(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    std::uint32_t number = 0;
    constexpr std::uint32_t kNumbers = 64;
    if (!ReadNumber(key, 10, number) || number >= kNumbers) return "\"" + ToUtf8(key) + "\" is no folder number";
    settings.folders.emplace_back(number, value);
    return {};
}

std::string ReadAttribute(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    std::uint32_t word = 0;
    if (!ReadNumber(value.starts_with(u"0x") ? value.substr(2) : value, 16, word)) {
        return "\"" + ToUtf8(value) + "\" is no hexadecimal number of 32 bits";
    }
    settings.attributes.emplace_back(key, word);
    return {};
}

std::string ReadShort(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    const auto parts = [](std::u16string_view path) { return std::count(path.begin(), path.end(), u'\\'); };
    if (parts(key) != parts(value)) return "a short path has as many parts as the long one";
    settings.shortPaths.emplace_back(key, value);
    return {};
}

std::string ReadString(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    if (!key.starts_with(u'@')) return "an indirect string begins with @";
    settings.strings.emplace_back(key, value);
    return {};
}

std::string ReadVolume(MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
    const bool colon = key.size() == 2 && key[1] == u':';
    const char16_t letter = key.size() == 1 || colon ? ToUpper(key[0]) : u'\0';
    if (letter < u'A' || letter > u'Z') return "\"" + ToUtf8(key) + "\" is no drive letter";
    settings.volumes.emplace_back(letter, value);
    return {};
}

LineReader ReadInto(MachineSettings::Texts MachineSettings::*texts) {
    return [texts](MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
        (settings.*texts).emplace_back(key, value);
        return std::string();
    };
}

LineReader ReadInto(MachineSettings::Lists MachineSettings::*lists) {
    return [lists](MachineSettings& settings, std::u16string_view key, std::u16string_view value) {
        (settings.*lists).emplace_back(key, SplitNames(value));
        return std::string();
    };
}

const LineReader* FindReader(std::u16string_view section) {
    static const std::pair<std::u16string_view, LineReader> kReaders[] = {
        {u"system", ReadSystem},
        {u"environment", ReadInto(&MachineSettings::environment)},
        {u"folders", ReadFolder},
        {u"reparse", ReadInto(&MachineSettings::reparse)},
        {u"short", ReadShort},
        {u"attributes", ReadAttribute},
        {u"groups", ReadInto(&MachineSettings::groups)},
        {u"accounts", ReadInto(&MachineSettings::accounts)},
        {u"strings", ReadString},
        {u"volumes", ReadVolume},
    };
    for (const auto& [name, reader] : kReaders) {
        if (EqualsNoCase(name, section)) return &reader;
    }
    return nullptr;
}

}  // namespace

SourceStatus ReadMachineSettings(std::string_view text, const std::string& file, MachineSettings& settings) {
    if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
    const auto fault = [&](std::uint64_t line, std::string what) {
        return SourceError{file, SourceError::Place::Line, line, std::move(what)};
    };
    std::u16string wide;
    std::size_t place = 0;
    if (!FromUtf8Strict(text, wide, place)) {
        const auto lines = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(place), '\n');
        return fault(static_cast<std::uint64_t>(lines) + 1, "this is not UTF-8");
    }
    const LineReader* reader = nullptr;
    IniLine line;
    std::uint64_t number = 0;
    for (IniLines lines(wide); lines.Next(line);) {
        ++number;
        const std::u16string_view content =
            TrimIni(std::u16string_view(wide).substr(line.start, line.end - line.start));
        if (line.kind == IniLine::Kind::Section) {
            reader = FindReader(line.name);
            if (reader == nullptr) return fault(number, "there is no section [" + ToUtf8(line.name) + "]");
        } else if (line.kind == IniLine::Kind::Key) {
            if (reader == nullptr) return fault(number, "a key stands in front of the first section");
            if (line.name.empty()) return fault(number, "a key has no name");
            if (std::string what = (*reader)(settings, line.name, line.value); !what.empty()) {
                return fault(number, std::move(what));
            }
        } else if (!content.empty() && !content.starts_with(u';')) {
            return fault(number, "this is neither a section nor a key");
        }
    }
    return std::nullopt;
}

namespace {

void WriteTexts(std::u16string& text, const char16_t* section, const MachineSettings::Texts& texts) {
    if (texts.empty()) return;
    text.append(u"[").append(section).append(u"]\n");
    for (const auto& [key, value] : texts) text.append(key).append(u"=").append(value).append(u"\n");
}

void WriteLists(std::u16string& text, const char16_t* section, const MachineSettings::Lists& lists) {
    MachineSettings::Texts texts;
    for (const auto& [key, names] : lists) {
        std::u16string value;
        for (const std::u16string& name : names) value.append(value.empty() ? u"" : u";").append(name);
        texts.emplace_back(key, std::move(value));
    }
    WriteTexts(text, section, texts);
}

std::u16string NumberText(std::uint32_t number, std::uint32_t base) {
    std::u16string text;
    do {
        text.insert(text.begin(), u"0123456789abcdef"[number % base]);
        number /= base;
    } while (number != 0);
    return text;
}

}  // namespace

std::string WriteMachineSettings(const MachineSettings& settings) {
    const MachineSettings defaults;
    MachineSettings::Texts system;
    if (settings.architecture != defaults.architecture) system.emplace_back(u"architecture", u"x86");
    const MachineSettings::Version& version = settings.version;
    system.emplace_back(u"version", NumberText(version.major, 10) + u"." + NumberText(version.minor, 10) + u"." +
                                        NumberText(version.build, 10));
    if (settings.computer != defaults.computer) system.emplace_back(u"computer", settings.computer);
    if (settings.user != defaults.user) system.emplace_back(u"user", settings.user);
    if (settings.processors != defaults.processors) {
        system.emplace_back(u"processors", NumberText(settings.processors, 10));
    }
    MachineSettings::Texts folders;
    for (const auto& [number, path] : settings.folders) folders.emplace_back(NumberText(number, 10), path);
    MachineSettings::Texts attributes;
    for (const auto& [path, word] : settings.attributes) attributes.emplace_back(path, NumberText(word, 16));
    MachineSettings::Texts volumes;
    for (const auto& [letter, name] : settings.volumes) volumes.emplace_back(std::u16string(1, letter), name);

    std::u16string text;
    WriteTexts(text, u"system", system);
    WriteTexts(text, u"environment", settings.environment);
    WriteTexts(text, u"folders", folders);
    WriteTexts(text, u"reparse", settings.reparse);
    WriteTexts(text, u"short", settings.shortPaths);
    WriteTexts(text, u"attributes", attributes);
    WriteLists(text, u"groups", settings.groups);
    WriteLists(text, u"accounts", settings.accounts);
    WriteTexts(text, u"strings", settings.strings);
    WriteTexts(text, u"volumes", volumes);
    return ToUtf8(text);
}

}  // namespace roundup
