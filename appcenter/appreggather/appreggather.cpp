#include "appcenter/appreggather/appreggather.h"

#include <utility>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/apppathcache.h"
#include "appcenter/appreggather/classcache.h"
#include "appcenter/appreggather/comcache.h"
#include "appcenter/appreggather/commonfilescache.h"
#include "appcenter/appreggather/datafoldercache.h"
#include "appcenter/appreggather/scankeys.h"
#include "appcenter/appreggather/servicecache.h"
#include "appcenter/appreggather/softwarekeycache.h"
#include "platform/machine.h"
#include "utility/fixedtext.h"
#include "utility/formattext.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

// Keys below which the members of a set have one of their own, in the machine's hive, then in the user's. What stands
// behind two backslashes is the name of a value.
struct ItemRow {
    CStringSet RegGatherResults::*set;
    std::u16string_view prefixes[6];
    bool alsoUser = true;
};

constexpr ItemRow kItemRows[] = {
    {&RegGatherResults::ProgIds, {u"SOFTWARE\\Classes\\AppID\\"}},
    {&RegGatherResults::ClassIds,
     {u"SOFTWARE\\Classes\\CLSID\\", u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved\\\\"}},
    {&RegGatherResults::TypeLibIds, {u"SOFTWARE\\Classes\\TypeLib\\"}},
    {&RegGatherResults::InterfaceIds, {u"SOFTWARE\\Classes\\Interface\\"}},
    {&RegGatherResults::ServiceNames, {u"SYSTEM\\CurrentControlSet\\services\\"}, false},
    {&RegGatherResults::AppPathNames,
     {u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths\\", u"SOFTWARE\\Classes\\Applications\\"}},
    {&RegGatherResults::ExtensionNames,
     {u"SOFTWARE\\Classes\\", u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\FileExts\\"}},
    {&RegGatherResults::ClassNames,
     {u"SOFTWARE\\Classes\\", u"SOFTWARE\\Classes\\*\\shellex\\ContextMenuHandlers\\",
      u"Software\\Microsoft\\Windows\\Shell\\Associations\\UrlAssociations\\",
      u"SOFTWARE\\Classes\\Drive\\shellex\\DragDropHandlers\\",
      u"SOFTWARE\\Classes\\Folder\\ShellEx\\ContextMenuHandlers\\",
      u"SOFTWARE\\Classes\\Folder\\ShellEx\\DragDropHandlers\\WinRAR\\"}},
};

constexpr Csidl kDataFolders[] = {Csidl::AppData,     Csidl::CommonAppData,  Csidl::LocalAppData,
                                  Csidl::MyPictures,  Csidl::Personal,       Csidl::MyMusic,
                                  Csidl::MyVideo,     Csidl::CommonPictures, Csidl::CommonDocuments,
                                  Csidl::CommonMusic, Csidl::CommonVideo};

void AddCommonFolder(Csidl root, std::u16string_view name, std::vector<OwnedString>& list) {
    const char16_t* const folder = GetSpecialFolder(root);
    if (folder == nullptr) return;
    FixedText<260> path;
    FormatText(path, u"%s\\%s", folder, name);
    list.emplace_back(path.View());
}

}  // namespace

CAppRegGather::CAppRegGather(const CApp& app) : pApp(&app) {
    m_results.bMicrosoft = BeginsWithPlatformMaker(app.pwszPublisher) ? 1 : 0;
    TokeniseApp(app, NameTokens, m_results.bMicrosoft);
}

void CAppRegGather::GetCommonFolders(std::vector<OwnedString>& list1, std::vector<OwnedString>& list2) {
    ProcessWide<CCommonFilesCache>().FindCommonFolders(NameTokens, m_results);
    for (const OwnedString& name : m_results.CommonFolderNames) {
        AddCommonFolder(Csidl::ProgramFilesCommon, name, list1);
        AddCommonFolder(Csidl::ProgramFilesCommonX86, name, list2);
    }
}

void CAppRegGather::RunGather(std::uint32_t mask) {
    RunScans(mask);
    BuildItems();
    AddDependencyKey(pApp->pwszName);
    AddDataFolders();
    AddDriveRootFolders();
    m_results.DataFolderNames.Clear();
}

void CAppRegGather::RunScans(std::uint32_t mask) {
    // The classes of files are asked for the COM classes that were found before them.
    if ((mask & RegGatherScan::kCom) != 0) ProcessWide<CComCache>().FindComItems(*pApp, m_results);
    if ((mask & RegGatherScan::kClasses) != 0) ProcessWide<CClassCache>().FindClassItems(*pApp, m_results);
    if ((mask & RegGatherScan::kServices) != 0) ProcessWide<CServiceCache>().FindServices(*pApp, m_results, false);
    if ((mask & RegGatherScan::kAppPaths) != 0) ProcessWide<CAppPathCache>().FindAppPaths(*pApp, m_results);
    if ((mask & RegGatherScan::kDataFolders) != 0) {
        ProcessWide<CDataFolderCache>().FindDataFolders(NameTokens, m_results);
    }
    if ((mask & RegGatherScan::kSoftwareKeys) != 0) {
        ProcessWide<CSoftwareKeyCache>().FindSoftwareKey(NameTokens, m_results);
    }
}

void CAppRegGather::BuildItems() {
    for (const ItemRow& row : kItemRows) {
        for (const OwnedString& name : m_results.*row.set) {
            for (const std::u16string_view prefix : row.prefixes) {
                if (!prefix.empty()) AddItems(prefix, name, row.alsoUser);
            }
        }
    }
    if (m_results.pwszSoftwareKey != nullptr) AddItems(u"SOFTWARE\\", m_results.pwszSoftwareKey, true);
}

void CAppRegGather::AddItems(std::u16string_view prefix, std::u16string_view name, bool alsoUser) {
    AddItem(RuleRoot::kLocalMachine, prefix, name);
    if (alsoUser) AddItem(RuleRoot::kCurrentUser, prefix, name);
}

void CAppRegGather::AddItem(std::uint32_t root, std::u16string_view prefix, std::u16string_view name) {
    RuleRegItem item;
    item.root = root;
    if (AssignConcat(item.path, prefix, name) && !item.path.IsEmpty()) RegItems.push_back(std::move(item));
}

void CAppRegGather::AddDependencyKey(const OwnedString& name) {
    constexpr const char16_t* kDependencies = u"SOFTWARE\\Classes\\Installer\\Dependencies";
    if (name.IsEmpty()) return;
    const bool view64 = Is64BitOS();
    CWFYRegKey key;
    if (Failed(key.Open(kHkeyLocalMachine, kDependencies, view64, false))) return;
    SubKeyReader reader(key, view64);
    std::u16string_view displayName;
    ForEachSubKey(key, [&](std::u16string_view subKey) {
        (void)reader.Read(subKey, {}, displayName, u"DisplayName");
        if (displayName.empty()) return false;
        if (!EqualsNoCase(displayName, name)) return true;
        AddItem(RuleRoot::kLocalMachine, u"SOFTWARE\\Classes\\Installer\\Dependencies\\", subKey);
        return false;
    });
}

void CAppRegGather::AddDataFolders() {
    for (const Csidl folder : kDataFolders) {
        const char16_t* const root = GetSpecialFolder(folder);
        if (root == nullptr) continue;
        for (const OwnedString& name : m_results.DataFolderNames) {
            Paths.emplace_back(FormatText(u"%s\\%s", root, name));
        }
    }
}

void CAppRegGather::AddDriveRootFolders() {
    constexpr std::size_t kDriveRoot = 3;  // characters, as of "C:\"
    const char16_t* const windows = GetSpecialFolder(Csidl::Windows);
    if (windows == nullptr) return;
    const std::u16string_view root = std::u16string_view(windows).substr(0, kDriveRoot);
    for (const OwnedString& name : m_results.DataFolderNames) {
        OwnedString path;
        if (AssignConcat(path, root, name) && !IsSpecialFolder(path)) Paths.push_back(std::move(path));
    }
}

const char16_t* CAppRegGather::GetRegItem(std::size_t index, std::uint32_t& root, std::uint32_t& redirection) const {
    if (index >= RegItems.size()) return nullptr;
    root = RegItems[index].root;
    redirection = RegItems[index].bRedirection;
    return RegItems[index].path.Get();
}

const char16_t* CAppRegGather::GetPath(std::size_t index) const {
    return index < Paths.size() ? Paths[index].Get() : nullptr;
}

}  // namespace roundup
