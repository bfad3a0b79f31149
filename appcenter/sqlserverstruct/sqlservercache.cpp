// The cache file of the database server. Numbers are 32 bits, little-endian; a text is its length in bytes with the
// terminator, and that many bytes of UTF-16.
//
//     magic, GroupComputerName, ComputerName
//     number of instances, for each: InstanceName, InstanceId, RootFolder
//     number of LocalGroups, those; number of ServiceKeys, those
//     number of FolderAccounts, for each: path, number of accounts, those; RegistryAccounts likewise
//     number of GroupMembers, for each: member, group
//     number of PathEntries, those; length of the whole file
#include <algorithm>
#include <limits>

#include "appcenter/sqlserverstruct/sqlserverparts.h"
#include "platform/machine.h"
#include "utility/bufarray.h"
#include "utility/formattext.h"
#include "utility/specialfolders.h"

namespace roundup {

namespace {

constexpr std::uint32_t kLeastBuffer = 1048576;  // bytes

// Writes the record to a buffer, or without one counts its bytes.
class CacheWriter {
  public:
    explicit CacheWriter(CBufArray* buffer) : m_buffer(buffer) {}

    std::uint64_t Size() const noexcept { return m_size; }
    bool Fits() const noexcept { return m_fits; }

    void Number(std::uint64_t number) {
        std::uint8_t bytes[4] = {};
        for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(number >> (8 * i));
        Bytes(bytes);
    }
    void Text(const std::u16string& text) {
        const std::size_t size = (text.size() + 1) * sizeof(char16_t);
        Number(size);
        Bytes({reinterpret_cast<const std::uint8_t*>(text.c_str()), size});
    }
    void Texts(const SqlTexts& texts) {
        Number(texts.size());
        for (const std::u16string& text : texts) Text(text);
    }
    void Accounts(const SqlMap<SqlTexts>& accounts) {
        Number(accounts.size());
        for (const auto& [path, names] : accounts) {
            Text(path);
            Texts(names);
        }
    }

  private:
    void Bytes(std::span<const std::uint8_t> bytes) {
        m_size += bytes.size();
        if (m_buffer != nullptr) m_fits = m_buffer->Write(bytes) && m_fits;
    }

    CBufArray* m_buffer;
    std::uint64_t m_size = 0;
    bool m_fits = true;
};

void WriteRecord(const SqlServerInfo& info, CacheWriter& writer) {
    writer.Number(kSqlServerCacheMagic);
    writer.Text(info.GroupComputerName);
    writer.Text(info.ComputerName);
    writer.Number(info.Instances.size());
    for (const SqlInstanceInfo& instance : info.Instances) {
        writer.Text(instance.InstanceName);
        writer.Text(instance.InstanceId);
        writer.Text(instance.RootFolder);
    }
    writer.Texts(info.LocalGroups);
    writer.Texts(info.ServiceKeys);
    writer.Accounts(info.FolderAccounts);
    writer.Accounts(info.RegistryAccounts);
    writer.Number(info.GroupMembers.size());
    for (const auto& [member, group] : info.GroupMembers) {
        writer.Text(member);
        writer.Text(group);
    }
    writer.Texts(info.PathEntries);
    writer.Number(writer.Size() + sizeof(std::uint32_t));
}

ResultCode WriteFile(const std::u16string& path, const CBufArray& record) {
    IFileSystem& files = CurrentMachine().Files();
    FileHandle file = kInvalidFile;
    if (const Win32Error error = files.Open(path.c_str(), kGenericWrite, kShareRead | kShareWrite, kCreateAlways, file);
        error != kErrorSuccess) {
        return Fail(SmallCode::GeneralFailure, error);
    }
    std::uint32_t done = 0;
    const Win32Error error = files.Write(file, record.GetData(), record.GetPosition(), done);
    files.Close(file);
    if (error != kErrorSuccess || done != record.GetPosition()) return Fail(SmallCode::GeneralFailure, done);
    return kSuccess;
}

}  // namespace

ResultCode WriteSqlServerCache(const SqlServerInfo& info, std::uint32_t version, std::u16string& path) {
    char16_t folder[260] = {};
    constexpr auto kAllUsers = static_cast<std::uint32_t>(Csidl::CommonAppData);
    if (!CurrentMachine().Shell().GetDefaultFolderPath(kAllUsers, folder)) return Fail(SmallCode::GeneralFailure);

    CacheWriter counter(nullptr);
    WriteRecord(info, counter);
    CBufArray record;
    if (counter.Size() > std::numeric_limits<std::uint32_t>::max() ||
        !record.Alloc(std::max(kLeastBuffer, static_cast<std::uint32_t>(counter.Size())))) {
        return Fail(SmallCode::ObjectAllocation, counter.Size());
    }
    CacheWriter writer(&record);
    WriteRecord(info, writer);
    if (!writer.Fits()) return Fail(SmallCode::GeneralFailure, writer.Size());

    const std::u16string name = FormatText(u"WFY_SQLSERVER_%d", version);
    path = FormatText(u"%s\\%s_cache", static_cast<const char16_t*>(folder), name);
    if (auto rc = WriteFile(path, record); Failed(rc)) return Pass(rc);
    return kSuccess;
}

}  // namespace roundup
