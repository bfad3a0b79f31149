#include "msianalyzer/installdetails.h"

#include <memory>
#include <vector>

#include "msianalyzer/dataexport.h"
#include "msianalyzer/itemcallback.h"
#include "msianalyzer/msianalyzer.h"
#include "msianalyzer/saveregistry2datafile.h"
#include "msianalyzer/systemfolderproperty.h"
#include "platform/machine.h"
#include "utility/guid.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::uint32_t kMaxPath = 260;

bool IsAbsent(ResultCode rc) noexcept { return Win32Of(rc) == kErrorFileNotFound; }

}  // namespace

ResultCode CInstallDetails::Execute(const CMSIAnalyzer* analyzer, MsiAction action) {
    if (analyzer == nullptr) return Fail(SmallCode::BadArgument);
    m_analyzer = analyzer;
    if (const ResultCode rc = GetArchitectureBits(m_bits); Failed(rc)) return Pass(rc);
    m_userIds.clear();
    if (const ResultCode rc = AddSubkeys(kHkeyLocalMachine, kUserData, false, m_userIds); Failed(rc)) return Pass(rc);
    if (Is64Bit()) {
        if (const ResultCode rc = AddSubkeys(kHkeyLocalMachine, kUserData, true, m_userIds); Failed(rc))
            return Pass(rc);
    }
    return Run(action);
}

ResultCode CInstallDetails::Run(MsiAction action) {
    switch (action) {
        case MsiAction::RegisterProduct:
            return RegisterProduct();
        case MsiAction::ProcessComponents:
            return InBothViews(&CInstallDetails::ExportUserComponents);
        case MsiAction::RegisterProgIdInfo:
            return ExportProgIds();
        case MsiAction::PublishComponents:
            return PublishComponents();
        case MsiAction::MsiPublishAssemblies:
            return PublishAssemblies();
        default:
            return Fail(SmallCode::BadData, static_cast<std::uint32_t>(action));
    }
}

ResultCode CInstallDetails::InBothViews(Step step) {
    if (const ResultCode rc = (this->*step)(false); Failed(rc)) return Pass(rc);
    return Is64Bit() ? (this->*step)(true) : kSuccess;
}

ResultCode CInstallDetails::AddSubkeys(KeyHandle parent, std::u16string_view path, bool view64, TextSet& names) {
    CWFYRegKey key;
    if (const ResultCode rc = key.Open(parent, std::u16string(path).c_str(), view64, false); Failed(rc)) {
        return IsAbsent(rc) ? kSuccess : Pass(rc);
    }
    for (OwnedString name;;) {
        const ResultCode rc = key.EnumKey(name);
        if (Small(rc) == SmallCode::NoMoreItems) return kSuccess;
        if (Failed(rc)) return Pass(rc);
        names.emplace(name.View());
    }
}

ResultCode CInstallDetails::PackCode(std::u16string_view code, std::u16string& packed) {
    const Guid guid = ParseGuid(code, GuidForm::Braced);
    if (guid.IsNil()) return Fail(SmallCode::ObjectAllocation);
    packed = GuidText(guid, GuidForm::Packed).View();
    return kSuccess;
}

std::u16string CInstallDetails::WindowsFolder() {
    char16_t folder[kMaxPath] = {};
    const std::uint32_t length = CurrentMachine().System().GetWindowsFolder(folder, kMaxPath);
    return length < kMaxPath ? std::u16string(folder, length) : std::u16string();
}

ResultCode CInstallDetails::ReportTree(std::u16string_view folder, std::u16string_view mask) const {
    m_analyzer->Report(folder, 0, ItemType::kFolder);
    return m_analyzer->ReportFiles(folder, true, mask);
}

// The keys stay open to the end: what was exported before is told by the value of the handle that a record is relative
// to, and the value of a handle that is closed may be that of the next one.
ResultCode CInstallDetails::ForEachUser(std::u16string_view part, bool view64, std::uint32_t type, UserExport save) {
    DataExport data(*m_analyzer, m_dataFile);
    if (const ResultCode rc = data.Begin(); Failed(rc)) return Pass(rc);
    CSaveRegistry2DataFile records(m_dataFile, m_analyzer);
    std::vector<std::unique_ptr<CWFYRegKey>> keys;
    for (const std::u16string& id : m_userIds) {
        if (id.empty()) continue;
        const std::u16string path = std::u16string(kUserData).append(u"\\").append(id).append(u"\\").append(part);
        keys.push_back(std::make_unique<CWFYRegKey>());
        if (const ResultCode rc = keys.back()->Open(kHkeyLocalMachine, path.c_str(), view64, false); Failed(rc)) {
            if (!IsAbsent(rc)) return Pass(rc);
            keys.pop_back();
            continue;
        }
        if (const ResultCode rc = (this->*save)(records, *keys.back(), view64); Failed(rc)) return Pass(rc);
    }
    return data.HandOver(DataTerminator::Registry, kThreshold, type);
}

}  // namespace roundup
