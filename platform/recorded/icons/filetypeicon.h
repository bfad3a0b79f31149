// Where the shell takes the icon of a file from that has none of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace roundup {

struct IconPlace {
    std::u16string path;
    std::int32_t index = 0;
};

// The places in the order in which they are tried: the icon that the registry names for the file's type
// (HKEY_CLASSES_ROOT\<ending>, its class, DefaultIcon), then the shell's own picture.
std::vector<IconPlace> FileTypeIcons(IRegistry& registry, std::u16string_view path, bool folder);

}  // namespace roundup
