// Where an application lies.
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/app/forest.h"
#include "appcenter/app/normalize.h"
#include "utility/fileinfo.h"
#include "utility/fixedtext.h"
#include "utility/mountpoints.h"
#include "utility/pathtext.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

void FollowMountPoints(CApp& app) {
    NormalizeLocation(app.pwszInstallLoc);
    if (app.pwszInstallLoc.IsEmpty()) return;
    FixedText<520> resolved;
    const bool found = ResolveMountPoints(app.pwszInstallLoc.Get(), resolved);
    OwnedString real(found ? resolved.View() : app.pwszInstallLoc.View());
    if (!real.IsNull()) app.pwszRealInstallLoc = std::move(real);
}

}  // namespace

void NormalizeLocation(OwnedString& location) {
    if (location.IsEmpty()) return;
    CleanPath(location);
    const std::u16string_view path = location;
    const std::size_t last = path.rfind(u'\\');
    if (last != std::u16string_view::npos && (last + 1 == path.size() || IsFilePath(location.Get()))) {
        location.Truncate(last);
    }
    if (!location.IsEmpty()) ExpandPath(location);
    if (!location.IsEmpty()) DropIfSystemRoot(location);
}

void NormalizePaths(CApp& app) {
    if (app.pwszInstallLoc.IsEmpty()) return;
    NormalizeLocation(app.pwszInstallLoc);
    for (OwnedString* path : {&app.pwszUnInstallProgram, &app.pwszIconProgram, &app.pwszMsiPath, &app.pwszInstallSource,
                              &app.pwszRealInstallLoc}) {
        if (!path->IsEmpty()) ExpandPath(*path);
    }
}

bool CApp::HasLocation() const {
    return AnyInForest(
        *this,
        [](const CApp& app) {
            return !app.pwszMsiPath.IsEmpty() || !app.pwszInstallLoc.IsEmpty() || !app.pwszUnInstallProgram.IsEmpty();
        },
        [](const IApp&) { return false; });
}

void CApp::ResolveRealLocation() {
    AnyInForest(
        *this,
        [](CApp& app) {
            FollowMountPoints(app);
            return false;
        },
        [](const IApp&) { return false; });
}

}  // namespace roundup
