// A store package: an application that is found in the user's package repository.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "appcenter/app/iapp.h"
#include "appcenter/appfile/appfile.h"
#include "utility/guid.h"
#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

// A package that this one needs.
struct PackageDependency {
    OwnedString name;
    std::uint64_t minVersion = 0;  // packed
};

// What belongs to a package is told by its own folders alone: no rule file, registry key, shortcut or service is
// looked at. Its maker fills the fields that the repository tells and calls CompleteFields once, or reads a stored
// record, which holds all of them. A text is null when it is not known, never empty.
class CAppx final : public CKvObject<IApp> {
  public:
    CAppx() = default;

    bool IsValid() const override { return true; }
    bool DependsOn(IApp* other) const override;
    // 0: fits the system; 2: does not; 1: the versions of the package are of a form that says nothing.
    std::uint32_t CheckSystemVersion(const OsVersionInfo& version) const override;
    std::int32_t IsAppx() const override { return 1; }
    std::int32_t IsFramework() const override { return m_bIsFramework != 0 ? 1 : 0; }
    std::int64_t GetEstimatedSize() const override { return static_cast<std::int64_t>(m_ullSize); }
    std::int64_t GetGatheredSize() const override { return static_cast<std::int64_t>(m_ullGatheredSize); }
    std::uint64_t GetFlags() const override { return 0; }
    IApp* SetTag(std::uint32_t tag) override {
        m_dwTag = tag;
        return this;
    }
    const char16_t* GetName() const override { return m_wzDisplayName.Get(); }
    // The distinguished name of the publisher is no name for people: it goes no further than the stored record.
    const char16_t* GetPublisher() const override { return nullptr; }
    const char16_t* GetInstallDate() const override { return m_wzInstallDate.Get(); }
    const Guid* GetCode() const override { return &m_code; }
    const std::byte* GetIconData() const override { return m_dwIconDataSize != 0 ? m_pIconData.data() : nullptr; }
    std::uint32_t GetIconDataSize() const override { return m_dwIconDataSize; }
    // Leaves wzType and wzOriginalInstallLoc as they were.
    void FillAppInfo(AppRecordEx& record) const override;
    const char16_t* GetDirectory(std::uint32_t) const override { return nullptr; }
    // A framework is known by its full name, any other package by its family.
    bool IsSame(const AppRecordEx& record) const override;
    bool IsSameOrHolds(const AppRecordEx&) const override { return false; }
    bool IsGathered() const override { return !m_listFiles.empty(); }
    // Keeps the gathered size and the links that were walked: a gather that follows adds to the one and passes over the
    // others.
    void UnGather() override;
    ResultCode Gather(IApp* root, IRemoveRepeatReg* filter) override;
    void GetDrives(CStringSet&) const override {}
    void GetSubApps(std::vector<IApp*>&) const override {}
    void GetFilesAndDirectories(std::vector<IWFYFile*>& files, CStringVec& directories) override;
    std::uint32_t GetSize() const override;
    ResultCode Serialize(std::byte* buffer, std::uint32_t size, std::uint32_t& count) const override;
    // BadArgument for what is no record, GeneralFailure for one that runs past its end. A record that holds a
    // temporary file is none: packages have no such files, and the object would delete it.
    ResultCode ReSerialize(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) override;

    // Works out the fields that the repository does not tell, asks the disk for sizes and folders, and reads the logo.
    // After a failure the object is fit only to be released.
    ResultCode CompleteFields();

    OwnedString m_wzDisplayName;
    OwnedString m_wzInstallDate;  // eight digits, year month day, in UTC
    std::uint64_t m_ullSize = 0;  // bytes under the install folder; 1 for a framework
    OwnedString m_wzPackageName;
    OwnedString m_wzPackageFullName;
    OwnedString m_wzPackageFamilyName;
    OwnedString m_wzPublisherId;
    OwnedString m_wzPublisher;
    std::uint64_t m_ullVersion = 0;  // packed
    OwnedString m_wzArchitecture;
    std::uint32_t m_bIsFramework = 0;
    OwnedString m_wzInstallLocal;                  // as the repository has it
    OwnedString m_wzRealInstallLocal;              // the same with mount points followed
    OwnedString m_wzPackagesFolder;                // in which the folders of packages lie
    std::uint64_t m_dwDeviceMinVersion = 0;        // packed
    std::uint64_t m_dwDeviceMaxVersionTested = 0;  // packed
    CStringSet ExtraFolder;  // names of the folders of the same package and version beside its own
    CStringSet DataFolder;   // paths of the user's data
    std::vector<PackageDependency> Dependency;
    OwnedString m_wzIcon;                // path of the logo
    std::vector<std::byte> m_pIconData;  // the background colour, four bytes, and the logo file as it is
    std::uint32_t m_dwIconDataSize = 0;  // bytes at m_pIconData
    std::uint32_t m_dwBackgroundColor = 0;
    std::uint64_t m_ullGatheredSize = 0;  // bytes
    std::vector<std::unique_ptr<CWFYFile>> m_listFiles;
    std::uint32_t m_dwTag = 0;
    std::uint64_t m_ftInstallTime = 0;   // FILETIME (minwinbase.h); 0 when unknown; in no record
    Guid m_code;                         // nil for every package
    std::set<std::uint64_t> m_setLinks;  // checksums of the paths of the reparse folders that were walked

    // Characters with the terminator: what is longer is no name, and no path, of a package.
    static constexpr std::size_t kTextLimit = 260;
    static constexpr std::size_t kPathLimit = 520;

  private:
    ResultCode SplitFamilyName();
    ResultCode ParseFullName();
    ResultCode ResolveInstallFolder();
    ResultCode FindPackagesFolder();
    void MeasureFolder();
    ResultCode FindExtraFolders();
    ResultCode FindDataFolder();
    void LoadIconData();
    void MakeInstallDate();
    ResultCode AppendArchitecture();
    void WriteDiagnosis() const;

    ResultCode ScanFolder(std::u16string& path, std::uint32_t type);
    ResultCode AddFile(const std::u16string& path, std::uint64_t size, std::uint32_t type);
    ResultCode ReadRecord(const std::byte* buffer, std::uint32_t size, std::uint32_t& count);
};

}  // namespace roundup
