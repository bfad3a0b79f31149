#include "appcenter/appadaptermgr/appadaptermgr.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadapterconfig/rulefilestore.h"
#include "appcenter/appadaptermgr/adapternameindex.h"
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

// Unchanged once it is published.
struct AdapterTable {
    CStringSet AdapterNames;
    std::vector<RefPtr<IAppAdapterParse>> Adapters;  // in the order of the names
    AdapterNameIndex Index;
};

struct AdapterList {
    CriticalSection AdaptersLock;
    std::atomic<const AdapterTable*> Ready = nullptr;  // Table, once it has entries
    // Guarded by AdaptersLock.
    std::unique_ptr<AdapterTable> Table;
    std::uint32_t TriedIn = 0;  // generation of the rule files in which the list file gave nothing
};

// What the list file names; nothing when it cannot be read.
void ReadNames(AdapterList& list, CStringSet& names) {
    RuleFileStore& store = ProcessWide<RuleFileStore>();
    const std::uint32_t generation = store.Generation();
    if (list.TriedIn == generation) return;
    if (store.HasConfigFile(kListFile)) ReadIniKeys(ConfigFolder().c_str(), kListFile, kListSection, names);
    if (names.empty()) list.TriedIn = generation;
}

ResultCode MakeAdapters(AdapterTable& table) {
    for (const OwnedString& name : table.AdapterNames) {
        if (name.IsEmpty()) continue;
        auto adapter = RefPtr<IAppAdapterParse>::Adopt(new (std::nothrow) CAppAdapterParse(name));
        if (!adapter) return Fail(SmallCode::GeneralFailure);
        table.Adapters.push_back(std::move(adapter));
        table.Index.Add(name, table.Adapters.size() - 1);
    }
    return kSuccess;
}

}  // namespace

ResultCode LoadAdapters() {
    return AtBoundary(
        [] {
            AdapterList& list = ProcessWide<AdapterList>();
            const LockGuard guard(list.AdaptersLock);
            if (list.Ready.load(std::memory_order_relaxed) != nullptr) return kSuccess;
            CStringSet names;
            ReadNames(list, names);
            if (names.empty()) return kSuccess;
            list.Table = std::make_unique<AdapterTable>();
            list.Table->AdapterNames = std::move(names);
            const ResultCode rc = MakeAdapters(*list.Table);
            if (!list.Table->Adapters.empty()) list.Ready.store(list.Table.get(), std::memory_order_release);
            return rc;
        },
        [] { return Fail(SmallCode::GeneralFailure); });
}

ResultCode ApplyAdapters(IApp* app, CAppRuleSet* ruleSet) {
    if (app == nullptr || ruleSet == nullptr) return Fail(SmallCode::BadArgument);
    const AdapterTable* const table = ProcessWide<AdapterList>().Ready.load(std::memory_order_acquire);
    if (table == nullptr || app->IsAppx() != 0) return kSuccess;
    const auto& record = static_cast<const CApp&>(*app);
    return AtBoundary(
        [&] {
            std::vector<bool> found(table->Adapters.size());
            for (const OwnedString* text : {&record.pwszName, &record.pwszInstallLoc, &record.pwszKeyString}) {
                table->Index.Find(*text, found);
            }
            for (std::size_t i = 0; i < found.size(); ++i) {
                if (found[i]) Ignore(table->Adapters[i]->ApplyTo(app, ruleSet), u"the adapter has logged its failure");
            }
            return kSuccess;
        },
        [] { return Fail(SmallCode::GeneralFailure); });
}

}  // namespace roundup
