// The duplicate filter of one gather, by checksums.
#pragma once

#include <cstdint>
#include <unordered_set>

#include "utility/iremoverepeatreg.h"
#include "utility/kvobject.h"
#include "utility/locks.h"

namespace roundup {

// Keeps 8 bytes for each item, those of its text's checksum: two items of one checksum count as one, and so do two
// that differ behind their 519th character alone. Case matters. Nothing is ever taken out.
class CRemoveRepeatReg final : public CKvObject<IRemoveRepeatReg> {
  public:
    std::int32_t IsKeySeen(const std::uint32_t* root, const char16_t* key, bool view) override;
    std::int32_t IsValueSeen(const std::uint32_t* root, const char16_t* key, const char16_t* name, bool view) override;
    std::int32_t IsItemSeen(std::uint32_t root, const char16_t* path, bool view, bool redirected) override;
    std::int32_t IsDirectorySeen(const char16_t* path) override;

  private:
    // Each kind has a lock of its own, held for the insertion alone.
    struct Seen {
        std::int32_t Enter(std::u16string_view text);
        std::unordered_set<std::uint64_t> checksums;  // guarded by lock
        CriticalSection lock;
    };

    Seen m_keys;
    Seen m_values;
    Seen m_items;
    Seen m_directories;
};

}  // namespace roundup
