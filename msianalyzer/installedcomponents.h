// Which components the machine has, whoever installed them.
#pragma once

#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "utility/locks.h"
#include "utility/result.h"
#include "utility/textarena.h"

namespace roundup {

// The list of the platform, kept in the file Components.ini of the cache folder, which is binary: magic 0x00606001,
// length of the file, then the identifiers in ascending order, each as its bytes with the terminator (32 bits) and
// the text. A file that is there is believed; without one the platform is asked, and the file is written when the
// folder is there. Made once for the process by GetInstalledComponents, from then on only read: any thread.
class CInstalledComponents {
  public:
    CInstalledComponents();
    CInstalledComponents(const CInstalledComponents&) = delete;
    CInstalledComponents& operator=(const CInstalledComponents&) = delete;

    // The identifier in braces, compared exactly.
    bool Contains(std::u16string_view componentId) const { return m_index.contains(componentId); }
    // Ascending, by character value.
    std::span<const std::u16string_view> Components() const noexcept { return m_components; }

  private:
    ResultCode Load();
    ResultCode Enumerate();
    ResultCode ReadCache(const char16_t* path);
    ResultCode WriteCache(const char16_t* path);
    ResultCode Add(std::u16string_view componentId);
    void Sort() noexcept;

    TextArena m_texts;
    std::vector<std::u16string_view> m_components;
    std::unordered_set<std::u16string_view> m_index;  // of m_components
    MutexLock m_cacheLock;
};

// The one of the process on this machine; reads the cache or the platform at its first call.
const CInstalledComponents& GetInstalledComponents();

}  // namespace roundup
