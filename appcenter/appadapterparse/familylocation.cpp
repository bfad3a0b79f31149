// "Adobe After Effects CC 2018" in the folder "C:\Program Files\Adobe":
//
//     words             Adobe | After Effects | CC 2018
//     product word      After Effects
//     version words     CC, 2018
//     candidates        the folders below that have the product word in their names, in the folder's order
//     chosen            the one that holds most version words, the first among equals
#include "appcenter/appadapterparse/familylocation.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "appcenter/app/app.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/filesearch.h"
#include "utility/mountpoints.h"

namespace roundup {
namespace {

constexpr std::u16string_view kFamily = u"Adobe";
constexpr std::u16string_view kVersionStarts[] = {u"CS", u"CC", u"20"};

struct FamilyName {
    std::u16string product;  // joined with one blank between two words
    std::vector<std::u16string_view> versions;
};

bool IsVersionWord(std::u16string_view word) noexcept {
    for (const std::u16string_view start : kVersionStarts) {
        if (StartsWithNoCase(word, start)) return true;
    }
    return false;
}

FamilyName SplitName(std::u16string_view name) {
    FamilyName parts;
    for (bool first = true; !name.empty();) {
        const std::u16string_view word = name.substr(0, name.find(u' '));
        name.remove_prefix(word.size() < name.size() ? word.size() + 1 : word.size());
        if (word.empty()) continue;
        const bool isMaker = first && StartsWithNoCase(word, kFamily);
        first = false;
        if (isMaker) continue;
        if (IsVersionWord(word)) {
            parts.versions.push_back(word);
            continue;
        }
        if (!parts.product.empty()) parts.product += u' ';
        parts.product += word;
    }
    return parts;
}

std::size_t CountVersions(std::u16string_view folder, const FamilyName& name) noexcept {
    std::size_t count = 0;
    for (const std::u16string_view version : name.versions) count += ContainsNoCase(folder, version) ? 1 : 0;
    return count;
}

// The chosen folder below base; empty without a candidate.
std::u16string FindFolder(const std::u16string& base, const FamilyName& name) {
    FileSearch search((base + u"\\*").c_str());
    std::u16string best;
    std::size_t bestCount = 0;
    while (search.Next()) {
        const std::u16string_view folder = search.Name();
        if (!search.IsFolder() || !ContainsNoCase(folder, name.product)) continue;
        const std::size_t count = CountVersions(folder, name);
        if (!best.empty() && count <= bestCount) continue;
        best = folder;
        bestCount = count;
    }
    return best;
}

// Where a mount point leads; the path itself when it is none.
std::u16string TargetOf(std::u16string path) {
    FixedText<520> target;
    if (GetMountTarget(path.c_str(), target) && !target.IsEmpty()) path = target.View();
    return path;
}

}  // namespace

bool IsFamilyMember(const CApp& app) {
    return ContainsNoCase(app.pwszName, kFamily) || ContainsNoCase(app.pwszInstallLoc, kFamily) ||
           ContainsNoCase(app.pwszKeyString, kFamily);
}

void FixFamilyLocation(CApp& app) {
    if (app.bLocationNarrowed || app.pwszInstallLoc.IsEmpty() || !ContainsNoCase(app.pwszName, kFamily)) return;
    const FamilyName name = SplitName(app.pwszName);
    if (name.product.empty()) return;
    const FsRedirectGuard guard;
    std::u16string base = TargetOf(std::u16string(app.pwszInstallLoc.View()));
    if (base.back() == u'\\') base.pop_back();
    const std::u16string folder = FindFolder(base, name);
    if (folder.empty()) return;
    OwnedString location;
    OwnedString real;
    std::u16string_view old = app.pwszInstallLoc;
    if (old.back() == u'\\') old.remove_suffix(1);
    if (!AssignConcat3(location, old, u"\\", folder) || !AssignString(real, TargetOf(base + u"\\" + folder))) return;
    app.pwszInstallLoc = std::move(location);
    app.pwszRealInstallLoc = std::move(real);
    app.bLocationNarrowed = true;
}

std::u16string FindFamilyFolder(std::u16string_view displayName, const std::u16string& base) {
    const FamilyName name = SplitName(displayName);
    return name.product.empty() ? std::u16string() : FindFolder(base, name);
}

}  // namespace roundup
