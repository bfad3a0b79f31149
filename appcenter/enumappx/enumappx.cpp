#include "appcenter/enumappx/enumappx.h"

#include <limits>
#include <utility>

#include "appcenter/enumappx/indirecttext.h"
#include "appcenter/enumappx/repositorykey.h"
#include "platform/machine.h"
#include "utility/formattext.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

constexpr const char16_t* kClasses = u"Software\\Classes";
constexpr const char16_t* kFamilies =
    u"Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository\\Families";
constexpr const char16_t* kPackages =
    u"Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository\\Packages";

// Those of the system itself: no user installed them, and none can remove them.
constexpr std::u16string_view kSystemApps = u"C:\\Windows\\SystemApps";

class Apartment {
  public:
    Apartment() : m_shell(CurrentMachine().Shell()) { m_shell.EnterApartment(); }
    ~Apartment() { m_shell.LeaveApartment(); }
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;

  private:
    IShell& m_shell;
};

// The digits at the front; 0 without any.
std::int32_t LeadingNumber(std::u16string_view text) noexcept {
    std::int64_t number = 0;
    for (const char16_t unit : text) {
        if (unit < u'0' || unit > u'9' || number > std::numeric_limits<std::int32_t>::max()) break;
        number = number * 10 + (unit - u'0');
    }
    return number > std::numeric_limits<std::int32_t>::max() ? std::numeric_limits<std::int32_t>::max()
                                                             : static_cast<std::int32_t>(number);
}

// The package that an icon's reference "@{package?resource}" names; empty for any other form.
std::u16string_view PackageOfReference(std::u16string_view reference) noexcept {
    const std::size_t mark = reference.find(u'?');
    if (!reference.starts_with(u'@') || mark == kNone || mark < 2) return {};
    return reference.substr(2, mark - 2);
}

// A text of the profile file, cut to 259 characters.
std::u16string ProfileText(const char16_t* section, const char16_t* key, const std::u16string& file) {
    char16_t text[260] = {};
    const std::uint32_t length = CurrentMachine().Profile().GetString(section, key, u"", text, 260, file.c_str());
    return {text, length};
}

}  // namespace

CEnumAppx::CEnumAppx()
    : m_filterFile(std::u16string(GetExeFolder()).append(u"\\Config\\Compatibility\\innerappx.ini")) {
    ReadFilterMode();
    const Apartment apartment;
    EnumFamilies();
    EnumClassIcons();
    EnumPackages();
}

void CEnumAppx::ReadFilterMode() {
    const std::u16string mode = ProfileText(u"config", u"type", m_filterFile);
    if (!mode.empty()) ConfigType = LeadingNumber(mode);
}

void CEnumAppx::EnumFamilies() {
    std::vector<std::u16string> families;
    if (!RepositoryKey(kFamilies).ListSubKeys(families)) return;
    std::vector<std::u16string> packages;
    for (std::u16string& family : families) {
        packages.clear();
        const bool complete = RepositoryKey(FormatText(u"%s\\%s", kFamilies, family)).ListSubKeys(packages);
        for (std::u16string& package : packages) PackageToFamily.insert_or_assign(std::move(package), family);
        if (!complete) return;
    }
}

void CEnumAppx::EnumClassIcons() {
    std::vector<std::u16string> classes;
    // What was listed until a failure is as good as the rest.
    (void)RepositoryKey(kClasses).ListSubKeys(classes);
    for (const std::u16string& name : classes) {
        if (name.find(u"AppX") == kNone) continue;
        std::u16string reference =
            RepositoryKey(FormatText(u"%s\\%s\\Application", kClasses, name)).Text(u"ApplicationIcon");
        if (reference.empty()) {
            reference = RepositoryKey(FormatText(u"%s\\%s\\DefaultIcon", kClasses, name)).Text(nullptr);
        }
        const std::u16string_view package = PackageOfReference(reference);
        if (!package.empty()) PackageToIconReference.insert_or_assign(std::u16string(package), reference);
    }
}

void CEnumAppx::EnumPackages() {
    std::vector<std::u16string> keys;
    if (!RepositoryKey(kPackages).ListSubKeys(keys)) return;
    for (const std::u16string& key : keys) {
        if (key.empty()) continue;
        PackageRecord record;
        if (ReadPackage(key, record)) m_records.push_back(std::move(record));
    }
}

bool CEnumAppx::ReadPackage(const std::u16string& key, PackageRecord& record) {
    {
        RepositoryKey package(FormatText(u"%s\\%s", kPackages, key));
        record.DisplayName = ResolveIndirect(package.Text(u"DisplayName"));
        record.PackageRootFolder = package.Text(u"PackageRootFolder");
        record.Framework = package.Number(u"Framework") == 1 ? 1 : 0;
        record.OSMaxVersionTested = package.Number(u"OSMaxVersionTested");
        record.OSMinVersion = package.Number(u"OSMinVersion");
        record.PackageID = package.Text(u"PackageID");
    }
    const auto family = PackageToFamily.find(key);
    record.Family = family != PackageToFamily.end() ? family->second : key;
    const std::u16string_view root = record.PackageRootFolder;
    if (root.substr(0, root.rfind(u'\\')) == kSystemApps) return false;
    ResolveVisuals(record);
    record.InstallTime = ReadInstallTime(record.PackageID);
    ReadDependencies(record.PackageRootFolder, record.Dependencies);
    ReadIdentity(record.PackageRootFolder, record.Publisher, record.Architecture, record.Version);
    if (record.Framework == 0 && IsFilteredOut(record)) return false;
    return !record.PackageRootFolder.empty();
}

std::uint64_t CEnumAppx::ReadInstallTime(const std::u16string& fullName) const {
    const auto family = PackageToFamily.find(fullName);
    if (family == PackageToFamily.end()) return 0;
    return RepositoryKey(FormatText(u"%s\\%s\\%s", kFamilies, family->second, fullName)).Number(u"InstallTime");
}

bool CEnumAppx::IsFilteredOut(const PackageRecord& record) const {
    switch (ConfigType) {
        case FilterMode::kByList:
            return !ProfileText(u"key", record.Family.c_str(), m_filterFile).empty();
        case FilterMode::kByPublisher:
            return record.Publisher.find(u"O=Microsoft Corporation") != kNone;
        default:
            return false;
    }
}

void CEnumAppx::PrintRecords() const {
    std::u16string listing;
    for (const PackageRecord& record : m_records) {
        listing.append(58, u'*').append(u"\n");
        for (const std::u16string* text : {&record.PackageRootFolder, &record.DisplayName, &record.Icon}) {
            if (!text->empty()) listing.append(*text).append(u"\n");
        }
    }
    if (!listing.empty()) CurrentMachine().System().WriteOutput(listing.c_str());
}

}  // namespace roundup
