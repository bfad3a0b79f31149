#include "tests/appcenter/catalogue_support.h"

#include "appcenter/appeunm/uninstallsource.h"
#include "utility/formattext.h"
#include "utility/utf.h"

namespace roundup {
namespace {

std::uint8_t OnPercent(std::uint32_t percent, void* context) {
    auto& run = *static_cast<LoadRun*>(context);
    run.percents.push_back(percent);
    return percent == run.cancelAt ? 0 : 1;
}

class AlwaysOn final : public IContinue {
  public:
    std::uint8_t IsContinue() const noexcept override { return 1; }
};

}  // namespace

std::string TextBytes(std::u16string_view text) {
    std::string bytes(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    return bytes.append(2, '\0');
}

AppList ReadSource(KeyHandle root, bool view64) {
    const AlwaysOn goOn;
    AppList list;
    { const UninstallEnumerator source(goOn, list, root, view64); }
    return list;
}

ResultCode LoadRun::Load(CAppManager& manager, bool useCache) {
    percents.clear();
    return manager.LoadAppEx(&OnPercent, this, useCache);
}

CAppManager& CatalogueTest::Load() {
    m_manager.Reset();
    Start();
    m_manager = RefPtr<CAppManager>::Adopt(new CAppManager);
    LoadRun run;
    EXPECT_TRUE(Succeeded(run.Load(*m_manager)));
    return *m_manager;
}

std::vector<std::string> Keys(const AppList& apps) {
    std::vector<std::string> keys;
    for (const RefPtr<IApp>& app : apps) {
        const auto& entry = static_cast<const CApp&>(*app);
        keys.push_back(ToUtf8(FormatText(u"%s/%I64x", entry.pwszKeyString, entry.qwFlags)));
    }
    return keys;
}

}  // namespace roundup
