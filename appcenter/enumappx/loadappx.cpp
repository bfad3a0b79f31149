#include "appcenter/enumappx/loadappx.h"

#include <limits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "appcenter/appx/appx.h"
#include "appcenter/appx/packageversion.h"
#include "appcenter/enumappx/enumappx.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

// The one major version whose repository has this form.
constexpr std::uint32_t kRepositoryVersion = 10;

// The number of a colour "#rrggbb" or "#aarrggbb"; 0 when it has no digits.
std::uint32_t ColorNumber(std::u16string_view color) noexcept {
    std::uint64_t number = 0;
    if (!color.starts_with(u'#')) return 0;
    for (const char16_t unit : color.substr(1)) {
        const char16_t lower = unit | 0x20;
        if (unit >= u'0' && unit <= u'9') {
            number = number * 16 + (unit - u'0');
        } else if (lower >= u'a' && lower <= u'f') {
            number = number * 16 + (lower - u'a' + 10U);
        } else {
            break;
        }
        if (number > std::numeric_limits<std::uint32_t>::max()) return std::numeric_limits<std::uint32_t>::max();
    }
    return static_cast<std::uint32_t>(number);
}

void FillPackage(const PackageRecord& record, CAppx& package) {
    (void)AssignString(package.m_wzDisplayName, record.DisplayName);
    package.m_ftInstallTime = record.InstallTime;
    (void)AssignString(package.m_wzPackageFullName, record.PackageID);
    (void)AssignString(package.m_wzPackageFamilyName, record.Family);
    (void)AssignString(package.m_wzPublisher, record.Publisher);
    package.m_ullVersion = PackVersion(record.Version);
    (void)AssignString(package.m_wzArchitecture, record.Architecture);
    package.m_bIsFramework = record.Framework;
    (void)AssignString(package.m_wzInstallLocal, record.PackageRootFolder);
    package.m_dwDeviceMinVersion = record.OSMinVersion;
    package.m_dwDeviceMaxVersionTested = record.OSMaxVersionTested;
    for (const PackageDependencyRecord& needed : record.Dependencies) {
        package.Dependency.push_back({OwnedString(needed.Name), PackVersion(needed.MinVersion)});
    }
    (void)AssignString(package.m_wzIcon, record.Icon);
    package.m_dwBackgroundColor = ColorNumber(record.BackgroundColor);
}

}  // namespace

CLoadAppx::CLoadAppx(const IContinue& goOn, AppList& packages) : m_goOn(goOn), m_packages(packages) { Start(); }

void CLoadAppx::Walk() {
    OsVersionInfo version;
    if (!GetOsVersion(version) || version.major != kRepositoryVersion) return;
    std::vector<PackageRecord> records;
    {
        const CEnumAppx repository;
        repository.CopyRecords(records);
        repository.PrintRecords();
    }
    for (const PackageRecord& record : records) {
        if (m_goOn.IsContinue() == 0) return;
        if (record.DisplayName.empty()) continue;
        auto package = RefPtr<CAppx>::Adopt(new (std::nothrow) CAppx);
        if (!package) return;
        FillPackage(record, *package);
        if (auto rc = package->CompleteFields(); Failed(rc)) {
            Skip(rc);
            continue;
        }
        m_packages.emplace_back(std::move(package));
    }
}

}  // namespace roundup
