#include "platform/recorded/mappedfolder.h"

#include <algorithm>

#include "platform/recorded/memoryfile.h"
#include "platform/recorded/winpath.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr int kMostHops = 40;  // links followed for one path

std::string Join(const std::string& folder, std::string_view name) {
    return folder.empty() ? std::string(name) : folder + "/" + std::string(name);
}

// A stream that counts what it writes against the machine's budget.
class CountedStream final : public IFileStream {
  public:
    CountedStream(std::unique_ptr<IFileStream> stream, WriteBudget& budget)
        : m_stream(std::move(stream)), m_budget(budget) {}

    Win32Error ReadAt(std::uint64_t position, void* buffer, std::uint32_t size, std::uint32_t& done) override {
        return m_stream->ReadAt(position, buffer, size, done);
    }
    Win32Error WriteAt(std::uint64_t position, const void* buffer, std::uint32_t size, std::uint32_t& done) override {
        done = 0;
        return m_budget.Take(size) ? m_stream->WriteAt(position, buffer, size, done) : kErrorDiskFull;
    }
    Win32Error GetSize(std::uint64_t& size) override { return m_stream->GetSize(size); }
    Win32Error SetSize(std::uint64_t size) override { return m_stream->SetSize(size); }

  private:
    const std::unique_ptr<IFileStream> m_stream;
    WriteBudget& m_budget;
};

}  // namespace

MappedFolder::MappedFolder(std::unique_ptr<HostFolder> folder, WriteBudget& budget)
    : m_folder(std::move(folder)), m_budget(budget) {}

Win32Error MappedFolder::FindPart(const std::string& folder, std::u16string_view part, std::string& name,
                                  Found& found) {
    name = ToUtf8(part);
    Win32Error error = m_folder->Query(Join(folder, name), found.kind, found.size);
    if (error != kErrorFileNotFound) return error;
    std::vector<HostEntry> entries;
    error = m_folder->List(folder, entries);
    if (error != kErrorSuccess) return error;
    const std::string* first = nullptr;
    for (const HostEntry& entry : entries) {
        std::u16string text;
        std::size_t fault = 0;
        const bool same = FromUtf8Strict(entry.name, text, fault) && CompareFolded(text, part) == 0;
        if (same && (first == nullptr || entry.name < *first)) first = &entry.name;
    }
    if (first == nullptr) return kErrorFileNotFound;
    name = *first;
    return m_folder->Query(Join(folder, name), found.kind, found.size);
}

MappedFolder::Found MappedFolder::Find(std::u16string_view path, bool followLast) {
    Found found;
    int hops = kMostHops;
    while (!path.empty()) {
        const std::u16string_view part = TakePart(path);
        if (found.kind != SourceKind::Folder) {
            found.error = kErrorPathNotFound;
            return found;
        }
        std::string name;
        found.error = FindPart(found.path, part, name, found);
        found.path = Join(found.path, name);
        if (found.error != kErrorSuccess) {
            if (found.error == kErrorFileNotFound && !path.empty()) found.error = kErrorPathNotFound;
            return found;
        }
        if (!found.names.empty()) found.names.push_back(u'\\');
        found.names.append(FromUtf8(name));
        const bool follow = found.kind == SourceKind::Link && (followLast || !path.empty());
        if (follow) found.error = Follow(found.path, hops, found);
        if (found.error == kErrorFileNotFound && !path.empty()) found.error = kErrorPathNotFound;
        if (found.error != kErrorSuccess) return found;
    }
    return found;
}

// Replaces the path of a link by that of what it leads to, part by part, so that ".." is what it is on this computer:
// the folder above the one that a link led to.
Win32Error MappedFolder::Follow(std::string& path, int& hops, Found& found) {
    if (hops-- == 0) return kErrorCannotAccessFile;
    std::string text;
    if (const Win32Error error = m_folder->ReadLink(path, text); error != kErrorSuccess) return error;
    const LinkTarget target = ParseLinkText(text, m_folder->Path());
    if (target.outside) return kErrorCannotAccessFile;
    const auto cutLast = [](std::string& whole) {
        const std::size_t cut = whole.rfind('/');
        whole.resize(cut == std::string::npos ? 0 : cut);
    };
    if (target.fromRoot) {
        path.clear();
    } else {
        cutLast(path);
    }
    found.kind = SourceKind::Folder;
    found.size = 0;
    for (const std::u16string& part : target.parts) {
        if (part == u"..") {
            if (path.empty()) return kErrorCannotAccessFile;
            cutLast(path);
            found.kind = SourceKind::Folder;
            continue;
        }
        path = Join(path, ToUtf8(part));
        Win32Error error = m_folder->Query(path, found.kind, found.size);
        if (error == kErrorSuccess && found.kind == SourceKind::Link) error = Follow(path, hops, found);
        if (error != kErrorSuccess) return error;
    }
    return kErrorSuccess;
}

FileInfo MappedFolder::InfoOf(const std::string& path, SourceKind kind, std::uint64_t size) {
    if (kind == SourceKind::Folder) return {kAttributeDirectory, 0};
    if (kind != SourceKind::Link) return {kAttributeArchive, size};
    Found target;
    int hops = kMostHops;
    std::string followed = path;
    const bool toFolder = Follow(followed, hops, target) == kErrorSuccess && target.kind == SourceKind::Folder;
    return {kAttributeReparsePoint | (toFolder ? kAttributeDirectory : kAttributeArchive), 0};
}

Win32Error MappedFolder::Describe(std::u16string_view path, FileInfo& info) {
    const Found found = Find(path, false);
    if (found.error == kErrorSuccess) info = InfoOf(found.path, found.kind, found.size);
    return found.error;
}

Win32Error MappedFolder::List(std::u16string_view path, std::vector<Item>& items) {
    const Found found = Find(path, true);
    if (found.error != kErrorSuccess) return found.error;
    if (found.kind != SourceKind::Folder) return kErrorPathNotFound;
    std::vector<HostEntry> entries;
    if (const Win32Error error = m_folder->List(found.path, entries); error != kErrorSuccess) return error;
    std::sort(entries.begin(), entries.end(), [](const HostEntry& a, const HostEntry& b) { return a.name < b.name; });
    items.reserve(entries.size());
    for (const HostEntry& entry : entries) {
        Item item;
        std::size_t fault = 0;
        const bool shown = FromUtf8Strict(entry.name, item.name, fault) &&
                           std::none_of(item.name.begin(), item.name.end(), IsForbiddenInName);
        if (!shown) continue;
        const std::string place = Join(found.path, entry.name);
        SourceKind kind = entry.kind;
        std::uint64_t size = 0;
        // It may be gone by now.
        if (m_folder->Query(place, kind, size) != kErrorSuccess) continue;
        item.info = InfoOf(place, kind, size);
        items.push_back(std::move(item));
    }
    std::stable_sort(items.begin(), items.end(),
                     [](const Item& a, const Item& b) { return CompareFolded(a.name, b.name) < 0; });
    items.erase(std::unique(items.begin(), items.end(),
                            [](const Item& a, const Item& b) { return CompareFolded(a.name, b.name) == 0; }),
                items.end());
    return kErrorSuccess;
}

Win32Error MappedFolder::Open(std::u16string_view path, bool write, std::uint32_t disposition,
                              std::unique_ptr<IFileStream>& stream) {
    Found found = Find(path, true);
    const bool creates = disposition != kOpenExisting;
    if (found.error != kErrorSuccess && !(found.error == kErrorFileNotFound && creates)) return found.error;
    if (found.error == kErrorSuccess && found.kind == SourceKind::Folder) {
        return disposition == kCreateNew ? kErrorFileExists : kErrorAccessDenied;
    }
    HostOpen how = write ? HostOpen::ReadWrite : HostOpen::Read;
    if (disposition == kCreateNew) how = HostOpen::CreateNew;
    if (disposition == kCreateAlways) how = HostOpen::CreateOrEmpty;
    if (disposition == kOpenAlways && (write || found.error != kErrorSuccess)) how = HostOpen::CreateOrOpen;
    std::unique_ptr<IFileStream> opened;
    const Win32Error error = m_folder->OpenFile(found.path, how, opened);
    if (error == kErrorSuccess) stream = std::make_unique<CountedStream>(std::move(opened), m_budget);
    return error;
}

Win32Error MappedFolder::Delete(std::u16string_view path) {
    const Found found = Find(path, false);
    if (found.error != kErrorSuccess) return found.error;
    return found.kind == SourceKind::Folder ? kErrorAccessDenied : m_folder->DeleteFile(found.path);
}

Win32Error MappedFolder::CreateFolder(std::u16string_view path) {
    const Found found = Find(path, false);
    if (found.error == kErrorSuccess) return kErrorAlreadyExists;
    return found.error == kErrorFileNotFound ? m_folder->CreateFolder(found.path) : found.error;
}

Win32Error MappedFolder::RealNames(std::u16string_view path, std::u16string& names) {
    Found found = Find(path, false);
    if (found.error == kErrorSuccess) names = std::move(found.names);
    return found.error;
}

Win32Error MappedFolder::ReadLinkText(std::u16string_view path, std::u16string& text) {
    const Found found = Find(path, false);
    if (found.error != kErrorSuccess) return found.error;
    if (found.kind != SourceKind::Link) return kErrorNotAReparsePoint;
    std::string target;
    const Win32Error error = m_folder->ReadLink(found.path, target);
    if (error == kErrorSuccess) text = FromUtf8(target);
    return error;
}

}  // namespace roundup
