// What the program tells of an application, field by field, in the order of its JSON.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>

#include "appcenter/app/app.h"

namespace roundup::host {

struct AppField {
    using Value = std::variant<std::string, std::int64_t>;

    const char* name;   // in JSON and CSV
    const char* label;  // for people
    Value (*read)(const CApp& app);
};

extern const std::array<AppField, 21> kAppFields;

// The checksum of an icon's bytes as 16 hexadecimal digits; empty without an icon.
std::string IconChecksum(const IApp& app);

// "64" or "32": the width of the application's programs as far as the catalogue knows it.
const char* Bitness(std::uint64_t flags);

}  // namespace roundup::host
