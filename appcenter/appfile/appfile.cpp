#include "appcenter/appfile/appfile.h"

#include "platform/machine.h"
#include "utility/boundary.h"

namespace roundup {

CWFYFile::~CWFYFile() {
    if (!IsTemporary() || pwszPath.IsNull()) return;
    // A file that cannot be deleted, or has gone already, is no concern of the object.
    AtBoundary([this] { (void)CurrentMachine().Files().Delete(pwszPath.Get()); }, [] {});
}

bool CWFYFile::IsTemporary() const noexcept {
    if ((dwFlags & FileFlags::kStaysOnDisk) != 0) return false;
    return dwType == FileType::kConfig || dwType == FileType::kIndex || dwType == FileType::kUnnamed ||
           (dwType >= FileType::kFirstData && dwType <= FileType::kLastData);
}

bool CWFYFile::SetAlias(const char16_t* alias) {
    return AssignString(pwszAlias, alias != nullptr ? std::u16string_view(alias) : std::u16string_view());
}

}  // namespace roundup
