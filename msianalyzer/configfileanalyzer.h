// Rule files of products: what to export in addition (".INC") and what to leave alone (".EXC").
//
// A line is a keyword, a colon and a value: "REG: HKLM,SOFTWARE\Vendor", "DIR: [INSTALLDIR]cache". Values are
// formatted text of the installer, so they can use the properties of the product in hand. Lines of other grammars are
// passed over.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/registry.h"
#include "utility/result.h"

namespace roundup {

class CMSIAnalyzer;

// The path of the rule file of that name (a product code) in the folder "Config" beside the host; that of its suite
// when there is none of the product itself. The file may be missing. Empty when the host's folder is not known.
void FindConfigFile(std::u16string_view name, std::u16string& path, bool include);

// The entries of one file. The order of the operations is fixed. Used by one thread; the analyzer outlives it.
class CConfigFileAnalyzer {
  public:
    explicit CConfigFileAnalyzer(const CMSIAnalyzer* analyzer) noexcept : m_analyzer(analyzer) {}
    CConfigFileAnalyzer(const CConfigFileAnalyzer&) = delete;
    CConfigFileAnalyzer& operator=(const CConfigFileAnalyzer&) = delete;
    virtual ~CConfigFileAnalyzer() = default;
    // Destroys the object.
    virtual void Release() { delete this; }
    // Reads the file into the entries; failures are those of CReadConfig::Open.
    virtual ResultCode ParseFile(const char16_t* path);
    // Splits "root,key,name,data" at its commas; fields that are not there are empty. Small code 1 without a root or
    // a key.
    virtual ResultCode ParseReg(std::u16string_view line, std::u16string_view& root, std::u16string_view& key,
                                std::u16string_view& name, std::u16string_view& data) const;
    // Expands a path; failures are those of formatted text.
    virtual ResultCode FormatFile(std::u16string_view line, std::u16string& path) const;
    virtual ResultCode FormatDir(std::u16string_view line, std::u16string& path) const;
    // Splits "first,second,third", where second is expanded and third may be missing. Small code 1 without one of the
    // first two.
    virtual ResultCode ParseDriver(std::u16string_view line, std::u16string_view& first, std::u16string& second,
                                   std::u16string_view& third) const;

  protected:
    // Keyword in lower case, and value, in file order.
    using Entry = std::pair<std::u16string, std::u16string>;

    const CMSIAnalyzer* Analyzer() const noexcept { return m_analyzer; }
    const std::vector<Entry>& Entries() const noexcept { return m_entries; }
    bool HasEntries(std::u16string_view keyword) const noexcept;
    // Calls follow(value) for each entry of the keyword. One that cannot be followed is dropped.
    template <class Follow>
    void FollowEntries(std::u16string_view keyword, Follow follow) const {
        for (const auto& [word, value] : m_entries) {
            if (word != keyword) continue;
            if (const ResultCode rc = follow(value); Failed(rc)) Skip(rc);
        }
    }
    bool Is64Bit() const noexcept { return m_bits == 64; }
    // A registry entry taken apart.
    struct RegEntry {
        KeyHandle root = 0;
        std::u16string_view key;
        std::u16string_view name;
        std::u16string_view data;
    };
    // ParseReg, with the root that is named exactly as "HKLM" is written; small code 1 for another text.
    ResultCode ParseRegEntry(std::u16string_view line, RegEntry& entry) const;

  private:
    void AddLine(std::u16string_view line);
    ResultCode Expand(std::u16string_view line, std::u16string& path) const;

    const CMSIAnalyzer* const m_analyzer;
    std::uint32_t m_bits = 32;
    std::vector<Entry> m_entries;
};

}  // namespace roundup
