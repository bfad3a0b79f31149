#include "appcenter/appreggather/appreggather.h"

#include "appcenter/appreggather/commentreggather.h"

namespace roundup {

CAppRegGather::CAppRegGather(const CApp& app) : pApp(&app) {}
CAppRegGather::~CAppRegGather() = default;

void CAppRegGather::GetCommonFolders(std::vector<OwnedString>& /*list1*/, std::vector<OwnedString>& /*list2*/) {}
void CAppRegGather::RunGather(std::uint32_t /*mask*/) {}

const char16_t* CAppRegGather::GetRegItem(std::size_t index, std::uint32_t& root, std::uint32_t& redirection) const {
    if (index >= RegItems.size()) return nullptr;
    root = RegItems[index].root;
    redirection = RegItems[index].bRedirection;
    return RegItems[index].path.Get();
}

const char16_t* CAppRegGather::GetPath(std::size_t index) const {
    return index < Paths.size() ? Paths[index].Get() : nullptr;
}

void AddComponentItems(std::u16string_view /*location*/, CAppRuleSet& /*ruleSet*/) {}

}  // namespace roundup
