#include "externfuncinc/externfunccall.h"

#include <utility>

#include "utility/boundary.h"
#include "utility/sysinfo.h"

namespace roundup {

namespace {

void CopyText(WideChar* target, const char16_t* text) noexcept {
    if (text != nullptr) CopyBounded(target, text, kAppInfoTextSize);
}

}  // namespace

CExternFuncCall::CExternFuncCall(RefPtr<IAppManager> manager) : m_manager(std::move(manager)), m_is64Bit(Is64BitOS()) {}

// The manager goes first: the applications outlive its lists.
CExternFuncCall::~CExternFuncCall() { m_manager.Reset(); }

bool CExternFuncCall::Load(ProgressCallback callback, void* context) {
    if (!m_manager || callback == nullptr) return false;
    // Nobody can reach the former applications any more, and two catalogues at once need twice the memory.
    m_apps.clear();
    const auto loadAll = [&] {
        if (Failed(m_manager->LoadAppEx(callback, context, false))) return false;
        std::vector<RefPtr<IApp>> apps(m_manager->GetCount());
        for (std::uint32_t i = 0; i < apps.size(); ++i) {
            IApp* app = nullptr;
            if (Succeeded(m_manager->GetApp(&app, i))) apps[i] = RefPtr<IApp>::Adopt(app);
        }
        m_apps = std::move(apps);
        return true;
    };
    return AtBoundary(loadAll, [] { return false; });
}

bool CExternFuncCall::FillRecord(_RoundupAppInfo_* record, std::int32_t index) const {
    if (index < 0 || index >= GetAppCount()) return false;
    const IApp* const app = At(index);
    if (app == nullptr) return true;
    record->qwFlags = app->GetFlags();
    record->bFramework = app->IsFramework() != 0 ? 1 : 0;
    CopyText(record->wzName, app->GetName());
    CopyText(record->wzPublisher, app->GetPublisher());
    CopyText(record->wzInstallDate, app->GetInstallDate());
    AppRecordEx inner{};
    app->FillAppInfo(inner);
    CopyText(record->wzKeyString, inner.wzKeyString);
    CopyText(record->wzInstallLoc, inner.wzInstallLoc);
    CopyText(record->wzRealInstallLoc, inner.wzRealInstallLoc);
    record->qwSize = static_cast<std::uint64_t>(app->GetEstimatedSize());
    return true;
}

const std::byte* CExternFuncCall::GetIconData(std::int32_t index) const {
    const IApp* const app = At(index);
    return app != nullptr ? app->GetIconData() : nullptr;
}

std::uint32_t CExternFuncCall::GetIconSize(std::int32_t index) const {
    const IApp* const app = At(index);
    return app != nullptr ? app->GetIconDataSize() : 0;
}

const IApp* CExternFuncCall::At(std::int32_t index) const noexcept { return Share(index).Get(); }

RefPtr<IApp> CExternFuncCall::Share(std::int32_t index) const noexcept {
    if (index < 0 || index >= GetAppCount()) return nullptr;
    return m_apps[static_cast<std::size_t>(index)];
}

}  // namespace roundup
