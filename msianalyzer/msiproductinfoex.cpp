#include <new>
#include <utility>

#include "msianalyzer/imsiproductinfo.h"
#include "msianalyzer/msiproductinfo.h"
#include "msianalyzer/suitecode.h"
#include "utility/boundary.h"

namespace roundup {

namespace {

// Copies out what CMSIProductInfo has read.
class CMSIProductInfoEx final : public IMSIProductInfo {
  public:
    ~CMSIProductInfoEx() override = default;
    void Release() override { delete this; }

    ResultCode Open(const char16_t* path) override {
        if (path == nullptr) return Fail(SmallCode::BadArgument);
        Ignore(Close(), u"nothing need be open");
        m_info.reset(new (std::nothrow) CMSIProductInfo);
        if (m_info == nullptr) return Fail(SmallCode::GeneralFailure);
        const ResultCode rc = m_info->Open(path);
        if (Failed(rc)) m_info.reset();
        return Failed(rc) ? Pass(rc) : kSuccess;
    }
    ResultCode Close() override {
        m_info.reset();
        return kSuccess;
    }
    ResultCode GetProductCode(OwnedString* text) override { return CopyProperty(u"ProductCode", text); }
    ResultCode GetProductName(OwnedString* text) override { return CopyProperty(u"ProductName", text); }
    ResultCode GetProductVersion(OwnedString* text) override { return CopyProperty(u"ProductVersion", text); }
    ResultCode GetProductIcon(std::unique_ptr<std::byte[]>* data, std::uint32_t* size) override {
        if (data == nullptr || size == nullptr) return Fail(SmallCode::BadArgument);
        data->reset();
        *size = 0;
        if (m_info == nullptr) return FailQuiet(SmallCode::ObjectMissing);
        return AtBoundary([&] { return m_info->GetIcon(*data, *size); },
                          [&] {
                              data->reset();
                              *size = 0;
                              return Fail(SmallCode::GeneralFailure);
                          });
    }
    ResultCode GetReserved1(std::uint32_t* number) override { return Number(number, 0); }
    ResultCode GetReserved2(std::uint32_t* number) override { return Number(number, 0); }
    ResultCode GetSuiteFlags(std::uint32_t* number) override {
        std::u16string_view code;
        if (m_info != nullptr) Ignore(m_info->GetProperty(u"ProductCode", code), u"no code is of no suite");
        return Number(number, ClassifySuiteCode(code));
    }

  private:
    ResultCode CopyProperty(std::u16string_view name, OwnedString* text) {
        if (text == nullptr) return Fail(SmallCode::BadArgument);
        if (m_info == nullptr) return FailQuiet(SmallCode::ObjectMissing);
        std::u16string_view value;
        Ignore(m_info->GetProperty(name, value), u"a missing property is an empty text");
        return text->Assign(value) ? kSuccess : Fail(SmallCode::BufferAllocation);
    }
    ResultCode Number(std::uint32_t* number, std::uint32_t value) const {
        if (number == nullptr) return Fail(SmallCode::BadArgument);
        if (m_info == nullptr) return FailQuiet(SmallCode::ObjectMissing);
        *number = value;
        return kSuccess;
    }

    std::unique_ptr<CMSIProductInfo> m_info;
};

}  // namespace

IMSIProductInfo* CreateMSIProductInfo() noexcept { return new (std::nothrow) CMSIProductInfoEx; }

}  // namespace roundup
