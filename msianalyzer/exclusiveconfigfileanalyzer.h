// The rule file that names what of a product must not be exported.
#pragma once

#include <set>
#include <string>
#include <string_view>

#include "msianalyzer/configfileanalyzer.h"

namespace roundup {

// A key that is left alone. Ordered by root, then by key, by character value.
class CExclusiveRegInfo {
  public:
    CExclusiveRegInfo(KeyHandle keyRoot, std::u16string_view keyPath) : root(keyRoot), key(keyPath) {}
    virtual ~CExclusiveRegInfo() = default;
    CExclusiveRegInfo(const CExclusiveRegInfo&) = default;
    CExclusiveRegInfo& operator=(const CExclusiveRegInfo&) = default;
    friend bool operator<(const CExclusiveRegInfo& a, const CExclusiveRegInfo& b) noexcept {
        return a.root != b.root ? a.root < b.root : a.key < b.key;
    }

    KeyHandle root;
    std::u16string key;
};

// Empty until Load, from then on only read.
class CExclusiveConfigFileAnalyzer : public CConfigFileAnalyzer {
  public:
    using CConfigFileAnalyzer::CConfigFileAnalyzer;

    // Reads the file anew. A line that cannot be followed is dropped.
    virtual ResultCode Load(const char16_t* path);
    // Whether the file names exactly this key, case and all; what lies beneath it is not excluded with it.
    virtual bool IsRegExcluded(KeyHandle root, std::u16string_view key) const;
    // Whether the file names exactly this folder.
    virtual bool IsDirExcluded(std::u16string_view path) const;
    virtual ResultCode LoadReg();
    virtual ResultCode LoadDir();

  private:
    std::set<CExclusiveRegInfo> m_excludedRegs;
    std::set<std::u16string, std::less<>> m_excludedDirs;
};

}  // namespace roundup
