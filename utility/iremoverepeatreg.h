// The duplicate filter of one gather: the members of a suite share folders and keys, and each is taken once.
#pragma once

#include <cstdint>

#include "utility/ikvobject.h"

namespace roundup {

// Each check answers 1 when the item was seen before, 0 when it is new and has now been entered, and 0 without
// entering anything when an argument is null or empty. Case matters. Every thread may call; the order of the
// operations is fixed.
class IRemoveRepeatReg : public IKvObject {
  public:
    // root is the low half of the predefined root; view is true for the 64-bit view of the registry.
    virtual std::int32_t IsKeySeen(const std::uint32_t* root, const char16_t* key, bool view) = 0;
    virtual std::int32_t IsValueSeen(const std::uint32_t* root, const char16_t* key, const char16_t* name,
                                     bool view) = 0;
    // redirected tells two items of one path apart by whether file system redirection holds for them.
    virtual std::int32_t IsItemSeen(std::uint32_t root, const char16_t* path, bool view, bool redirected) = 0;
    virtual std::int32_t IsDirectorySeen(const char16_t* path) = 0;
};

}  // namespace roundup
