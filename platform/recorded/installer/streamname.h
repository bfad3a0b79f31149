// Names of the streams of an installer database, which are written two characters to a unit so that 62 of them fit
// into the 31 units of a directory entry. Read off files; described by the free readers of the format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace roundup {

enum class StreamKind { Plain, Table };

// The name under which the directory of the file has a stream, or the rows of a table. Throws std::bad_alloc.
std::u16string EncodeStreamName(std::u16string_view name, StreamKind kind);

// The other way; kind tells which of the two it was.
std::u16string DecodeStreamName(std::u16string_view encoded, StreamKind& kind);

}  // namespace roundup
