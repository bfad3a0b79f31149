// The registry keys and the extra folders of one application, found by its files and by the words of its name.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "appcenter/appadapterconfig/ruleitems.h"
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

// Made for one application, on the stack of its gather; used by one thread.
class CAppRegGather {
  public:
    explicit CAppRegGather(const CApp& app);
    CAppRegGather(const CAppRegGather&) = delete;
    CAppRegGather& operator=(const CAppRegGather&) = delete;
    ~CAppRegGather();

    // The folders below each of the two Common Files roots that carry the application's words.
    void GetCommonFolders(std::vector<OwnedString>& list1, std::vector<OwnedString>& list2);
    // Runs the scans of the mask (RegGatherScan) and fills RegItems and Paths. Once.
    void RunGather(std::uint32_t mask);
    // The text of an item, null past the end; root and redirection are then untouched.
    const char16_t* GetRegItem(std::size_t index, std::uint32_t& root, std::uint32_t& redirection) const;
    // Null past the end.
    const char16_t* GetPath(std::size_t index) const;

    std::vector<RuleRegItem> RegItems;
    std::vector<OwnedString> Paths;

  private:
    const CApp* const pApp;
};

}  // namespace roundup
