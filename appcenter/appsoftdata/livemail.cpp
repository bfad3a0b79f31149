#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "utility/reg.h"

namespace roundup {

ResultCode LocateLiveMail(const CApp& /*app*/, CAppRuleSet& ruleSet) {
    for (const bool view64 : {true, false}) {
        CWFYRegKey key;
        OwnedString root;
        // A view that cannot be read ends the walk: what was found so far stands.
        if (Failed(key.Open(kHkeyCurrentUser, u"Software\\Microsoft\\Windows Live Mail\\", view64, false))) break;
        if (Failed(key.GetString(u"Store Root", root))) break;
        if (!root.IsEmpty()) ruleSet.AddIncludedDirectory(root);
    }
    return kSuccess;
}

}  // namespace roundup
