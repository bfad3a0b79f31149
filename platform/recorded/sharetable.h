// Who has which file open, and what the others may then do with it.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/threading.h"

namespace roundup {

// Files are told apart by a text of the caller's. Every thread may call.
class ShareTable {
  public:
    // Notes one more opening; false when the access of one side is not shared by the other (error 32).
    bool Enter(const std::u16string& file, std::uint32_t access, std::uint32_t share);
    void Leave(const std::u16string& file, std::uint32_t access, std::uint32_t share);
    bool IsOpen(const std::u16string& file);

  private:
    struct Opening {
        std::uint32_t access;
        std::uint32_t share;
    };
    Mutex m_lock;
    std::unordered_map<std::u16string, std::vector<Opening>> m_files;  // guarded by m_lock
};

}  // namespace roundup
