// The user's package repository, its manifests and the filter of the host, read into plain records.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "appcenter/enumappx/manifest.h"

namespace roundup {

struct PackageDependencyRecord {
    std::u16string Name;
    std::u16string MinVersion;
    std::u16string Publisher;  // may be empty
};

// What is not known is empty or 0.
struct PackageRecord {
    std::u16string Family;
    std::u16string DisplayName;
    std::u16string PackageID;  // the full package name
    std::u16string Publisher;
    std::u16string PackageRootFolder;
    std::u16string Icon;           // path of the logo file
    std::u16string IconReference;  // as the class registration has it
    std::u16string BackgroundColor;
    std::u16string Architecture;
    std::u16string Version;
    std::vector<PackageDependencyRecord> Dependencies;
    std::uint32_t Framework = 0;  // 0 or 1
    std::uint64_t OSMaxVersionTested = 0;
    std::uint64_t OSMinVersion = 0;
    std::uint64_t InstallTime = 0;  // FILETIME
};

// How packages are filtered; any other number filters nothing.
struct FilterMode {
    static constexpr std::int32_t kByList = 0;
    static constexpr std::int32_t kByPublisher = 1;
};

// One thread at a time. What the repository lacks leaves its fields empty: nothing here fails towards the caller.
class CEnumAppx {
  public:
    // Does the whole enumeration.
    CEnumAppx();
    CEnumAppx(const CEnumAppx&) = delete;
    CEnumAppx& operator=(const CEnumAppx&) = delete;

    // In the order of the repository.
    void CopyRecords(std::vector<PackageRecord>& records) const { records = m_records; }
    // Writes a listing for diagnosis to the standard output of the process.
    void PrintRecords() const;

    // Reads of the manifest in a package's folder. What it does not tell leaves the targets as they were.
    void ReadVisualElements(const std::u16string& folder, std::u16string& logo, std::u16string& color);
    // Clears the list first.
    void ReadDependencies(const std::u16string& folder, std::vector<PackageDependencyRecord>& list);
    void ReadIdentity(const std::u16string& folder, std::u16string& publisher, std::u16string& architecture,
                      std::u16string& version);
    // Chooses logo and background colour from the class registration, the manifest and the files that are there.
    void ResolveVisuals(PackageRecord& record);

  private:
    using TextMap = std::map<std::u16string, std::u16string, std::less<>>;

    void ReadFilterMode();
    void EnumFamilies();
    void EnumClassIcons();
    void EnumPackages();
    // False when the package is none of those that are listed.
    bool ReadPackage(const std::u16string& key, PackageRecord& record);
    std::uint64_t ReadInstallTime(const std::u16string& fullName) const;
    bool IsFilteredOut(const PackageRecord& record) const;
    // The document of the folder's manifest, empty when it cannot be read; kept until another folder is asked for, as
    // the reads of one package follow each other.
    const ManifestDocument& Manifest(const std::u16string& folder);

    std::vector<PackageRecord> m_records;
    TextMap PackageToFamily;
    TextMap PackageToIconReference;
    std::int32_t ConfigType = FilterMode::kByList;
    std::u16string m_filterFile;
    ManifestDocument m_manifest;
    std::u16string m_manifestFolder;
    bool m_hasManifest = false;
};

}  // namespace roundup
