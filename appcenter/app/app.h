// An application that the Uninstall keys or the books of the installer tell of.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "appcenter/app/apporigin.h"
#include "appcenter/app/gathereditems.h"
#include "appcenter/app/iapp.h"
#include "utility/flatset.h"
#include "utility/guid.h"
#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

// The sources of the catalogue fill the fields directly; a text that is null or empty is not known. A forest of
// applications may be deep: no operation here descends by recursion, but for Serialize and ReSerialize, whose depth
// has a limit.
class CApp : public CKvObject<IApp> {
  public:
    CApp() = default;
    ~CApp() override;

    bool IsValid() const override { return true; }
    bool DependsOn(IApp*) const override { return false; }
    std::uint32_t CheckSystemVersion(const OsVersionInfo&) const override { return 0; }
    std::int32_t IsAppx() const override { return 0; }
    std::int32_t IsFramework() const override { return 0; }
    std::int64_t GetEstimatedSize() const override { return llEstimatedSize; }
    std::int64_t GetGatheredSize() const override { return llGatheredSize; }
    std::uint64_t GetFlags() const override { return qwFlags; }
    IApp* SetTag(std::uint32_t tag) override {
        dwTag = tag;
        return this;
    }
    const char16_t* GetName() const override { return pwszName.Get(); }
    const char16_t* GetPublisher() const override { return pwszPublisher.Get(); }
    const char16_t* GetInstallDate() const override { return pwszInstallDate.Get(); }
    const Guid* GetCode() const override { return &ProductCode; }
    const std::byte* GetIconData() const override { return pIconData.get(); }
    std::uint32_t GetIconDataSize() const override { return dwIconDataSize; }
    void FillAppInfo(AppRecordEx& record) const override;
    const char16_t* GetDirectory(std::uint32_t index) const override;
    bool IsSame(const AppRecordEx& record) const override;
    bool IsSameOrHolds(const AppRecordEx& record) const override;
    bool IsGathered() const override;
    void UnGather() override;
    ResultCode Gather(IApp* root, IRemoveRepeatReg* filter) override;
    void GetDrives(CStringSet& drives) const override;
    void GetSubApps(std::vector<IApp*>& subApps) const override;
    void GetFilesAndDirectories(std::vector<IWFYFile*>& files, CStringVec& directories) override;
    // Not 0 when the application has a name and its record stays within 4 GiB.
    std::uint32_t GetSize() const override;
    ResultCode Serialize(std::byte* buffer, std::uint32_t size, std::uint32_t& count) const override;
    ResultCode ReSerialize(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) override;

    // Completes this object from another record of the same application; what is known here is never overwritten.
    // The icon moves when there is none here. A text that memory is short for stays as it was.
    void MergeFrom(CApp& source);
    // True when this application or one below it has a package, a location or an uninstall program.
    bool HasLocation() const;
    // Normalises the location, here and below, and follows its mount points into pwszRealInstallLoc.
    void ResolveRealLocation();

    // What was gathered; of one that is not gathered, nothing. The const one is good until UnGather.
    const GatheredItems& Gathered() const noexcept;
    // The same to be added to. Throws what the standard library does when memory is short.
    GatheredItems& MakeGathered();

    // Takes in a path that a source of a gather has found: a file of size bytes, or a directory (FileType). A path
    // counts once. BadArgument for one that is empty or has 520 or more characters.
    ResultCode AddFile(const char16_t* path, std::uint64_t size, std::uint32_t type);
    // Takes in a file that a rule names, whether its path has been counted or not.
    ResultCode AddIncludedFile(const OwnedString& path);

    // What reconciliation looks at stands in front: it walks a hundred thousand applications many times.
    std::uint32_t dwTag = 0;
    std::uint64_t qwFlags = 0;                  // AppFlags
    std::uint32_t dwOrigins = 0;                // AppOrigin
    LinkReason eLinkReason = LinkReason::None;  // why it hangs below another application
    bool bLocationNarrowed = false;             // pwszInstallLoc was narrowed to a folder of its own; happens once
    Guid ProductCode;
    OwnedString pwszKeyString;  // names the Uninstall key, the rule files and the files of the config store
    OwnedString pwszName;
    OwnedString pwszInstallLoc;
    OwnedString pwszMsiPath;  // the cached package, a ".msi" or a ".msp"
    std::vector<RefPtr<IApp>> SubApps;
    FlatSet<Guid> RelatedCodes;
    OwnedString pwszInstallSource;
    OwnedString pwszParentDisplayName;
    OwnedString pwszParentKeyName;
    OwnedString pwszVersion;
    OwnedString pwszPublisher;
    OwnedString pwszUnInstallProgram;
    OwnedString pwszType;     // suite family: OFFICE, VISIO, PROJECT, COMPONENTS
    OwnedString pwszTypeDes;  // suite family and version, such as OFFICE_2016
    OwnedString pwszIconProgram;
    OwnedString pwszRealInstallLoc;
    OwnedString pwszOriginalInstallLoc;  // as first read, before any correction
    OwnedString pwszInstallDate;
    std::int64_t llGatheredSize = 0;   // bytes
    std::int64_t llEstimatedSize = 0;  // bytes
    std::unique_ptr<std::byte[]> pIconData;
    std::uint32_t dwIconDataSize = 0;  // bytes at pIconData

  private:
    class RecordLoader;

    // Moves the sub-applications that only this object holds into the chain, and lets go of the others.
    void ChainDying(CApp*& chain);
    ResultCode AddDirectory(std::u16string_view path);
    ResultCode AddGatheredFile(const OwnedString& path, std::uint64_t size, std::uint32_t type);
    void AppendFile(std::unique_ptr<CWFYFile> file);

    std::unique_ptr<GatheredItems> m_gathered;
    CApp* m_nextDying = nullptr;
};

}  // namespace roundup
