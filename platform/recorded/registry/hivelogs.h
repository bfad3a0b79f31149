// The transaction logs of a hive: what a Windows that did not end properly had written to them alone.
//
// Windows writes a change to a log first and into the hive later, often much later. A hive whose header tells of a
// write that was begun and not ended is only whole together with its logs. Two forms are known: since Windows 8.1 two
// logs hold numbered entries of pages, each with its hashes; before that one log holds the dirty sectors of one write.
//
// Source: the format of hive files and their logs as documented by the libregf project and M. Suhanov's description.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace roundup {

// True when the header says that a write to the hive has not ended.
bool IsHiveDirty(std::span<const std::byte> hive) noexcept;

// The hive as it is with its logs applied, in whatever order they are given. Nothing when the hive is not dirty, or
// when no log continues it: a log that lacks what comes next, of another hive, or damaged in front, tells nothing.
// Throws std::bad_alloc.
std::optional<std::vector<std::byte>> ReplayHiveLogs(std::span<const std::byte> hive,
                                                     std::span<const std::span<const std::byte>> logs);

// The hash that guards an entry of a log: Marvin32, published as the string hash of .NET.
std::uint64_t MarvinHash(std::span<const std::byte> bytes, std::uint64_t seed) noexcept;
inline constexpr std::uint64_t kHiveLogSeed = 0xC5554E7A884DEF82U;

}  // namespace roundup
