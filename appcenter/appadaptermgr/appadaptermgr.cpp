#include "appcenter/appadaptermgr/appadaptermgr.h"

#include <cstdint>
#include <new>
#include <string>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadaptermgr/adapternames.h"
#include "appcenter/appadapterparse/appadapterparse.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"
#include "utility/locks.h"
#include "utility/stringcontainers.h"

namespace roundup {
namespace {

constexpr const char16_t* kListFile = u"AppsIniEx.ini";
constexpr const char16_t* kListSection = u"AppName";

struct AdapterList {
    CriticalSection AdaptersLock;
    // Guarded by AdaptersLock until the list has entries; unchanged from then on.
    CStringSet Names;
    std::vector<RefPtr<IAppAdapterParse>> Adapters;  // in the order of Names
    AdapterNames Index;
    // Guarded by AdaptersLock: the generation of the rule files in which the list file gave nothing.
    std::uint32_t triedIn = 0;
};

// What the list file names; nothing when it cannot be read.
void ReadNames(AdapterList& list) {
    RuleFileStore& store = ProcessWide<RuleFileStore>();
    const std::uint32_t generation = store.Generation();
    if (list.triedIn == generation) return;
    if (store.HasConfigFile(kListFile)) ReadIniKeys(ConfigFolder().c_str(), kListFile, kListSection, list.Names);
    if (list.Names.empty()) list.triedIn = generation;
}

ResultCode MakeAdapters(AdapterList& list) {
    for (const OwnedString& name : list.Names) {
        if (name.IsEmpty()) continue;
        auto adapter = RefPtr<IAppAdapterParse>::Adopt(new (std::nothrow) CAppAdapterParse(name));
        if (!adapter) return Fail(SmallCode::GeneralFailure);
        list.Adapters.push_back(std::move(adapter));
        list.Index.Add(name, list.Adapters.size() - 1);
    }
    return kSuccess;
}

}  // namespace

ResultCode LoadAdapters() {
    return AtBoundary(
        [] {
            AdapterList& list = ProcessWide<AdapterList>();
            const LockGuard guard(list.AdaptersLock);
            if (!list.Adapters.empty()) return kSuccess;
            ReadNames(list);
            return MakeAdapters(list);
        },
        [] { return Fail(SmallCode::GeneralFailure); });
}

ResultCode ApplyAdapters(IApp* app, CAppRuleSet* ruleSet) {
    if (app == nullptr || ruleSet == nullptr) return Fail(SmallCode::BadArgument);
    const AdapterList& list = ProcessWide<AdapterList>();
    if (list.Adapters.empty() || app->IsAppx() != 0) return kSuccess;
    const auto& record = static_cast<const CApp&>(*app);
    return AtBoundary(
        [&] {
            std::vector<bool> found(list.Adapters.size());
            for (const OwnedString* text : {&record.pwszName, &record.pwszInstallLoc, &record.pwszKeyString}) {
                list.Index.Find(*text, found);
            }
            for (std::size_t i = 0; i < found.size(); ++i) {
                if (found[i]) Ignore(list.Adapters[i]->ApplyTo(app, ruleSet), u"the adapter has logged its failure");
            }
            return kSuccess;
        },
        [] { return Fail(SmallCode::GeneralFailure); });
}

}  // namespace roundup
