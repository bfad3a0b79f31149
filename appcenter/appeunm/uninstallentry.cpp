#include "appcenter/appeunm/uninstallentry.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>

#include "appcenter/app/app.h"
#include "appcenter/app/normalize.h"
#include "appcenter/appeunm/displayicon.h"
#include "utility/casemap.h"
#include "utility/commandpaths.h"
#include "utility/icon2mem.h"
#include "utility/pathtext.h"
#include "utility/specialfolders.h"

namespace roundup {
namespace {

void Move(EntryValues& values, EntryText text, OwnedString& target) { target = values.Take(text); }

// A braced code, or the packed code of the installer's registry; any other name has none.
Guid CodeOfKeyName(std::u16string_view name) noexcept {
    const Guid code = ParseGuid(name, GuidForm::Braced);
    return code.IsNil() ? ParseGuid(name, GuidForm::Packed) : code;
}

// The product that an update belongs to, from the place of its books: one name behind the folder of all updates. Books
// in that folder itself, and books elsewhere, name none: that is empty.
std::u16string_view UpdatedProduct(std::u16string_view registryLocation) noexcept {
    constexpr std::u16string_view kUpdates = u"HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Updates\\";
    static_assert(kUpdates.size() == 46);
    if (!StartsWithNoCase(registryLocation, kUpdates)) return {};
    const std::u16string_view rest = registryLocation.substr(kUpdates.size());
    return rest.substr(0, rest.find(u'\\'));
}

void FillParent(CApp& app, EntryValues& values) {
    Move(values, EntryText::ParentDisplayName, app.pwszParentDisplayName);
    Move(values, EntryText::ParentKeyName, app.pwszParentKeyName);
    if (app.pwszParentDisplayName.IsEmpty() && app.pwszParentKeyName.IsEmpty()) return;
    const std::u16string_view product = UpdatedProduct(values.Text(EntryText::RegistryLocation));
    if (!product.empty() && !EqualsNoCase(product, app.pwszParentDisplayName)) {
        AssignString(app.pwszParentDisplayName, product);
    }
}

void AddRelatedCodes(CApp& app, std::u16string_view codes) {
    while (!codes.empty()) {
        const std::size_t end = std::min(codes.find(u'\0'), codes.size());
        if (const Guid code = ParseGuid(codes.substr(0, end), GuidForm::Braced); !code.IsNil()) {
            app.RelatedCodes.insert(code);
        }
        codes.remove_prefix(std::min(end + 1, codes.size()));
    }
}

// True when the program was found under its long path: all folders on the way to it have their long names then too.
bool FillUninstallProgram(CApp& app, EntryValues& values) {
    if (!values.Has(EntryText::UninstallString)) return false;
    CommandPaths paths(values.Text(EntryText::UninstallString));
    if (paths.First() == nullptr) return false;
    if (app.pwszInstallLoc.IsEmpty()) AssignString(app.pwszInstallLoc, paths.Last());
    app.pwszUnInstallProgram = paths.Take();
    return paths.IsLong();
}

void FillIcon(CApp& app, EntryValues& values) {
    if (!values.Has(EntryText::DisplayIcon)) return;
    const DisplayIcon icon = ParseDisplayIcon(values.Text(EntryText::DisplayIcon));
    AssignString(app.pwszIconProgram, icon.path);
    if (!app.pwszIconProgram.IsEmpty()) {
        LoadIconBytes(app.pwszIconProgram.Get(), icon.index, app.pIconData, app.dwIconDataSize);
    }
    if (app.pwszInstallLoc.IsEmpty()) AssignString(app.pwszInstallLoc, app.pwszIconProgram);
    // The location as first read is kept here alone: an entry without an icon has none.
    AssignString(app.pwszOriginalInstallLoc, app.pwszInstallLoc);
}

// The folder of a program that was just found, as it is written there.
bool IsFolderOf(std::u16string_view folder, std::u16string_view program) noexcept {
    return program.size() > folder.size() && program[folder.size()] == u'\\' &&
           EqualsExactly(program.substr(0, folder.size()), folder);
}

// As NormalizePaths, for the paths that an entry has. What was found a moment ago is not asked for a second time: the
// program, and the location when it is one of the program's folders.
void ExpandPaths(CApp& app, bool programIsLong) {
    CleanPath(app.pwszInstallLoc);
    if (programIsLong && IsFolderOf(app.pwszInstallLoc, app.pwszUnInstallProgram)) {
        DropIfSystemRoot(app.pwszInstallLoc);
    } else {
        NormalizeLocation(app.pwszInstallLoc);
    }
    OwnedString& program = app.pwszUnInstallProgram;
    const bool isExpanded = programIsLong && IsCleanPath(program) && program.View().front() != u'%';
    if (!program.IsEmpty() && !isExpanded) ExpandPath(program);
    if (!app.pwszIconProgram.IsEmpty()) ExpandPath(app.pwszIconProgram);
    if (!app.pwszMsiPath.IsEmpty()) ExpandPath(app.pwszMsiPath);
}

void FillLocations(CApp& app, EntryValues& values) {
    for (const EntryText text : {EntryText::InstallLocation, EntryText::InnoAppPath, EntryText::LocationRoot}) {
        if (app.pwszInstallLoc.IsEmpty()) Move(values, text, app.pwszInstallLoc);
    }
    const bool programIsLong = FillUninstallProgram(app, values);
    FillIcon(app, values);
    if (!app.pwszInstallLoc.IsEmpty()) ExpandPaths(app, programIsLong);
}

std::uint64_t EntryFlags(const EntryValues& values, bool subordinate, const EntryOrigin& origin) noexcept {
    std::uint64_t flags = 0;
    if (values.IsInstallerProduct()) flags |= AppFlags::kWindowsInstaller;
    if (subordinate) flags |= AppFlags::kNotTopLevel;
    if (origin.view64 && origin.is64BitOS) flags |= AppFlags::k64Bit;
    if (origin.currentUser) flags |= AppFlags::kCurrentUser;
    if (origin.view64) flags |= AppFlags::k64BitView;
    return flags;
}

}  // namespace

void FillFromEntry(CApp& app, OwnedString keyName, EntryValues& values, const EntryOrigin& origin) {
    app.ProductCode = CodeOfKeyName(keyName);
    app.pwszKeyString = std::move(keyName);
    app.qwFlags = EntryFlags(values, values.IsSubordinate(), origin);
    app.dwOrigins = origin.currentUser ? (origin.view64 ? AppOrigin::kUser64 : AppOrigin::kUser32)
                                       : (origin.view64 ? AppOrigin::kMachine64 : AppOrigin::kMachine32);
    app.llEstimatedSize = values.EstimatedBytes();
    Move(values, EntryText::DisplayName, app.pwszName);
    Move(values, EntryText::LocalPackage, app.pwszMsiPath);
    Move(values, EntryText::DisplayVersion, app.pwszVersion);
    Move(values, EntryText::Publisher, app.pwszPublisher);
    Move(values, EntryText::InstallDate, app.pwszInstallDate);
    FillParent(app, values);
    AddRelatedCodes(app, values.Text(EntryText::ProductCodes));
    FillLocations(app, values);
}

}  // namespace roundup
