#include "platform/recorded/icons/iconimage.h"

namespace roundup {

// A Windows build links nothing beyond the system, which has no plain decoder to call from here: an icon that has
// nothing but compressed images is absent on its recorded machines.
std::optional<IconImage> DecodePngImage(ByteView) { return std::nullopt; }

}  // namespace roundup
