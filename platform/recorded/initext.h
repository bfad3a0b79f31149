// The text of an ini file: its encoding, its lines, and edits that leave the rest as it is.
//
// Source: "GetPrivateProfileStringW" and "WritePrivateProfileStringW" of the Windows documentation.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace roundup {

// How the bytes of an ini file stand for text. A file without a mark is in the platform's code page on Windows, which
// nobody knows of a machine that is not running: it counts as UTF-8 when it is valid UTF-8, else as Windows-1252.
enum class IniEncoding { Utf8, Utf8Marked, Windows1252, Utf16, Utf16Marked, Utf16BigEndianMarked };

// Byte order marks are no part of the text.
std::u16string DecodeIni(std::string_view bytes, IniEncoding& encoding);
// A character that Windows-1252 does not have becomes "?".
std::string EncodeIni(std::u16string_view text, IniEncoding encoding);

// One line, without blanks around it.
struct IniLine {
    enum class Kind { Other, Section, Key };  // Other: empty, a comment, or a line without "="

    Kind kind = Kind::Other;
    std::u16string_view name;   // of the section or the key
    std::u16string_view value;  // without blanks around it and without quotes of one kind around that
    std::size_t start = 0;      // place of the line in the text
    std::size_t end = 0;        // behind its line ending
};

// Walks the lines of a text from start on.
class IniLines {
  public:
    explicit IniLines(std::u16string_view text, std::size_t start = 0) noexcept : m_text(text), m_next(start) {}
    bool Next(IniLine& line) noexcept;

  private:
    std::u16string_view m_text;
    std::size_t m_next;
};

// Where the lines below the first section of that name stand.
struct IniSection {
    std::size_t header = 0;  // the section's own line
    std::size_t start = 0;
    std::size_t end = 0;  // where the next section begins
};
std::optional<IniSection> FindIniSection(std::u16string_view text, std::u16string_view name) noexcept;
// The first key of that name in the section; names ignore case.
std::optional<IniLine> FindIniKey(std::u16string_view text, const IniSection& section,
                                  std::u16string_view key) noexcept;

// Sets the key, in the first section of that name, and makes either when it is missing.
void SetIniKey(std::u16string& text, std::u16string_view section, std::u16string_view key, std::u16string_view value);
// Nothing when there is none.
void RemoveIniKey(std::u16string& text, std::u16string_view section, std::u16string_view key);
void RemoveIniSection(std::u16string& text, std::u16string_view section);

std::u16string_view TrimIni(std::u16string_view text) noexcept;

}  // namespace roundup
