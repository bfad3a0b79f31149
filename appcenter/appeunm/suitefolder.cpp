#include "appcenter/appeunm/suitefolder.h"

#include <string>

#include "appcenter/app/app.h"
#include "appcenter/appadapterparse/familylocation.h"
#include "utility/fileinfo.h"
#include "utility/fixedtext.h"
#include "utility/mountpoints.h"

namespace roundup {
namespace {

// Where a mount point leads; the folder itself when it is none; empty when its target cannot be had.
std::u16string FollowFolder(std::u16string folder) {
    if (!IsReparseFolder(folder.c_str())) return folder;
    FixedText<520> target;
    GetMountTarget(folder.c_str(), target);
    return std::u16string(target);
}

}  // namespace

// Row 17. Adapters narrow the same locations, and the folder of a product may hold one that is named after it as well.
bool CorrectSuiteFolder(CApp& app) {
    if (app.bLocationNarrowed || app.pwszInstallLoc.IsEmpty() || !ContainsNoCase(app.pwszName, u"Adobe")) return false;
    std::u16string folder = FollowFolder(std::u16string(app.pwszInstallLoc));
    if (folder.empty()) return false;
    if (folder.back() == u'\\') folder.pop_back();
    const std::u16string product = FindFamilyFolder(app.pwszName, folder);
    if (product.empty()) return false;

    folder.append(u"\\").append(product);
    const std::u16string target = FollowFolder(folder);
    AssignString(app.pwszInstallLoc, std::u16string(app.pwszInstallLoc) + u"\\" + product);
    AssignString(app.pwszRealInstallLoc, target.empty() ? folder : target);
    app.bLocationNarrowed = true;
    return true;
}

}  // namespace roundup
