// Versions of store packages as one number: major, minor, build and revision, 16 bits each, from the top down.
#pragma once

#include <cstdint>
#include <string_view>

namespace roundup {

constexpr std::uint32_t VersionMajor(std::uint64_t version) noexcept {
    return static_cast<std::uint32_t>(version >> 48) & 0xFFFFU;
}
constexpr std::uint32_t VersionMinor(std::uint64_t version) noexcept {
    return static_cast<std::uint32_t>(version >> 32) & 0xFFFFU;
}
constexpr std::uint32_t VersionBuild(std::uint64_t version) noexcept {
    return static_cast<std::uint32_t>(version >> 16) & 0xFFFFU;
}
constexpr std::uint32_t VersionRevision(std::uint64_t version) noexcept {
    return static_cast<std::uint32_t>(version) & 0xFFFFU;
}

// The number of a text "major.minor.build.revision"; 0 when it does not have exactly three dots. A part that is no
// number counts as 0 and ends the reading; one above 65,535 runs into the part above it, as it always has.
std::uint64_t PackVersion(std::u16string_view text) noexcept;

}  // namespace roundup
