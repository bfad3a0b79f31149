// What the scans of the registry share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "utility/reg.h"
#include "utility/sysinfo.h"

namespace roundup {

enum class DefaultRead : std::uint8_t {
    Read,        // the text, which may be empty
    CannotOpen,  // absent, or denied
    CannotRead,  // open, without such a value
};

// Reads texts of the keys below an open one, keeping its buffers from one to the next.
class SubKeyReader {
  public:
    SubKeyReader(const CWFYRegKey& parent, bool view64) : m_parent(parent.GetKeyHandle()), m_view64(view64) {}

    // The value of the key "name" or "name\below"; without a value name the default value. text is empty unless Read,
    // and good until the next operation.
    DefaultRead Read(std::u16string_view name, std::u16string_view below, std::u16string_view& text,
                     const char16_t* value = nullptr) {
        text = {};
        if (Failed(Open(name, below))) return DefaultRead::CannotOpen;
        return Failed(m_key.GetStringView(value, text)) ? DefaultRead::CannotRead : DefaultRead::Read;
    }
    // Opens such a key, to be read until the next operation.
    ResultCode Open(std::u16string_view name, std::u16string_view below) {
        m_path.assign(name);
        if (!below.empty()) m_path.append(1, u'\\').append(below);
        return m_key.Open(m_parent, m_path.c_str(), m_view64, false);
    }
    CWFYRegKey& Key() noexcept { return m_key; }

  private:
    const KeyHandle m_parent;
    const bool m_view64;
    CWFYRegKey m_key;
    std::u16string m_path;
};

// Calls use(name) for each subkey; a name that cannot be read is passed over. use answers false to end the walk. The
// name is zero-terminated, and lies in the key, which use must leave alone.
template <class Use>
void ForEachSubKey(CWFYRegKey& key, Use use) {
    for (std::u16string_view name;;) {
        const ResultCode rc = key.EnumKeyView(name);
        if (Small(rc) == SmallCode::NoMoreItems) return;
        if (Failed(rc) || name.empty()) continue;
        if (!use(name)) return;
    }
}

// Calls scan(root, view64) for the machine's and the user's hive in the normal view, then in the 64-bit view.
template <class Scan>
void ForEachHive(Scan scan) {
    for (const bool view64 : {false, true}) {
        if (view64 && !Is64BitOS()) return;
        scan(kHkeyLocalMachine, view64);
        scan(kHkeyCurrentUser, view64);
    }
}

}  // namespace roundup
