#include "platform/recorded/disksource.h"

#include <algorithm>

#include "utility/utf.h"

namespace roundup {

namespace {

std::string HostPath(std::u16string_view path) {
    std::string text = ToUtf8(path);
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

}  // namespace

Win32Error DiskSource::List(std::u16string_view folder, std::vector<SourceEntry>& entries) {
    std::vector<HostEntry> listed;
    if (const Win32Error error = m_folder->List(HostPath(folder), listed); error != kErrorSuccess) return error;
    entries.reserve(listed.size());
    for (const HostEntry& entry : listed) {
        SourceEntry shown;
        std::size_t fault = 0;
        if (!FromUtf8Strict(entry.name, shown.name, fault)) continue;
        shown.kind = entry.kind;
        entries.push_back(std::move(shown));
    }
    return kErrorSuccess;
}

Win32Error DiskSource::GetSize(std::u16string_view file, std::uint64_t& size) {
    SourceKind kind = SourceKind::Other;
    return m_folder->Query(HostPath(file), kind, size);
}

Win32Error DiskSource::Open(std::u16string_view file, std::unique_ptr<IFileStream>& stream) {
    return m_folder->OpenFile(HostPath(file), HostOpen::Read, stream);
}

Win32Error DiskSource::ReadLink(std::u16string_view link, LinkTarget& target) {
    std::string text;
    const Win32Error error = m_folder->ReadLink(HostPath(link), text);
    if (error == kErrorSuccess) target = ParseLinkText(text, m_folder->Path());
    return error;
}

std::vector<std::byte> DiskSource::ReadSecurity(std::u16string_view path) {
    return m_folder->ReadSecurity(HostPath(path));
}

}  // namespace roundup
