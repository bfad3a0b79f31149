#include "appcenter/appeunm/mergelists.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "appcenter/appeunm/appmatch.h"
#include "appcenter/appeunm/firstindex.h"
#include "appcenter/appeunm/linksubapp.h"
#include "utility/casemap.h"
#include "utility/log.h"

namespace roundup {
namespace {

// Finds the first entry whose key is equal and whose name is too, if both have one. What follows from that rule keeps
// the index small: an entry without a name is merged into whatever stands first under its key, so at most the first
// one of a key can be without. It is the answer for every name; else the first one with that name is.
class DuplicateIndex {
  public:
    explicit DuplicateIndex(const CAppList& list) : m_list(list) {}

    std::size_t Find(const CApp& app) const {
        const auto first = m_firstOfKey.find(app.pwszKeyString.View());
        if (first == m_firstOfKey.end()) return kNoPosition;
        if (app.pwszName.IsEmpty() || m_list[first->second]->pwszName.IsEmpty()) return first->second;
        const auto named = m_firstOfName.find({app.pwszKeyString, app.pwszName});
        return named != m_firstOfName.end() ? named->second : kNoPosition;
    }
    // Called again when an entry without a name has been given one.
    void Add(std::size_t position) {
        const CApp& app = *m_list[position];
        m_firstOfKey.try_emplace(app.pwszKeyString.View(), position);
        if (!app.pwszName.IsEmpty()) m_firstOfName.try_emplace({app.pwszKeyString, app.pwszName}, position);
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
    std::unordered_map<std::u16string_view, std::size_t, NoCaseHash, NoCaseEqual> m_firstOfKey;
    std::unordered_map<KeyAndName, std::size_t, Hash> m_firstOfName;
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
    DuplicateIndex index(unique);
    for (RefPtr<CApp>& app : uninstalls) {
        if (goOn.IsContinue() == 0) break;
        const bool hasKey = !app->pwszKeyString.IsEmpty();
        const std::size_t first = hasKey ? index.Find(*app) : kNoPosition;
        if (first != kNoPosition) {
            unique[first]->MergeFrom(*app);
            index.Add(first);
            app.Reset();
            continue;
        }
        unique.push_back(std::move(app));
        if (hasKey) index.Add(unique.size() - 1);
    }
    return unique;
}

// Row 2.
void MergeInstallRecords(const IContinue& goOn, CAppList& apps, CAppList& installs) {
    const GapCloser closer(installs);
    CAppList merged;  // goes behind the index, whose keys are theirs
    InstallIndex index(installs);
    for (const RefPtr<CApp>& app : apps) {
        if (goOn.IsContinue() == 0) break;
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
    for (std::size_t i = 0; i < main.size(); ++i) {
        for (const Guid& code : main[i]->RelatedCodes) claims.Add(code, i);
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
