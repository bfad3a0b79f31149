#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr char16_t kMessaging[] =
    u"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles\\outlook";
struct SuiteYear {
    std::u16string_view year;
    const char16_t* profile;
};
constexpr SuiteYear kYears[] = {
    {u"_2007", kMessaging},
    {u"_2010", kMessaging},
    {u"_2013", u"Software\\Microsoft\\Office\\15.0\\Outlook\\Profiles\\Outlook"},
    {u"_2016", u"Software\\Microsoft\\Office\\16.0\\Outlook\\Profiles\\Outlook"},
};

// The path of a message store, as Unicode text (PR_PROFILE_OFFLINE_STORE_PATH and PR_PST_PATH of the mail interface),
// in the order in which they are asked for.
constexpr const char16_t* kStorePaths[] = {u"001f6700", u"001f6610"};

void AddStore(CWFYRegKey& section, CAppRuleSet& ruleSet) {
    OwnedString path;
    for (const char16_t* name : kStorePaths) {
        if (Succeeded(section.GetString(name, path))) break;
    }
    if (!path.IsEmpty()) ruleSet.IncludedFiles.Add(path);
}

}  // namespace

ResultCode LocateOutlook(const CApp& app, CAppRuleSet& ruleSet) {
    const char16_t* profile = nullptr;
    for (const auto& [year, key] : kYears) {
        if (profile == nullptr && ContainsNoCase(app.pwszTypeDes, year)) profile = key;
    }
    if (profile == nullptr) return kSuccess;
    CWFYRegKey key;
    if (auto rc = key.Open(kHkeyCurrentUser, profile, false, true); Failed(rc)) return Pass(rc);
    for (OwnedString name; Succeeded(key.EnumKey(name));) {
        CWFYRegKey section;
        if (Succeeded(section.Open(key.GetKeyHandle(), name.Get(), false, true))) AddStore(section, ruleSet);
    }
    return kSuccess;
}

}  // namespace roundup
