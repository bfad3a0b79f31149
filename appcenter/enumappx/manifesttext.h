// The characters of a package manifest, whatever it is encoded in.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace roundup {

// Reads UTF-16 of either order and UTF-8, told by their marks, and UTF-8 without one when all of it is valid; anything
// else, and what is shorter than a mark can be, is false. A character beyond the basic plane ends the text of a UTF-8
// file, and so does a sequence that is broken behind a mark.
bool DecodeManifest(std::span<const std::byte> bytes, std::u16string& text);

}  // namespace roundup
