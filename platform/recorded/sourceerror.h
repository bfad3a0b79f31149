// What is wrong with a source that cannot be read as a machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace roundup {

// Names the file, the place in it, and what is wrong there, for a person to read.
struct SourceError {
    enum class Place { None, Line, Offset };

    std::string file;  // path on this computer, UTF-8
    Place place = Place::None;
    std::uint64_t position = 0;  // line counted from 1, or byte offset
    std::string what;

    // "file:line: what", "file: offset 0x1F0: what" or "file: what".
    std::string Text() const;
};

// Empty when all went well.
using SourceStatus = std::optional<SourceError>;

}  // namespace roundup
