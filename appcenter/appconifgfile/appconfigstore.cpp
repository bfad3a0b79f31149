#include "appcenter/appconifgfile/appconfigstore.h"

#include <bit>
#include <mutex>

#include "platform/filesystem.h"
#include "platform/machine.h"
#include "platform/threading.h"
#include "utility/formattext.h"
#include "utility/kvobject.h"
#include "utility/stringcontainers.h"

namespace roundup {

namespace {

static_assert(std::endian::native == std::endian::little);

constexpr std::uint32_t kShareAll = kShareRead | kShareWrite;

// Data files that have become records, so that none becomes one twice.
struct MergedFiles {
    bool Enter(const char16_t* path) {
        const std::lock_guard guard(lock);
        return paths.insert(OwnedString(path)).second;
    }
    Mutex lock;  // gathers may run side by side
    CStringSet paths;
};

ResultCode WriteTo(IProbeIO* io, const void* data, std::uint32_t size, std::uint32_t& done) {
    done = 0;
    if (io == nullptr) return Fail(SmallCode::BadHandle);
    const std::int32_t code = io->Write(0, data, size, &done);
    if (code != 0) return Pass(ResultCode(static_cast<std::uint32_t>(code)));
    return done == size ? kSuccess : Fail(SmallCode::ShortWrite, done);
}

}  // namespace

void StoreRecord::Bytes(const void* data, std::size_t size) {
    const auto* bytes = static_cast<const std::byte*>(data);
    m_bytes.insert(m_bytes.end(), bytes, bytes + size);
}

void StoreRecord::String(std::u16string_view text) {
    Dword(static_cast<std::uint32_t>(text.size() * sizeof(char16_t)));
    Bytes(text.data(), text.size() * sizeof(char16_t));
}

CAppConfigStore::~CAppConfigStore() {
    Close();
    if (!m_owned) return;
    IFileSystem& files = CurrentMachine().Files();
    files.Delete(DataPath());
    files.Delete(IndexPath());
}

ResultCode CAppConfigStore::NameFiles(std::u16string_view key) {
    PathText folder;
    const std::uint32_t length = CurrentMachine().System().GetTempFolder(folder.Data(), PathText::Size());
    if (length == 0 || length >= PathText::Size()) return Fail(SmallCode::BadHandle, length);
    if (folder.Data()[length - 1] == u'\\') folder.Data()[length - 1] = u'\0';
    bool fits = folder.Append(u"\\WAY_FERRY");
    const Win32Error made = CurrentMachine().Files().CreateDirectory(folder.Text());
    static_cast<void>(made);  // it may be there; else the files cannot be made
    const OwnedString name(key);
    fits = FormatText(m_indexPath, u"%s\\%s.idx", folder.Text(), name.Text()) && fits;
    fits = FormatText(m_dataPath, u"%s\\%s.cfg", folder.Text(), name.Text()) && fits;
    return fits ? kSuccess : Fail(SmallCode::BadHandle);
}

ResultCode CAppConfigStore::Open(std::u16string_view key, ItemCallback callback, void* context) {
    if (key.empty()) return Fail(SmallCode::ObjectAllocation);
    m_callback = callback;
    m_context = context;
    if (auto rc = NameFiles(key); Failed(rc)) return Pass(rc);
    IFileSystem& files = CurrentMachine().Files();
    files.Delete(IndexPath());
    files.Delete(DataPath());
    IClosedLibraries& libraries = CurrentMachine().ClosedLibraries();
    m_index = libraries.GetProbeIO();
    m_data = libraries.GetProbeIO();
    if (m_index == nullptr || m_data == nullptr) return Fail(SmallCode::ObjectAllocation);
    m_owned = true;
    constexpr std::uint32_t kAccess = kGenericRead | kGenericWrite;
    if (m_index->Open(IndexPath(), kAccess, kShareAll, kCreateAlways) == -1) return Fail(SmallCode::BadHandle);
    if (m_data->Open(DataPath(), kAccess, kShareAll, kCreateAlways) == -1) return Fail(SmallCode::BadHandle);
    return kSuccess;
}

void CAppConfigStore::BeginRecord(std::uint32_t type) noexcept {
    m_entry.offset = m_position;
    m_entry.size = 0;
    m_entry.type = type;
}

ResultCode CAppConfigStore::Write(const void* data, std::uint32_t size) {
    if (data == nullptr || size == 0) return Fail(SmallCode::BadArgument, size);
    std::uint32_t done = 0;
    const ResultCode rc = WriteTo(m_data, data, size, done);
    m_position += done;
    m_entry.size += done;
    return Failed(rc) ? Pass(rc) : kSuccess;
}

void CAppConfigStore::EndRecord() {
    if (m_entry.size != 0) Ignore(WriteEntry(m_entry), u"the record stays without an entry");
}

ResultCode CAppConfigStore::WriteEntry(const StoreIndexEntry& entry) {
    std::uint32_t done = 0;
    return WriteTo(m_index, &entry, sizeof entry, done);
}

ResultCode CAppConfigStore::OnItem(void* store, const char16_t* path, std::uint64_t size, std::uint32_t type) {
    auto* self = static_cast<CAppConfigStore*>(store);
    if (self == nullptr) return kSuccess;
    if (type <= 3 || type == ItemType::kFolder) {
        return self->m_callback != nullptr ? self->m_callback(self->m_context, path, size, type) : kSuccess;
    }
    if (path == nullptr || *path == u'\0') return kSuccess;
    ResultCode rc;
    if (ProcessWide<MergedFiles>().Enter(path)) rc = self->AppendFile(path, type);
    CurrentMachine().Files().Delete(path);
    return rc;
}

ResultCode CAppConfigStore::AppendFile(const char16_t* path, std::uint32_t type) {
    if (path == nullptr || *path == u'\0') return Fail(SmallCode::BadArgument);
    const auto source = RefPtr<IProbeIO>::Adopt(CurrentMachine().ClosedLibraries().GetProbeIO());
    if (!source) return Fail(SmallCode::ObjectAllocation);
    if (source->Open(path, kGenericRead, kShareAll, kOpenExisting) == -1) return Fail(SmallCode::BadHandle);
    StoreIndexEntry entry;
    entry.type = type;
    entry.offset = m_position;
    char buffer[1024];
    std::uint32_t got = 0;
    do {
        got = 0;
        const std::int32_t code = source->Read(0, buffer, sizeof buffer, &got);
        if (code != 0) return Pass(ResultCode(static_cast<std::uint32_t>(code)));
        if (got == 0) break;
        std::uint32_t done = 0;
        const ResultCode rc = WriteTo(m_data, buffer, got, done);
        m_position += done;
        entry.size += done;
        if (Failed(rc)) return Pass(rc);
    } while (got == sizeof buffer);
    return WriteEntry(entry);
}

void CAppConfigStore::Close() noexcept {
    for (IProbeIO** io : {&m_index, &m_data}) {
        if (*io != nullptr) (*io)->Release();
        *io = nullptr;
    }
}

}  // namespace roundup
