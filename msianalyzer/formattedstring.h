// Formatted text of an installer database: "[INSTALLDIR]bin\[ProductName].exe" with its tokens replaced.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "utility/result.h"

namespace roundup {

class CMSIAnalyzer;

// The value of an environment variable. Small code 0x18 for one that is undefined.
ResultCode ReadVariable(std::u16string_view name, std::u16string& value);

// Used by one thread; the analyzer outlives it. Tokens: learn.microsoft.com, Windows Installer, "Formatted", and the
// special forms that begin with ";".
class CFormattedString {
  public:
    explicit CFormattedString(const CMSIAnalyzer* analyzer) noexcept : m_analyzer(analyzer) {}

    // Replaces the tokens of the text in place. A text whose brackets do not match stays as it is, which is no
    // failure. Small code 1 for a row, key or name that is nowhere and for a text that does not end (too many
    // replacements, or grown too long), 3 for a form that is not supported, 0x18 for an undefined environment variable;
    // the text is then as far as it came.
    ResultCode Format(std::u16string& text) const;
    // The same with the outcome in another text, which starts as a copy.
    ResultCode Format(std::u16string_view text, std::u16string& result) const;

  private:
    // What is left to a text and all texts within it.
    struct Bounds {
        std::uint32_t passes;
        std::size_t length;  // characters
    };

    ResultCode Expand(std::u16string& text, std::uint32_t depth, Bounds& bounds) const;
    ResultCode ReplaceToken(std::u16string& text, std::size_t open, std::size_t close) const;
    ResultCode Evaluate(std::u16string_view token, std::u16string& value) const;
    ResultCode FileOf(std::u16string_view key, std::u16string& value) const;
    ResultCode PropertyOf(std::u16string_view name, std::u16string& value) const;
    ResultCode SpecialForm(std::u16string_view form, std::u16string& value) const;
    ResultCode NamedFile(std::u16string_view name, bool withFile, std::u16string& value) const;

    const CMSIAnalyzer* const m_analyzer;
};

}  // namespace roundup
