#include "utility/result.h"

#include <string_view>

#include "platform/machine.h"
#include "utility/log.h"

namespace roundup {

namespace {

// A failure may have to be told before a machine stands; its log line goes nowhere then.
std::uint32_t LastFailure() noexcept { return HasCurrentMachine() ? CurrentMachine().System().GetLastFailure() : 0; }

std::string_view BaseName(const std::source_location& where) noexcept {
    const std::string_view path = where.file_name();
    return path.substr(path.find_last_of("/\\") + 1);
}

// The log's numbers have 32 bits.
std::uint32_t LowHalf(std::uint64_t value) noexcept { return static_cast<std::uint32_t>(value); }

ResultCode Break(ResultCode made, std::uint64_t condition, const std::source_location& where) noexcept {
    TraceLine(u"B(c=0x%X, e=%d, l=%d) var=0x%X, %S", LowHalf(condition), LastFailure(), where.line(),
              LowHalf(made.Value()), BaseName(where));
    return made;
}

}  // namespace

ResultCode Fail(SmallCode code, std::uint64_t condition, std::source_location where) noexcept {
    return Break(ResultCode::Make(code, where.line()), condition, where);
}

ResultCode FailWin32(Win32Error error, std::uint64_t condition, std::source_location where) noexcept {
    return Break(ResultCode::Make(SmallCode::Win32Failure, where.line(), error), condition, where);
}

ResultCode Pass(ResultCode rc, std::source_location where) noexcept {
    TraceLine(u"B(c=0x%X, e=%d, l=%d) %S", LowHalf(rc.Value()), LastFailure(), where.line(), BaseName(where));
    return rc;
}

void Skip(ResultCode rc, std::source_location where) noexcept { SkipIf(rc.Value(), where); }

void SkipIf(std::uint64_t condition, std::source_location where) noexcept {
    TraceLine(u"C(c=0x%X, e=%d, l=%d) %S", LowHalf(condition), LastFailure(), where.line(), BaseName(where));
}

}  // namespace roundup
