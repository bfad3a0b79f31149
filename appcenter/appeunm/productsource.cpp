#include "appcenter/appeunm/productsource.h"

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

#include "appcenter/app/normalize.h"
#include "appcenter/appeunm/packagequeue.h"
#include "utility/formattext.h"
#include "utility/guid.h"
#include "utility/sysinfo.h"

// The books stand below UserData, in a branch for each account and one for the machine:
//
//     <account>\Products\<packed code>\InstallProperties     the values of an Uninstall entry, and the cached package
//     <account>\Products\<packed code>\Patches               "AllPatches", and a subkey for each with its name
//     <account>\Patches\<packed code>                        the cached package of a patch
//
// An object goes to the queue with all that is known of it, since the worker may take it at once.

namespace roundup {
namespace {

constexpr const char16_t* kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";

// Calls each with the name of every subkey, until it answers false. A name that cannot be read is passed over.
template <class Each>
void ForEachSubKey(CWFYRegKey& key, const IContinue& goOn, Each&& each) {
    while (goOn.IsContinue() != 0) {
        OwnedString name;
        if (auto rc = key.EnumKey(name); Failed(rc)) {
            if (Small(rc) == SmallCode::NoMoreItems) return;
            Skip(rc);
            continue;
        }
        if (!each(name)) return;
    }
}

void AddPatchCodes(std::u16string_view list, CApp& app) {
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(u'\0'), list.size());
        const Guid code = ParseGuid(list.substr(0, end), GuidForm::Packed);
        if (!code.IsNil()) app.RelatedCodes.insert(code);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
}

RefPtr<CApp> MakeApp() {
    auto app = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
    if (app) app->dwOrigins = AppOrigin::kInstaller;
    return app;
}

// A value that is absent leaves the field as it was. One that is a list of texts has more of them behind the first.
void TakeText(CWFYRegKey& key, const char16_t* name, OwnedString& text) {
    Ignore(key.GetString(name, text), u"a product need not have the value");
    text.Measure();
}

}  // namespace

ProductEnumerator::ProductEnumerator(const IContinue& goOn, AppList& installs)
    : m_goOn(goOn), m_installs(installs), m_view64(Is64BitOS()) {
    Start();
}

void ProductEnumerator::Walk() {
    PackageQueue queue(m_goOn, m_installs);
    ReadBooks(queue);
    queue.ScanInstallerFolder();
}

void ProductEnumerator::ReadBooks(PackageQueue& queue) {
    CWFYRegKey userData;
    if (auto rc = userData.Open(kHkeyLocalMachine, kUserData, m_view64, true); Failed(rc)) {
        Ignore(rc, u"a machine may have no books");
        return;
    }
    ForEachSubKey(userData, m_goOn, [&](const OwnedString& user) {
        ReadProducts(userData, user, queue);
        return true;
    });
}

void ProductEnumerator::ReadProducts(CWFYRegKey& userData, const OwnedString& user, PackageQueue& queue) {
    CWFYRegKey products;
    const std::u16string path = FormatText(u"%s\\Products", user);
    if (Failed(products.Open(userData.GetKeyHandle(), path.c_str(), m_view64, true))) return;
    const Branch branch{userData, user, products};
    ForEachSubKey(products, m_goOn, [&](const OwnedString& packed) {
        const ResultCode rc = ReadProduct(branch, packed, queue);
        if (Failed(rc)) Ignore(Pass(rc), u"the products read so far stay");
        return Succeeded(rc);
    });
}

// What memory is short for is the one failure, and its line is the caller's.
ResultCode ProductEnumerator::ReadProduct(const Branch& branch, const OwnedString& packed, PackageQueue& queue) {
    CWFYRegKey properties;
    const std::u16string path = FormatText(u"%s\\InstallProperties", packed);
    if (Failed(properties.Open(branch.products.GetKeyHandle(), path.c_str(), m_view64, true))) return kSuccess;
    RefPtr<CApp> app = MakeApp();
    if (!app) return FailQuiet(SmallCode::ObjectAllocation);
    app->ProductCode = ParseGuid(packed, GuidForm::Packed);
    FillProduct(properties, *app);
    std::vector<RefPtr<CApp>> patches;
    ReadPatches(branch, packed, *app, patches);
    queue.AddIfNew(std::move(app));
    for (RefPtr<CApp>& patch : patches) queue.AddIfNew(std::move(patch));
    return kSuccess;
}

void ProductEnumerator::FillProduct(CWFYRegKey& properties, CApp& app) {
    m_values.Read(properties);
    // Asked before the texts that it looks at are moved away.
    if (m_values.IsSubordinate()) app.qwFlags |= AppFlags::kNotTopLevel;
    if (m_values.IsInstallerProduct()) app.qwFlags |= AppFlags::kWindowsInstaller;
    app.llEstimatedSize = m_values.EstimatedBytes();
    app.pwszName = m_values.Take(EntryText::DisplayName);
    app.pwszInstallLoc = m_values.Take(EntryText::InstallLocation);
    app.pwszInstallDate = m_values.Take(EntryText::InstallDate);
    app.pwszMsiPath = m_values.Take(EntryText::LocalPackage);
    app.pwszVersion = m_values.Take(EntryText::DisplayVersion);
    app.pwszPublisher = m_values.Take(EntryText::Publisher);
    TakeText(properties, u"InstallSource", app.pwszInstallSource);
    AssignString(app.pwszOriginalInstallLoc, app.pwszInstallLoc);
    NormalizePaths(app);
}

void ProductEnumerator::ReadPatches(const Branch& branch, const OwnedString& packed, CApp& app,
                                    std::vector<RefPtr<CApp>>& patches) {
    CWFYRegKey patchesKey;
    const std::u16string path = FormatText(u"%s\\Patches", packed);
    if (Failed(patchesKey.Open(branch.products.GetKeyHandle(), path.c_str(), m_view64, true))) return;
    OwnedString codes;
    Ignore(patchesKey.GetString(u"AllPatches", codes), u"a product need not have patches");
    // An empty list is not an empty text: it has its end.
    if (*codes.Text() == u'\0') return;
    AddPatchCodes(codes, app);
    ForEachSubKey(patchesKey, m_goOn, [&](const OwnedString& patch) {
        const ResultCode rc = ReadPatch(branch, patchesKey, patch, app, patches);
        if (Failed(rc)) Ignore(Pass(rc), u"the patches read so far stay");
        return Succeeded(rc);
    });
}

ResultCode ProductEnumerator::ReadPatch(const Branch& branch, CWFYRegKey& patchesKey, const OwnedString& packed,
                                        CApp& app, std::vector<RefPtr<CApp>>& patches) const {
    const Guid code = ParseGuid(packed, GuidForm::Packed);
    if (!code.IsNil()) app.RelatedCodes.insert(code);
    CWFYRegKey named;
    if (Failed(named.Open(patchesKey.GetKeyHandle(), packed.Text(), m_view64, true))) return kSuccess;
    RefPtr<CApp> patch = MakeApp();
    if (!patch) return FailQuiet(SmallCode::ObjectAllocation);
    patch->ProductCode = code;
    TakeText(named, u"DisplayName", patch->pwszName);
    CWFYRegKey cached;
    const std::u16string path = FormatText(u"%s\\Patches\\%s", branch.user, packed);
    if (Failed(cached.Open(branch.userData.GetKeyHandle(), path.c_str(), m_view64, true))) return kSuccess;
    TakeText(cached, u"LocalPackage", patch->pwszMsiPath);
    patches.push_back(std::move(patch));
    return kSuccess;
}

}  // namespace roundup
