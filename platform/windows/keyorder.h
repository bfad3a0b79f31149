// Enumeration of subkeys in the order that the seam promises, on a platform that has another one.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/threading.h"
#include "platform/win32.h"
#include "platform/windows/wintext.h"

namespace roundup {

// Windows keeps the subkeys of a key sorted by their upper-cased names, and there every call goes straight to it. Wine
// sorts by the lower-cased names, which differs for the characters between Z and a, such as the underscore. There the
// names are read at once when a walk begins at index 0, sorted, and kept until the key is closed. Any thread.
class KeyOrder {
  public:
    KeyOrder();

    // As IRegistry::EnumKey.
    Win32Error EnumKey(HKEY key, std::uint32_t index, char16_t* name, std::uint32_t& length);

    // To be called before the key is closed: its handle may come again for another key.
    void Forget(HKEY key);

  private:
    using Names = std::vector<std::u16string>;

    static Win32Error Ask(HKEY key, std::uint32_t index, char16_t* name, std::uint32_t& length);
    static Win32Error ReadNames(HKEY key, Names& names);

    const bool m_sorts;
    Mutex m_lock;
    std::map<HKEY, Names> m_walks;  // guarded by m_lock
};

}  // namespace roundup
