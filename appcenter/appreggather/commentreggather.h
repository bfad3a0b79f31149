// What the books of Windows Installer say of the components that lie in a folder.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "appcenter/appreggather/multimap.h"

namespace roundup {

class CAppRuleSet;
class CWFYRegKey;

// ProcessWide<CCommentRegGather>() is the one of the machine: the books are read once by its constructor.
class CCommentRegGather {
  public:
    CCommentRegGather();
    CCommentRegGather(const CCommentRegGather&) = delete;
    CCommentRegGather& operator=(const CCommentRegGather&) = delete;

    // Adds the keys of the products that have a component whose path contains the location, case and all, to the
    // included registry items: three for each product, once, with the user that it was first met for.
    void AddComponentItems(std::u16string_view location, CAppRuleSet& ruleSet) const;

  private:
    void Scan();
    void AddComponent(CWFYRegKey& component, std::u16string_view user);
    void PutInOrder();
    // The places in m_order of the paths that contain the location, ascending.
    std::vector<std::uint32_t> Containing(std::u16string_view location) const;

    TextTable<NumberLists::List> m_paths;  // the products of each
    NumberLists m_links;
    TextTable<OwnedString> m_products;     // packed codes, with the first user of each
    std::vector<std::uint32_t> m_order;    // paths in order, ignoring case
    std::vector<std::uint32_t> m_unusual;  // places in m_order of paths with a ":" behind their drive's
};

// The same for the machine's one; an empty location does not even make it.
void AddComponentItems(std::u16string_view location, CAppRuleSet& ruleSet);

}  // namespace roundup
