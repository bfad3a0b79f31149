// Result codes and the checks that make them.
//
// A function that can fail returns a ResultCode and leaves at the check that fails:
//
//     if (path.empty()) return Fail(SmallCode::BadArgument, path.size());
//     if (auto rc = key.Open(root, path, view, false); Failed(rc)) return Pass(rc);
//     if (auto rc = key.EnumKey(name); Failed(rc)) { Skip(rc); continue; }
//
// Fail, Pass and Skip write the one log line that goes with the check; the quiet forms write nothing.
#pragma once

#include <cstdint>
#include <source_location>
#include <string_view>

#include "platform/win32.h"

namespace roundup {

// The class of a failure: bits 0 to 15 of a result code. The numbers reach the host and the log.
enum class SmallCode : std::uint16_t {
    Success = 0,
    GeneralFailure = 0x01,
    BadArgument = 0x02,
    BadData = 0x03,
    OpenFailure = 0x04,
    BufferAllocation = 0x05,
    ShortRead = 0x06,
    NoMoreItems = 0x08,
    BadHandle = 0x09,
    ObjectAllocation = 0x0A,
    ShortWrite = 0x0B,
    Cancelled = 0x0C,
    ObjectMissing = 0x0D,
    NotAvailable = 0x14,
    InstallerFailure = 0x18,
    PathNotFound = 0x19,
    Win32Failure = 0x21,
};

// 0 is success; else the small code in bits 0 to 15, the source line of the check in bits 16 to 31 and, for
// Win32Failure, the Win32 error in bits 32 to 63.
class [[nodiscard]] ResultCode {
  public:
    constexpr ResultCode() noexcept = default;
    constexpr explicit ResultCode(std::uint64_t value) noexcept : m_value(value) {}
    static constexpr ResultCode Make(SmallCode code, std::uint32_t line, Win32Error error = 0) noexcept {
        return ResultCode((std::uint64_t{error} << 32) | (std::uint64_t{line & 0xFFFFU} << 16) |
                          static_cast<std::uint16_t>(code));
    }
    constexpr std::uint64_t Value() const noexcept { return m_value; }
    friend constexpr bool operator==(ResultCode, ResultCode) noexcept = default;

  private:
    std::uint64_t m_value = 0;
};

inline constexpr ResultCode kSuccess{};

constexpr SmallCode Small(ResultCode rc) noexcept { return static_cast<SmallCode>(rc.Value() & 0xFFFFU); }
constexpr Win32Error Win32Of(ResultCode rc) noexcept { return static_cast<Win32Error>(rc.Value() >> 32); }
constexpr std::uint32_t LineOf(ResultCode rc) noexcept {
    return static_cast<std::uint32_t>(rc.Value() >> 16) & 0xFFFFU;
}
constexpr bool Failed(ResultCode rc) noexcept { return rc.Value() != 0; }
constexpr bool Succeeded(ResultCode rc) noexcept { return rc.Value() == 0; }

// Break with code: a new failure at this line. condition is the value that failed the check, as the log quotes it.
ResultCode Fail(SmallCode code, std::uint64_t condition = 1,
                std::source_location where = std::source_location::current()) noexcept;
ResultCode FailWin32(Win32Error error, std::uint64_t condition = 1,
                     std::source_location where = std::source_location::current()) noexcept;
// Break: hands on the failure of a call.
ResultCode Pass(ResultCode rc, std::source_location where = std::source_location::current()) noexcept;
// Continue: notes the failure of one pass of a loop. The second form is for a condition that is no result.
void Skip(ResultCode rc, std::source_location where = std::source_location::current()) noexcept;
void SkipIf(std::uint64_t condition, std::source_location where = std::source_location::current()) noexcept;

// The checks that write nothing.
constexpr ResultCode FailQuiet(SmallCode code, std::source_location where = std::source_location::current()) noexcept {
    return ResultCode::Make(code, where.line());
}
constexpr ResultCode FailWin32Quiet(Win32Error error,
                                    std::source_location where = std::source_location::current()) noexcept {
    return ResultCode::Make(SmallCode::Win32Failure, where.line(), error);
}
constexpr ResultCode PassQuiet(ResultCode rc) noexcept { return rc; }

// Says why a result does not matter.
constexpr void Ignore(ResultCode, std::u16string_view /*reason*/) noexcept {}

}  // namespace roundup
