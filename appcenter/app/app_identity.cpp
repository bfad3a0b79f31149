// When two records stand for the same application, and what becomes of them then.
#include <algorithm>

#include "appcenter/app/app.h"
#include "appcenter/app/forest.h"
#include "utility/casemap.h"
#include "utility/log.h"

namespace roundup {

namespace {

std::u16string_view TextOf(const char16_t (&field)[kRecordTextSize]) noexcept {
    const char16_t* const end = std::find(field, field + kRecordTextSize, u'\0');
    return {field, static_cast<std::size_t>(end - field)};
}

bool BothEqual(const OwnedString& own, const char16_t (&field)[kRecordTextSize]) noexcept {
    if (own.IsEmpty() || field[0] == u'\0') return false;
    return EqualsNoCase(own, TextOf(field));
}

void CopyWhenEmpty(OwnedString& target, const OwnedString& source) noexcept {
    if (!target.IsEmpty() || source.IsEmpty()) return;
    OwnedString copy(source.View());
    if (!copy.IsNull()) target = std::move(copy);
}

}  // namespace

bool CApp::IsSame(const AppRecordEx& record) const {
    if (BothEqual(pwszTypeDes, record.wzTypeDes)) {
        TraceLine(u"CApp::IsSame: TypeDes is Same \"%s\"", pwszTypeDes);
        return true;
    }
    if (!ProductCode.IsNil() && ProductCode == record.code) {
        TraceLine(u"CApp::IsSame: Code is Same \"%s\"", GuidText(ProductCode, GuidForm::Braced));
        return true;
    }
    if (BothEqual(pwszName, record.wzName)) {
        TraceLine(u"CApp::IsSame: Name is Same \"%s\"", pwszName);
        return true;
    }
    if (BothEqual(pwszKeyString, record.wzKeyString)) {
        TraceLine(u"CApp::IsSame: Key is Same \"%s\"", pwszKeyString);
        return true;
    }
    return false;
}

bool CApp::IsSameOrHolds(const AppRecordEx& record) const {
    return AnyInForest(
        *this, [&record](const CApp& app) { return app.IsSame(record); },
        [&record](const IApp& app) { return app.IsSameOrHolds(record); });
}

void CApp::MergeFrom(CApp& source) {
    if (ProductCode.IsNil()) ProductCode = source.ProductCode;
    CopyWhenEmpty(pwszName, source.pwszName);
    CopyWhenEmpty(pwszKeyString, source.pwszKeyString);
    CopyWhenEmpty(pwszInstallLoc, source.pwszInstallLoc);
    CopyWhenEmpty(pwszMsiPath, source.pwszMsiPath);
    CopyWhenEmpty(pwszInstallSource, source.pwszInstallSource);
    CopyWhenEmpty(pwszVersion, source.pwszVersion);
    CopyWhenEmpty(pwszType, source.pwszType);
    CopyWhenEmpty(pwszTypeDes, source.pwszTypeDes);
    RelatedCodes.insert(source.RelatedCodes.begin(), source.RelatedCodes.end());
    // An application that was gathered has a size of its own, which only a smaller one replaces.
    if (source.llEstimatedSize > 0 && (llEstimatedSize > source.llEstimatedSize || llGatheredSize < 1)) {
        llEstimatedSize = source.llEstimatedSize;
    }
    if (pIconData == nullptr && source.pIconData != nullptr) {
        pIconData = std::move(source.pIconData);
        dwIconDataSize = std::exchange(source.dwIconDataSize, 0);
    }
    CopyWhenEmpty(pwszUnInstallProgram, source.pwszUnInstallProgram);
    CopyWhenEmpty(pwszIconProgram, source.pwszIconProgram);
    qwFlags |= source.qwFlags;
    dwOrigins |= source.dwOrigins;
    dwTag = source.dwTag;
}

}  // namespace roundup
