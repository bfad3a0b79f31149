#include "appcenter/appx/appx.h"

#include "appcenter/appx/packageversion.h"
#include "utility/casemap.h"
#include "utility/formattext.h"

namespace roundup {

bool CAppx::DependsOn(IApp* other) const {
    const auto* const package = dynamic_cast<const CAppx*>(other);
    if (package == nullptr || package->m_bIsFramework == 0) return false;
    for (const PackageDependency& needed : Dependency) {
        if (EqualsNoCase(needed.name, package->m_wzPackageName) && package->m_ullVersion >= needed.minVersion)
            return true;
    }
    return false;
}

std::uint32_t CAppx::CheckSystemVersion(const OsVersionInfo& version) const {
    constexpr std::uint32_t kFits = 0;
    constexpr std::uint32_t kUnknown = 1;
    constexpr std::uint32_t kTooNew = 2;
    constexpr std::uint32_t kMajor = 10;
    if (m_bIsFramework != 0) return kFits;
    if (version.major < kMajor) return kTooNew;
    for (const std::uint64_t named : {m_dwDeviceMinVersion, m_dwDeviceMaxVersionTested}) {
        if (VersionMajor(named) != kMajor || VersionMinor(named) != 0) return kUnknown;
    }
    return version.build < VersionBuild(m_dwDeviceMinVersion) ? kTooNew : kFits;
}

void CAppx::FillAppInfo(AppRecordEx& record) const {
    record.code = m_code;
    CopyBounded(record.wzName, m_wzDisplayName, kRecordTextSize);
    CopyBounded(record.wzKeyString, m_wzPackageFullName, kRecordTextSize);
    CopyBounded(record.wzTypeDes, m_wzPackageFamilyName, kRecordTextSize);
    CopyBounded(record.wzInstallLoc, m_wzInstallLocal, kRecordTextSize);
    CopyBounded(record.wzRealInstallLoc, m_wzRealInstallLocal, kRecordTextSize);
    FixedText<32> version;
    FormatText(version, u"%I64u", m_ullVersion);
    CopyBounded(record.wzVersion, version.View(), kRecordTextSize);
    record.dwTag = m_dwTag;
    record.qwFlags = AppFlags::kStorePackage;
    if (EqualsNoCase(m_wzArchitecture, u"x64")) record.qwFlags |= AppFlags::k64Bit;
    if (m_bIsFramework != 0) record.qwFlags |= AppFlags::kFramework;
}

bool CAppx::IsSame(const AppRecordEx& record) const {
    const bool asFramework = (record.qwFlags & AppFlags::kFramework) != 0;
    if (asFramework != (m_bIsFramework != 0)) return false;
    const OwnedString& own = asFramework ? m_wzPackageFullName : m_wzPackageFamilyName;
    return !own.IsNull() && EqualsNoCase(own, asFramework ? record.wzKeyString : record.wzTypeDes);
}

void CAppx::GetFilesAndDirectories(std::vector<IWFYFile*>& files, CStringVec& directories) {
    files.clear();
    directories.Clear();
    for (const auto& file : m_listFiles) files.push_back(file.get());
    if (!m_wzPackagesFolder.IsNull()) directories.Add(m_wzPackagesFolder);
}

}  // namespace roundup
