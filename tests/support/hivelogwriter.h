// Writes transaction logs of hives, and makes a hive one whose last write has not ended.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "platform/recorded/registry/hivelogs.h"

namespace roundup {

inline void PutNumber(std::string& bytes, std::size_t at, std::uint32_t number) {
    std::memcpy(bytes.data() + at, &number, sizeof number);
}
inline std::span<const std::byte> BytesOf(const std::string& text) { return std::as_bytes(std::span(text)); }

// Puts the numbers and the type into the header and makes its checksum fit.
inline void SetHiveHeader(std::string& file, std::uint32_t first, std::uint32_t second, std::uint32_t type) {
    PutNumber(file, 4, first);
    PutNumber(file, 8, second);
    PutNumber(file, 28, type);
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < 508; at += 4) {
        std::uint32_t number = 0;
        std::memcpy(&number, file.data() + at, sizeof number);
        sum ^= number;
    }
    PutNumber(file, 508, sum);
}

// A part of the hive's blocks, as an entry has it.
struct HivePage {
    std::uint32_t offset = 0;  // from the first block
    std::string bytes;
};

inline std::string HiveLogEntry(std::uint32_t number, std::uint32_t blocksLength, const std::vector<HivePage>& pages) {
    std::string entry(40 + pages.size() * 8, '\0');
    for (std::size_t i = 0; i < pages.size(); ++i) {
        PutNumber(entry, 40 + i * 8, pages[i].offset);
        PutNumber(entry, 44 + i * 8, static_cast<std::uint32_t>(pages[i].bytes.size()));
        entry += pages[i].bytes;
    }
    entry.resize((entry.size() + 511) / 512 * 512);
    entry.replace(0, 4, "HvLE");
    PutNumber(entry, 4, static_cast<std::uint32_t>(entry.size()));
    PutNumber(entry, 12, number);
    PutNumber(entry, 16, blocksLength);
    PutNumber(entry, 20, static_cast<std::uint32_t>(pages.size()));
    const std::uint64_t ofPages = MarvinHash(BytesOf(entry).subspan(40), kHiveLogSeed);
    std::memcpy(entry.data() + 24, &ofPages, sizeof ofPages);
    const std::uint64_t ofHeader = MarvinHash(BytesOf(entry).first(32), kHiveLogSeed);
    std::memcpy(entry.data() + 32, &ofHeader, sizeof ofHeader);
    return entry;
}

// A log with the hive's header in front.
inline std::string HiveLog(const std::string& hive, std::uint32_t number, std::uint32_t type, const std::string& rest) {
    std::string log = hive.substr(0, 512);
    SetHiveHeader(log, number, number, type);
    return log + rest;
}

}  // namespace roundup
