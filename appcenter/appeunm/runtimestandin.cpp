#include "appcenter/appeunm/runtimestandin.h"

#include <new>
#include <string_view>

#include "appcenter/app/iapp.h"
#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/ownedstring.h"

namespace roundup {
namespace {

constexpr std::u16string_view kProduct = u"Microsoft Visual C++ ";
constexpr std::size_t kYearDigits = 4;

// 0 unless the text begins with a number of four digits.
std::uint32_t LeadingYear(std::u16string_view text) noexcept {
    std::uint32_t year = 0;
    std::size_t digits = 0;
    while (digits < text.size() && text[digits] >= u'0' && text[digits] <= u'9') {
        if (digits == kYearDigits) return 0;
        year = year * 10 + (text[digits++] - u'0');
    }
    return digits == kYearDigits ? year : 0;
}

class RuntimeStandIn final : public CKvObject<IKvObject>, public IHearthRuntime {
  public:
    std::uint32_t AddRef() override { return CKvObject::AddRef(); }
    std::uint32_t Release() override { return CKvObject::Release(); }

    bool ClassifyApp(IApp* app, RuntimeRecord* record) override {
        if (app == nullptr || record == nullptr || app->GetName() == nullptr) return false;
        const std::u16string_view name = app->GetName();
        if (!StartsWithNoCase(name, kProduct)) return false;
        const std::uint32_t year = LeadingYear(name.substr(kProduct.size()));
        const bool isX64 = ContainsNoCase(name, u"x64");
        if (year == 0 || !ContainsNoCase(name, u"Redistributable")) return false;
        if (!isX64 && !ContainsNoCase(name, u"x86")) return false;
        record->kind = isX64 ? RuntimeRecord::kKindBit : 0;
        record->year = year;
        return true;
    }
    std::uint8_t CheckApp(void* /*argument*/, RuntimeRecord* /*record*/, std::uint32_t* out) override {
        if (out != nullptr) *out = 0;
        return 1;
    }
    void AddRuntimeRules(IApp* /*app*/, CAppRuleSet* /*ruleSet*/) override {}
};

}  // namespace

RefPtr<IHearthRuntime> OpenRuntime() {
    IHearthRuntime* runtime = CurrentMachine().ClosedLibraries().OpenHearthRuntime();
    if (runtime == nullptr) runtime = new (std::nothrow) RuntimeStandIn;
    return RefPtr<IHearthRuntime>::Adopt(runtime);
}

}  // namespace roundup
