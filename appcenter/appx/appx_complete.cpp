// What a store package works out from the little that the repository tells.
#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>

#include "appcenter/appx/appx.h"
#include "appcenter/appx/packageversion.h"
#include "platform/machine.h"
#include "utility/casemap.h"
#include "utility/fileinfo.h"
#include "utility/filesearch.h"
#include "utility/formattext.h"
#include "utility/mountpoints.h"
#include "utility/specialfolders.h"
#include "utility/wholefile.h"

namespace roundup {
namespace {

constexpr std::uint32_t kLocalAppData = 28;  // CSIDL_LOCAL_APPDATA
// A logo is a small picture. What is larger than this is none, and would only burden the catalogue.
constexpr std::uint32_t kLargestLogo = 16U << 20;

// Bytes of the files below path, which comes back as it was. Folders that lead elsewhere are left out; the limit of a
// path's length bounds the depth.
std::uint64_t FolderSize(std::u16string& path) {
    const std::size_t length = path.size();
    path += u"\\*";
    FileSearch search(path.c_str());
    path.resize(length);
    if (search.Error() != kErrorSuccess) Skip(FailWin32Quiet(search.Error()));
    std::uint64_t size = 0;
    while (search.Next()) {
        if (!search.IsFolder()) {
            if (length + 1 + search.Name().size() < CAppx::kPathLimit) size += search.Entry().size;
            continue;
        }
        if (search.IsReparseFolder() || length + 1 + search.Name().size() >= CAppx::kPathLimit) continue;
        path.append(u"\\").append(search.Name());
        size += FolderSize(path);
        path.resize(length);
    }
    return size;
}

}  // namespace

ResultCode CAppx::CompleteFields() {
    if (m_wzDisplayName.IsNull()) return Fail(SmallCode::GeneralFailure);
    for (const OwnedString* name : {&m_wzPackageFullName, &m_wzPackageFamilyName}) {
        if (name->IsNull() || name->Length() >= kTextLimit) return Fail(SmallCode::GeneralFailure, name->Length());
    }
    if (m_wzInstallLocal.IsNull()) return Fail(SmallCode::GeneralFailure);
    if (m_wzPackageName.IsNull() || m_wzPublisherId.IsNull()) {
        if (auto rc = SplitFamilyName(); Failed(rc)) return Pass(rc);
    }
    if (m_ullVersion == 0 || m_wzArchitecture.IsNull()) {
        if (auto rc = ParseFullName(); Failed(rc)) return Pass(rc);
    }
    if (auto rc = ResolveInstallFolder(); Failed(rc)) return Pass(rc);
    if (m_wzPackagesFolder.IsNull()) {
        if (auto rc = FindPackagesFolder(); Failed(rc)) Skip(rc);
    }
    if (m_ullSize == 0) MeasureFolder();
    if (ExtraFolder.empty()) {
        if (auto rc = FindExtraFolders(); Failed(rc)) return Pass(rc);
    }
    if (DataFolder.empty()) {
        if (auto rc = FindDataFolder(); Failed(rc)) Skip(rc);
    }
    if (!m_wzIcon.IsNull() && m_dwIconDataSize == 0) LoadIconData();
    if (m_wzInstallDate.IsNull() && m_ftInstallTime != 0) MakeInstallDate();
    if (m_bIsFramework != 0) {
        if (auto rc = AppendArchitecture(); Failed(rc)) return Pass(rc);
    }
    WriteDiagnosis();
    return kSuccess;
}

// A family is named "package_publisherid".
ResultCode CAppx::SplitFamilyName() {
    const std::u16string_view family = m_wzPackageFamilyName;
    const std::size_t bar = family.rfind(u'_');
    if (bar == std::u16string_view::npos) return Fail(SmallCode::GeneralFailure);
    if (m_wzPublisherId.IsNull()) (void)AssignString(m_wzPublisherId, family.substr(bar + 1));
    if (m_wzPackageName.IsNull()) (void)AssignString(m_wzPackageName, family.substr(0, bar));
    return kSuccess;
}

// A full name is "package_version_architecture_resource_publisherid", with the resource mostly empty.
ResultCode CAppx::ParseFullName() {
    const std::u16string_view full = m_wzPackageFullName;
    const std::u16string_view name = m_wzPackageName;
    if (name.empty() || full.size() <= name.size() || !EqualsNoCase(full.substr(0, name.size()), name)) {
        return Fail(SmallCode::GeneralFailure);
    }
    std::u16string_view rest = full.substr(name.size());
    rest = rest.substr(0, std::min(rest.rfind(u'_'), rest.size()));
    if (std::ranges::count(rest, u'_') != 3 || !rest.starts_with(u'_')) return Fail(SmallCode::GeneralFailure);
    rest.remove_prefix(1);
    const std::size_t first = rest.find(u'_');
    const std::size_t second = rest.find(u'_', first + 1);
    if (m_ullVersion == 0) m_ullVersion = PackVersion(rest.substr(0, first));
    if (m_wzArchitecture.IsNull()) {
        (void)AssignString(m_wzArchitecture, rest.substr(first + 1, second - first - 1));
    }
    return kSuccess;
}

ResultCode CAppx::ResolveInstallFolder() {
    if (!m_wzRealInstallLocal.IsNull()) return kSuccess;
    FixedText<kPathLimit> real;
    const bool resolved = ResolveMountPoints(m_wzInstallLocal.Text(), real);
    if (!AssignString(m_wzRealInstallLocal, resolved ? real.View() : m_wzInstallLocal.View())) {
        return Fail(SmallCode::GeneralFailure);
    }
    return kSuccess;
}

ResultCode CAppx::FindPackagesFolder() {
    const std::u16string_view folder = m_wzInstallLocal;
    const std::u16string_view full = m_wzPackageFullName;
    if (folder.empty() || folder.size() >= kTextLimit || full.empty()) return Fail(SmallCode::GeneralFailure);
    std::size_t match = folder.find(full);
    if (match == std::u16string_view::npos) {
        const std::size_t name = folder.rfind(u'\\') + 1;
        if (name == 0 || !EqualsNoCase(folder.substr(name), full)) return Fail(SmallCode::GeneralFailure);
        match = name;
    }
    if (match == 0) return Fail(SmallCode::GeneralFailure);
    if (!AssignString(m_wzPackagesFolder, folder.substr(0, match - 1))) return Fail(SmallCode::GeneralFailure);
    return kSuccess;
}

void CAppx::MeasureFolder() {
    if (m_bIsFramework != 0) {
        m_ullSize = 1;
        return;
    }
    std::u16string path(m_wzRealInstallLocal.View());
    m_ullSize = path.size() < kPathLimit ? FolderSize(path) : 0;
}

// The folders of a package's resources stand beside its own: "name_version_" and then another architecture or resource.
ResultCode CAppx::FindExtraFolders() {
    if (m_bIsFramework != 0) return kSuccess;
    if (m_wzPackagesFolder.IsNull() || m_wzPackagesFolder.Length() >= kTextLimit) {
        return Fail(SmallCode::GeneralFailure, m_wzPackagesFolder.Length());
    }
    const std::u16string pattern =
        FormatText(u"%s\\%s_%d.%d.%d.%d_*", m_wzPackagesFolder, m_wzPackageName, VersionMajor(m_ullVersion),
                   VersionMinor(m_ullVersion), VersionBuild(m_ullVersion), VersionRevision(m_ullVersion));
    FileSearch search(pattern.c_str());
    if (search.Error() != kErrorSuccess) return Fail(SmallCode::GeneralFailure, search.Error());
    while (search.Next()) {
        if (!EqualsNoCase(search.Name(), m_wzPackageFullName)) ExtraFolder.Add(search.Name());
    }
    return kSuccess;
}

ResultCode CAppx::FindDataFolder() {
    if (m_bIsFramework != 0) return kSuccess;
    const char16_t* const local = GetSpecialFolder(kLocalAppData);
    if (m_wzPackageFamilyName.IsNull() || local == nullptr) return Fail(SmallCode::GeneralFailure);
    const std::u16string path = FormatText(u"%s\\Packages\\%s", local, m_wzPackageFamilyName);
    if (PathExists(path.c_str())) DataFolder.Add(path);
    return kSuccess;
}

void CAppx::LoadIconData() {
    std::vector<std::byte> block;
    if (!ReadWholeFile(m_wzIcon.Text(), kLargestLogo, block, sizeof m_dwBackgroundColor)) return;
    std::memcpy(block.data(), &m_dwBackgroundColor, sizeof m_dwBackgroundColor);
    m_pIconData = std::move(block);
    m_dwIconDataSize = static_cast<std::uint32_t>(m_pIconData.size());
}

// FILETIME counts units of 100 ns from the start of 1601; the platform converts only what is positive when signed.
void CAppx::MakeInstallDate() {
    constexpr std::uint64_t kUnitsOfDay = 86400ULL * 10'000'000;
    if (m_ftInstallTime > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) return;
    const std::chrono::days days(static_cast<int>(m_ftInstallTime / kUnitsOfDay));
    const std::chrono::year_month_day date(std::chrono::sys_days(std::chrono::year(1601) / std::chrono::January / 1) +
                                           days);
    FixedText<16> text;
    FormatText(text, u"%04d%02d%02d", static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
               static_cast<unsigned>(date.day()));
    (void)AssignString(m_wzInstallDate, text.View());
}

// Frameworks of one name stand beside each other, one for each architecture.
ResultCode CAppx::AppendArchitecture() {
    if (m_wzDisplayName.Length() + m_wzArchitecture.Length() + 3 >= kTextLimit) return kSuccess;
    const std::u16string name = FormatText(u"%s (%s)", m_wzDisplayName, m_wzArchitecture.Text());
    if (!AssignString(m_wzDisplayName, name)) return Fail(SmallCode::GeneralFailure);
    return kSuccess;
}

void CAppx::WriteDiagnosis() const {
    struct Line {
        const char16_t* label;
        const OwnedString* value;
    };
    const Line lines[] = {
        {u"\nm_wzDisplayName       : ", &m_wzDisplayName},
        {u"\nm_wzInstallDate       : ", &m_wzInstallDate},
        {u"\nm_wzPackageName       : ", &m_wzPackageName},
        {u"\nm_wzPackageFullName   : ", &m_wzPackageFullName},
        {u"\nm_wzPackageFamilyName : ", &m_wzPackageFamilyName},
        {u"\nm_wzPublisherId       : ", &m_wzPublisherId},
        {u"\nm_wzPublisher         : ", &m_wzPublisher},
        {u"\nm_wzArchitecture      : ", &m_wzArchitecture},
        {u"\nm_wzInstallLocal      : ", &m_wzInstallLocal},
        {u"\nm_wzRealInstallLocal  : ", &m_wzRealInstallLocal},
        {u"\nm_wzIcon              : ", &m_wzIcon},
    };
    std::u16string text = u"\n";
    for (const Line& line : lines) {
        if (!line.value->IsNull()) text.append(line.label).append(line.value->View());
    }
    text += FormatText(u"\nm_dwDeviceMinVersion       : 0x%llx", m_dwDeviceMinVersion);
    text += FormatText(u"\nm_dwDeviceMaxVersionTested : 0x%llx", m_dwDeviceMaxVersionTested);
    text.append(u"\nm_bIsFramework : ").append(m_bIsFramework != 0 ? u"Yes" : u"No");
    for (const OwnedString& folder : ExtraFolder) text.append(u"\nExtraFolder            : ").append(folder.View());
    for (const PackageDependency& needed : Dependency) {
        text += FormatText(u"\nDependency            : %s 0x%llx", needed.name.Text(), needed.minVersion);
    }
    CurrentMachine().System().WriteDebugText(text.c_str());
}

}  // namespace roundup
