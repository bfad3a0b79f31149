// The interface behind which every installed application lives.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "appcenter/app/apprecord.h"
#include "platform/system.h"
#include "utility/kvobject.h"
#include "utility/result.h"

namespace roundup {

class CStringSet;
class CStringVec;
class IRemoveRepeatReg;
class IWFYFile;

// Counted. But for the count an application holds no lock: one thread at a time works on one object, and those that
// share it see to that. Texts and blocks that an operation answers belong to the object and stay until it changes or
// goes; a null text means that it is not known. The order of the operations, behind those of IKvObject, is fixed: the
// closed runtime library is compiled against it.
class IApp : public IKvObject {
  public:
    virtual bool IsValid() const = 0;
    // True when this application needs other, which is then a framework package.
    virtual bool DependsOn(IApp* other) const = 0;
    // Compares the versions that the application was made for with that of the system: 0 when it fits or names none.
    virtual std::uint32_t CheckSystemVersion(const OsVersionInfo& version) const = 0;
    // 1 for a store package, else 0.
    virtual std::int32_t IsAppx() const = 0;
    // 1 for a store package that is a framework, else 0.
    virtual std::int32_t IsFramework() const = 0;
    // Bytes, as the entry tells or as they were gathered.
    virtual std::int64_t GetEstimatedSize() const = 0;
    // Bytes of the files that the gather has added.
    virtual std::int64_t GetGatheredSize() const = 0;
    // AppFlags; 0 for a store package.
    virtual std::uint64_t GetFlags() const = 0;
    // Keeps a number of the caller's, which FillAppInfo hands out again. Answers the object.
    virtual IApp* SetTag(std::uint32_t tag) = 0;
    virtual const char16_t* GetName() const = 0;
    virtual const char16_t* GetPublisher() const = 0;
    // As the registry has it: usually eight digits, year month day.
    virtual const char16_t* GetInstallDate() const = 0;
    // Never null; the nil code when it is not known.
    virtual const Guid* GetCode() const = 0;
    // Null and 0 without an icon; else an icon file of one image.
    virtual const std::byte* GetIconData() const = 0;
    virtual std::uint32_t GetIconDataSize() const = 0;
    // Fills the record. A store package leaves wzType and wzOriginalInstallLoc, of which it knows nothing, as they
    // were: the caller brings a record that was cleared.
    virtual void FillAppInfo(AppRecordEx& record) const = 0;
    // The directory of that place, in the order of the set; null past the end.
    virtual const char16_t* GetDirectory(std::uint32_t index) const = 0;
    // True when the record stands for this application.
    virtual bool IsSame(const AppRecordEx& record) const = 0;
    // The same, asked of this application and then of its sub-applications, down to the deepest.
    virtual bool IsSameOrHolds(const AppRecordEx& record) const = 0;
    // True when the application or one below it holds files.
    virtual bool IsGathered() const = 0;
    // Drops what a gather has added, here and below, so that the application can be gathered again.
    virtual void UnGather() = 0;
    // Works out what belongs to the application. root and filter are null for the application that the caller asks
    // for; the sub-applications get theirs. Does nothing when IsGathered.
    virtual ResultCode Gather(IApp* root, IRemoveRepeatReg* filter) = 0;
    // Adds the drives ("C:") of the directories.
    virtual void GetDrives(CStringSet& drives) const = 0;
    // Appends the sub-applications, which stay this object's: no reference is added.
    virtual void GetSubApps(std::vector<IApp*>& subApps) const = 0;
    // Clears files, then lists the ordinary files, which stay this object's, and appends the directories.
    virtual void GetFilesAndDirectories(std::vector<IWFYFile*>& files, CStringVec& directories) = 0;
    // Bytes of the record that Serialize writes; 0 for an application that cannot be stored.
    virtual std::uint32_t GetSize() const = 0;
    // Writes the record; count tells the bytes written.
    virtual ResultCode Serialize(std::byte* buffer, std::uint32_t size, std::uint32_t& count) const = 0;
    // Fills a new object from a record; count tells the bytes read. After a failure the object is half filled and
    // fit only to be released.
    virtual ResultCode ReSerialize(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) = 0;
};

}  // namespace roundup
