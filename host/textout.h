// Texts on their way out: UTF-8 that is safe to show, widths, sizes and dates for people.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace roundup::host {

// Whole text as UTF-8; an unpaired surrogate becomes U+FFFD.
std::string Utf8(std::u16string_view text);

// As Utf8, for terminals and lines of text: control characters, line separators and the marks that turn the writing
// direction around become U+FFFD, since the names come from elsewhere and must not steer the terminal.
std::string Printable(std::u16string_view text);

// Columns that a UTF-8 text takes on a terminal.
std::size_t Columns(std::string_view text);

// The text in exactly width columns, cut with an ellipsis or filled with blanks. right aligns to the right.
std::string Fit(std::string_view text, std::size_t width, bool right = false);
// The text in at most width columns.
std::string Cut(std::string_view text, std::size_t width);

// Bytes in a readable unit, three digits at least: "0 B", "999 B", "1.00 KB" (1,024), "12.3 MB".
std::string ReadableSize(std::uint64_t bytes);

// "20240301" as 2024-03-01; any other text as it is.
std::string ReadableDate(std::u16string_view date);

// Writes to standard output. False when it could not be written.
bool WriteOut(std::string_view text);

}  // namespace roundup::host
