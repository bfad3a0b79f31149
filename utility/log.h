// The log: one UTF-16 file in the machine's temporary folder.
#pragma once

#include "utility/formattext.h"

namespace roundup {

namespace log_detail {
inline constexpr std::size_t kMaxPath = 260;
// The path of the log of a host with that executable; folder ends in a backslash. Empty without a folder, and when the
// path does not fit: a relative or a cut one would name a file somewhere else.
void NameFile(std::u16string_view folder, std::u16string_view executable, FixedText<kMaxPath>& path) noexcept;
void WriteLine(std::u16string_view format, const formattext_detail::Argument* list, std::size_t count) noexcept;
}  // namespace log_detail

// Writes one line: time stamp, thread number, "[ITL]" and the message. Never fails towards its caller, takes no lock
// but the log's own, and may be called from every thread while any other lock is held.
template <class... Args>
void TraceLine(TextFormat<Args...> format, const Args&... args) noexcept {
    const formattext_detail::Argument list[] = {formattext_detail::Argument(args)..., formattext_detail::Argument()};
    log_detail::WriteLine(format.Text(), list, sizeof...(Args));
}

}  // namespace roundup
