// The registry keys and the extra folders of one application, found by its files and by the words of its name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "appcenter/appadapterconfig/ruleitems.h"
#include "appcenter/appreggather/nametokens.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "utility/ownedstring.h"

namespace roundup {

class CApp;

// Which scans a gather runs; bits of a mask.
struct RegGatherScan {
    static constexpr std::uint32_t kDataFolders = 1;
    static constexpr std::uint32_t kSoftwareKeys = 2;
    static constexpr std::uint32_t kCom = 4;
    static constexpr std::uint32_t kClasses = 8;
    static constexpr std::uint32_t kServices = 16;
    static constexpr std::uint32_t kAppPaths = 32;
    static constexpr std::uint32_t kAll = 63;
};

// Made for one application, on the stack of its gather; used by one thread. The caches of the machine that it asks are
// read at the first question and never again. A key or folder that cannot be read adds nothing; what the standard
// library throws for want of memory goes through.
class CAppRegGather {
  public:
    // Makes the search words of the application, which must stay while this object does.
    explicit CAppRegGather(const CApp& app);
    CAppRegGather(const CAppRegGather&) = delete;
    CAppRegGather& operator=(const CAppRegGather&) = delete;

    // Adds the folders below each of the two Common Files roots, the native one and the 32-bit one, that carry the
    // application's words. They need not exist.
    void GetCommonFolders(std::vector<OwnedString>& list1, std::vector<OwnedString>& list2);
    // Runs the scans of the mask (RegGatherScan) for what application.FilePaths holds now, and fills RegItems and
    // Paths. Once.
    void RunGather(std::uint32_t mask);
    // The text of an item, null past the end; root and redirection are then untouched.
    const char16_t* GetRegItem(std::size_t index, std::uint32_t& root, std::uint32_t& redirection) const;
    // Null past the end.
    const char16_t* GetPath(std::size_t index) const;

    std::vector<RuleRegItem> RegItems;  // in order of finding; bRedirection is 0
    std::vector<OwnedString> Paths;     // folders, which need not exist
    std::vector<NameToken> NameTokens;

  private:
    void RunScans(std::uint32_t mask);
    void BuildItems();
    void AddItems(std::u16string_view prefix, std::u16string_view name, bool alsoUser);
    void AddItem(std::uint32_t root, std::u16string_view prefix, std::u16string_view name);
    void AddDependencyKey(const OwnedString& name);
    void AddDataFolders();
    void AddDriveRootFolders();

    const CApp* const pApp;
    RegGatherResults m_results;
};

}  // namespace roundup
