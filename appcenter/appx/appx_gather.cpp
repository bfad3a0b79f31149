// The files of a store package: its own folder, the folders of its resources beside it, and the user's data.
#include <new>

#include "appcenter/appx/appx.h"
#include "utility/boundary.h"
#include "utility/filesearch.h"
#include "utility/log.h"
#include "utility/pathchecksum.h"

namespace roundup {
ResultCode CAppx::Gather(IApp* /*root*/, IRemoveRepeatReg* /*filter*/) {
    if (IsGathered()) return kSuccess;
    const std::u16string_view packages = m_wzPackagesFolder;
    const std::size_t length = packages.size() + m_wzPackageFullName.Length();
    if (packages.empty() || m_wzPackageFullName.IsEmpty() || length >= kTextLimit) {
        return Fail(SmallCode::GeneralFailure, length);
    }
    return AtBoundary(
        [&]() -> ResultCode {
            std::u16string path;
            path.append(packages).append(u"\\").append(m_wzPackageFullName.View());
            if (auto rc = ScanFolder(path, FileType::kStorePackage); Failed(rc)) return Pass(rc);
            ResultCode result;
            for (const OwnedString& name : ExtraFolder) {
                if (packages.size() + name.Length() >= kTextLimit) {
                    result = Fail(SmallCode::GeneralFailure, name.Length());
                    break;
                }
                path.assign(packages).append(u"\\").append(name.View());
                if (result = ScanFolder(path, FileType::kStorePackage); Failed(result)) {
                    Skip(result);
                    break;
                }
            }
            for (const OwnedString& folder : DataFolder) {
                path.assign(folder.View());
                if (auto rc = ScanFolder(path, FileType::kStorePackage); Failed(rc)) Skip(rc);
            }
            return result;
        },
        [] { return Fail(SmallCode::ObjectAllocation); });
}

// path comes back as it was. The limit of its length bounds the depth, and so ends a junction that leads back up; the
// checksums keep one that is met again from being walked again.
ResultCode CAppx::ScanFolder(std::u16string& path, std::uint32_t type) {
    const std::size_t length = path.size();
    if (length == 0) return Fail(SmallCode::BadArgument);
    if (length >= kPathLimit - 2) return Fail(SmallCode::NotAvailable, length);
    path += u"\\*";
    FileSearch search(path.c_str());
    path.resize(length);
    if (search.Error() != kErrorSuccess) return Fail(SmallCode::GeneralFailure, search.Error());
    while (search.Next()) {
        if (length + 1 + search.Name().size() >= kPathLimit) continue;
        path.append(u"\\").append(search.Name());
        ResultCode rc;
        if (!search.IsFolder()) {
            rc = AddFile(path, search.Entry().size, type);
        } else if (!search.IsReparseFolder() ||
                   m_setLinks.insert(PathChecksum(path.data(), path.size() * sizeof(char16_t))).second) {
            rc = ScanFolder(path, type);
        }
        path.resize(length);
        if (Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

ResultCode CAppx::AddFile(const std::u16string& path, std::uint64_t size, std::uint32_t type) {
    std::unique_ptr<CWFYFile> file(new (std::nothrow) CWFYFile);
    if (file == nullptr || !file->pwszPath.Assign(path)) return Fail(SmallCode::ObjectAllocation);
    file->llSize = static_cast<std::int64_t>(size);
    file->dwType = type;
    m_listFiles.push_back(std::move(file));
    m_ullGatheredSize += size;
    return kSuccess;
}

void CAppx::UnGather() {
    TraceLine(u"UnGather Appx \"%s\"", m_wzPackageFullName);
    m_listFiles.clear();
}

}  // namespace roundup
