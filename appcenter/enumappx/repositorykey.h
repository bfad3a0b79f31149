// Keys of the user's package repository, read straight through the registry of the seam: no view flag, no checks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/registry.h"

namespace roundup {

// A key below HKEY_CURRENT_USER, open as long as the object lives. What cannot be read is empty or 0. One thread at a
// time.
class RepositoryKey {
  public:
    explicit RepositoryKey(const std::u16string& path);
    ~RepositoryKey();
    RepositoryKey(const RepositoryKey&) = delete;
    RepositoryKey& operator=(const RepositoryKey&) = delete;

    // Appends the names of the subkeys in their order. False when the key is not open, and when the walk ends before
    // the last one.
    bool ListSubKeys(std::vector<std::u16string>& names);
    // A value of text type, up to its first zero. name null: the default value.
    std::u16string Text(const char16_t* name);
    // The bytes of a value of any type with at most eight of them, as a little-endian number.
    std::uint64_t Number(const char16_t* name);

  private:
    // What the key tells of its longest name and value, asked once.
    bool Measure();

    IRegistry& m_registry;
    KeyHandle m_key = 0;
    bool m_measured = false;
    KeyInfo m_info;
    std::u16string m_buffer;
};

}  // namespace roundup
