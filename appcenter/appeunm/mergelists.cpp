#include "appcenter/appeunm/mergelists.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "appcenter/appeunm/appmatch.h"
#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/linksubapp.h"
#include "appcenter/appeunm/lookahead.h"
#include "utility/casemap.h"
#include "utility/flatmap.h"
#include "utility/log.h"

namespace roundup {
namespace {

// Finds the first entry whose key is equal and whose name is too, if both have one. What follows from that rule keeps
// the index small: an entry without a name is merged into whatever stands first under its key, so at most the first
// one of a key can be without. It is the answer for every name; else the first one with that name is. Names are looked
// at, and kept, for the few keys alone that have several.
class DuplicateIndex {
  public:
    // The list will have so many entries at most.
    DuplicateIndex(const CAppList& list, std::size_t most) : m_list(list) { m_keys.Reserve(most); }

    // The position to merge the entry into. Without one the entry has been noted as the one that will stand next on
    // the list.
    std::size_t FindOrNote(const CApp& app) {
        const std::size_t next = m_list.size();
        const auto [first, isNew] = m_keys.TryAdd(app.pwszKeyString, next);
        if (isNew) return kNoPosition;
        const OwnedString& name = m_list[first]->pwszName;
        if (app.pwszName.IsEmpty() || name.IsEmpty() || EqualsNoCase(app.pwszName, name)) {
            return first;
        }
        const auto [named, isNewName] = m_names.try_emplace({app.pwszKeyString, app.pwszName}, next);
        return isNewName ? kNoPosition : named->second;
    }

  private:
    struct KeyAndName {
        std::u16string_view key;
        std::u16string_view name;
        bool operator==(const KeyAndName& other) const noexcept {
            return EqualsNoCase(key, other.key) && EqualsNoCase(name, other.name);
        }
    };
    struct Hash {
        std::size_t operator()(const KeyAndName& text) const noexcept {
            return HashNoCase(text.key) * 31 + HashNoCase(text.name);
        }
    };

    const CAppList& m_list;
    FlatMap<std::u16string_view, std::size_t, NoCaseHash, NoCaseEqual> m_keys;
    std::unordered_map<KeyAndName, std::size_t, Hash> m_names;  // but for the first of each key
};

// Install records by what an application with a code finds them by: the code, or the package of one without a code.
class InstallIndex {
  public:
    explicit InstallIndex(const CAppList& installs) : m_installs(installs) {
        for (std::size_t i = 0; i < installs.size(); ++i) {
            const CApp& record = *installs[i];
            if (!record.ProductCode.IsNil()) {
                m_byCode.Add(record.ProductCode, i);
            } else if (!record.pwszMsiPath.IsEmpty()) {
                m_byPackage.Add(record.pwszMsiPath, i);
            }
        }
    }
    std::size_t Find(const CApp& app) {
        const std::size_t byCode = m_byCode.First(app.ProductCode, m_installs);
        if (app.pwszMsiPath.IsEmpty()) return byCode;
        return std::min(byCode, m_byPackage.First(app.pwszMsiPath, m_installs));
    }

  private:
    const CAppList& m_installs;
    FirstByCode m_byCode;
    FirstByText m_byPackage;
};

bool IsPatch(const CApp& record) { return !record.ProductCode.IsNil() && EndsWithNoCase(record.pwszMsiPath, u".msp"); }

// A patch has no key of its own. False when it could not be given one.
bool NamePatch(CApp& patch, const CApp& product) {
    if (patch.pwszKeyString.IsEmpty()) {
        if (product.pwszKeyString.IsEmpty()) {
            patch.pwszKeyString = FormatGuid(patch.ProductCode, GuidForm::Braced);
        } else {
            AssignString(patch.pwszKeyString, product.pwszKeyString);
        }
    }
    if (patch.pwszKeyString.IsEmpty()) return false;
    if (patch.pwszName.IsEmpty()) AssignString(patch.pwszName, product.pwszName);
    return true;
}

}  // namespace

// Row 1.
CAppList RemoveDuplicates(const IContinue& goOn, CAppList uninstalls) {
    CAppList unique;
    unique.reserve(uninstalls.size());
    DuplicateIndex index(unique, uninstalls.size());
    for (std::size_t i = 0; i < uninstalls.size(); ++i) {
        if (goOn.IsContinue() == 0) break;
        LookAhead<&CApp::pwszKeyString>(uninstalls, i);
        RefPtr<CApp>& app = uninstalls[i];
        const std::size_t first = app->pwszKeyString.IsEmpty() ? kNoPosition : index.FindOrNote(*app);
        if (first == kNoPosition) {
            unique.push_back(std::move(app));
        } else {
            unique[first]->MergeFrom(*app);
            app.Reset();
        }
    }
    return unique;
}

// Row 2.
void MergeInstallRecords(const IContinue& goOn, CAppList& apps, CAppList& installs) {
    const GapCloser closer(installs);
    CAppList merged;  // goes behind the index, whose keys are theirs
    InstallIndex index(installs);
    for (std::size_t i = 0; i < apps.size(); ++i) {
        if (goOn.IsContinue() == 0) break;
        LookAhead<&CApp::ProductCode, &CApp::pwszMsiPath>(apps, i);
        const RefPtr<CApp>& app = apps[i];
        if (app->ProductCode.IsNil()) continue;
        const std::size_t found = index.Find(*app);
        if (found == kNoPosition) continue;
        app->MergeFrom(*installs[found]);
        merged.push_back(std::move(installs[found]));
    }
}

// Row 3. A claim is used up by the patch that it found, so the claims of one code serve its patches one after the
// other, in list order.
void AttachPatches(const IContinue& goOn, CAppList& main, CAppList& installs) {
    const GapCloser closer(installs);
    FirstByCode claims;
    for (const RefPtr<CApp>& patch : installs) {
        if (IsPatch(*patch)) claims.Want(patch->ProductCode);
    }
    if (claims.IsEmpty()) return;
    for (std::size_t i = 0; i < main.size(); ++i) {
        LookAhead<&CApp::RelatedCodes>(main, i);
        for (const Guid& code : main[i]->RelatedCodes) claims.AddWanted(code, i);
    }
    for (RefPtr<CApp>& patch : installs) {
        if (goOn.IsContinue() == 0) break;
        if (!IsPatch(*patch)) continue;
        const Guid code = patch->ProductCode;
        const auto isOpen = [&](std::size_t position) { return main[position]->RelatedCodes.contains(code); };
        const std::size_t found = claims.FirstLeft(code, isOpen);
        if (found == kNoPosition || !NamePatch(*patch, *main[found])) continue;
        main[found]->RelatedCodes.erase(code);
        LinkSubApp(*main[found], std::move(patch), LinkReason::Code);
    }
}

void LogRemaining(const char16_t* what, const CApp& app) {
    if (!app.pwszName.IsEmpty()) TraceLine(u"[TRC] %s name : %s", what, app.pwszName);
    if (!app.pwszKeyString.IsEmpty()) TraceLine(u"[TRC] %s key : %s", what, app.pwszKeyString);
    if (!app.pwszMsiPath.IsEmpty()) TraceLine(u"[TRC] %s msi : %s", what, app.pwszMsiPath);
}

}  // namespace roundup
