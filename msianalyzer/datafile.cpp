#include "msianalyzer/datafile.h"

#include <bit>
#include <new>

#include "platform/filesystem.h"
#include "platform/machine.h"

namespace roundup {

namespace {

constexpr std::uint32_t kMaxPath = 260;
constexpr std::u16string_view kFolder = u"WAY-FERRY";

static_assert(std::endian::native == std::endian::little);

// Empty when the platform has no temporary folder, or one of a path that is too long.
OwnedString TempFolder() {
    OwnedString folder;
    char16_t temp[kMaxPath] = {};
    const std::uint32_t length = CurrentMachine().System().GetTempFolder(temp, kMaxPath);
    if (length != 0 && length < kMaxPath) (void)AssignConcat(folder, std::u16string_view(temp, length), kFolder);
    return folder;
}

// The bytes of a new GUID in memory order.
bool UniqueName(char16_t (&name)[33]) {
    std::uint8_t guid[16];
    if (!CurrentMachine().System().CreateGuid(guid)) return false;
    char16_t* next = name;
    for (const std::uint8_t byte : guid) {
        *next++ = u"0123456789ABCDEF"[byte >> 4U];
        *next++ = u"0123456789ABCDEF"[byte & 0xFU];
    }
    *next = u'\0';
    return true;
}

}  // namespace

ResultCode PrepareTempFolder() {
    const OwnedString folder = TempFolder();
    if (folder.IsNull()) return Fail(SmallCode::InstallerFailure);
    const Win32Error error = CurrentMachine().Files().CreateDirectory(folder.Text());
    if (error != kErrorSuccess && error != kErrorAlreadyExists) return Fail(SmallCode::OpenFailure, error);
    return kSuccess;
}

CDataFile::CDataFile() : m_io(CurrentMachine().ClosedLibraries().GetProbeIO()) {}

CDataFile::~CDataFile() {
    Close();
    if (m_io != nullptr) m_io->Release();
}

ResultCode CDataFile::Create(OwnedString& path, std::u16string_view extension) {
    Close();
    path.Reset();
    if (m_io == nullptr) return Fail(SmallCode::OpenFailure);
    const OwnedString folder = TempFolder();
    char16_t name[33];
    if (folder.IsNull() || !UniqueName(name)) return Fail(SmallCode::OpenFailure);
    OwnedString start;
    if (!AssignConcat3(start, folder, u"\\", name)) return Fail(SmallCode::BufferAllocation);
    const bool joined = extension.empty() ? path.Assign(start) : AssignConcat(path, start, extension);
    if (!joined) return Fail(SmallCode::BufferAllocation);
    const std::int64_t file =
        m_io->Open(path.Text(), kGenericRead | kGenericWrite, kShareRead | kShareWrite, kCreateNew);
    if (file == -1) return Fail(SmallCode::OpenFailure);
    m_open = true;
    return kSuccess;
}

ResultCode CDataFile::WriteBytes(const void* data, std::uint32_t size) {
    if (!m_open) return Fail(SmallCode::BadHandle);
    std::uint32_t done = 0;
    const std::int32_t rc = m_io->Write(0, data, size, &done);
    if (rc != 0) return Pass(ResultCode(static_cast<std::uint32_t>(rc)));
    return done == size ? kSuccess : Fail(SmallCode::ShortWrite, done);
}

ResultCode CDataFile::WriteString(std::u16string_view text) {
    const std::size_t bytes = text.size() * sizeof(char16_t);
    if (bytes > UINT32_MAX) return Fail(SmallCode::BadArgument);
    if (const ResultCode rc = WriteDword(static_cast<std::uint32_t>(bytes)); Failed(rc)) return Pass(rc);
    return text.empty() ? kSuccess : WriteBytes(text.data(), static_cast<std::uint32_t>(bytes));
}

void CDataFile::Close() {
    if (!m_open) return;
    m_open = false;
    m_io->Close(0);
}

CDataFile* CreateDataFile() noexcept { return new (std::nothrow) CDataFile; }

}  // namespace roundup
