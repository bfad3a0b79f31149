#include "msianalyzer/msiproductinfo.h"

#include <cstring>
#include <new>

#include "msianalyzer/datafile.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/icon2mem.h"

namespace roundup {

namespace {

// A file that is deleted at the end.
class TempFile {
  public:
    TempFile() = default;
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() {
        if (!path.IsEmpty()) (void)CurrentMachine().Files().Delete(path.Text());
    }
    OwnedString path;
};

class IconPair {
  public:
    IconPair() = default;
    IconPair(const IconPair&) = delete;
    IconPair& operator=(const IconPair&) = delete;
    ~IconPair() {
        for (const IconHandle icon : {large, small}) {
            if (icon != 0) CurrentMachine().Shell().DestroyIcon(icon);
        }
    }
    IconHandle large = 0;
    IconHandle small = 0;
};

// The value is a name, or a name, a comma and an index, of which the first digit alone counts.
struct IconName {
    explicit IconName(std::u16string_view value) noexcept {
        const std::size_t comma = value.find(u',');
        name = value.substr(0, comma);
        if (comma == std::u16string_view::npos || comma + 1 == value.size()) return;
        const char16_t digit = value[comma + 1];
        if (digit >= u'0' && digit <= u'9') index = digit - u'0';
    }
    std::u16string_view name;
    std::int32_t index = 0;
};

ResultCode CopyIcon(const CIconTableRow& row, std::unique_ptr<std::byte[]>& data, std::uint32_t& size) {
    data.reset(new (std::nothrow) std::byte[row.dataSize]);
    if (data == nullptr) return Fail(SmallCode::BufferAllocation, row.dataSize);
    std::memcpy(data.get(), row.data.get(), row.dataSize);
    size = row.dataSize;
    return kSuccess;
}

ResultCode WriteImage(const CIconTableRow& row, OwnedString& path) {
    CDataFile file;
    if (const ResultCode rc = file.Create(path, u".exe"); Failed(rc)) return Pass(rc);
    const ResultCode rc = file.WriteBytes(row.data.get(), row.dataSize);
    file.Close();
    return Failed(rc) ? Pass(rc) : kSuccess;
}

// The platform takes icons out of executable images on disk alone, so the image goes into a temporary file.
ResultCode ExtractIcon(const CIconTableRow& row, std::int32_t index, std::unique_ptr<std::byte[]>& data,
                       std::uint32_t& size) {
    TempFile file;
    if (const ResultCode rc = WriteImage(row, file.path); Failed(rc)) return Pass(rc);
    IShell& shell = CurrentMachine().Shell();
    IconPair icons;
    shell.ExtractIcons(file.path.Text(), index, icons.large, icons.small);
    if (icons.large == 0 && icons.small == 0) icons.large = shell.GetFileIcon(file.path.Text());
    const IconHandle icon = icons.large != 0 ? icons.large : icons.small;
    if (icon == 0) return Fail(SmallCode::GeneralFailure);
    std::uint32_t room = 0;
    if (!IconToMemory(icon, nullptr, room)) return Fail(SmallCode::GeneralFailure);
    std::unique_ptr<std::byte[]> bytes(new (std::nothrow) std::byte[room]);
    if (bytes == nullptr) return Fail(SmallCode::BufferAllocation, room);
    if (!IconToMemory(icon, bytes.get(), room)) return Fail(SmallCode::GeneralFailure);
    data = std::move(bytes);
    size = room;
    return kSuccess;
}

}  // namespace

CMSIProductInfo::~CMSIProductInfo() {
    m_properties.reset();
    m_icons.reset();
    if (m_database != 0) CurrentMachine().Installer().CloseHandle(m_database);
}

ResultCode CMSIProductInfo::Open(const char16_t* path) {
    if (const ResultCode rc = PrepareTempFolder(); Failed(rc)) return Pass(rc);
    const Win32Error error = AtBoundary([&] { return CurrentMachine().Installer().OpenDatabase(path, m_database); },
                                        [] { return kErrorNotEnoughMemory; });
    if (error != kErrorSuccess) return Fail(SmallCode::InstallerFailure, error);
    m_properties.reset(new (std::nothrow) CPropertyTableAnalyzer);
    if (m_properties == nullptr) return Fail(SmallCode::ObjectMissing);
    m_properties->SetFilter(u"ProductCode", u"ProductName", u"ProductVersion", u"ARPPRODUCTICON");
    if (const ResultCode rc = m_properties->Analyze(m_database); Failed(rc)) return Pass(rc);
    m_icons.reset(new (std::nothrow) CIconTableAnalyzer);
    if (m_icons == nullptr) return Fail(SmallCode::ObjectMissing);
    const ResultCode rc = m_icons->Analyze(m_database);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

ResultCode CMSIProductInfo::GetProperty(std::u16string_view name, std::u16string_view& value) const {
    const auto* row = static_cast<const CPropertyTableRow*>(m_properties->GetRows().Find(name));
    if (row == nullptr) return FailQuiet(SmallCode::GeneralFailure);
    value = row->value;
    return kSuccess;
}

ResultCode CMSIProductInfo::GetIcon(std::unique_ptr<std::byte[]>& data, std::uint32_t& size) const {
    std::u16string_view value;
    if (const ResultCode rc = GetProperty(u"ARPPRODUCTICON", value); Failed(rc)) return PassQuiet(rc);
    const IconName icon(value);
    const auto* row = static_cast<const CIconTableRow*>(m_icons->GetRows().Find(icon.name));
    if (row == nullptr || row->dataSize < 1) return Fail(SmallCode::GeneralFailure);
    const bool isImage = row->dataSize >= 2 && std::memcmp(row->data.get(), "MZ", 2) == 0;
    return isImage ? ExtractIcon(*row, icon.index, data, size) : CopyIcon(*row, data, size);
}

}  // namespace roundup
