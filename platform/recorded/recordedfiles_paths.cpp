// Other forms of a path, and what a reparse point says.
#include <algorithm>
#include <cstring>
#include <new>

#include "platform/recorded/lastfailure.h"
#include "platform/recorded/recordedfiles.h"
#include "platform/recorded/textanswer.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// Tags of reparse points and the flag of a link that starts at its folder (ntifs.h, "REPARSE_DATA_BUFFER").
constexpr std::uint32_t kTagMountPoint = 0xA0000003;
constexpr std::uint32_t kTagSymbolicLink = 0xA000000C;
constexpr std::uint32_t kLinkIsRelative = 1;

Win32Error Note(Win32Error error) noexcept {
    if (error != kErrorSuccess) SetLastFailure(error);
    return error;
}

void Append(std::vector<std::byte>& bytes, const void* data, std::size_t size) {
    const auto* first = static_cast<const std::byte*>(data);
    bytes.insert(bytes.end(), first, first + size);
}

template <class T>
void AppendNumber(std::vector<std::byte>& bytes, T number) {
    for (std::size_t i = 0; i < sizeof(T); ++i) bytes.push_back(static_cast<std::byte>(number >> (8 * i)));
}

// REPARSE_DATA_BUFFER: tag, length of what follows the first 8 bytes, then for either tag offset and length of the
// substitute name and of the name to show, for a link its flags, and the two names, of which a mount point
// terminates each with a zero.
std::vector<std::byte> ReparseData(std::u16string_view target, bool mountPoint) {
    const std::u16string substitute = mountPoint ? u"\\??\\" + std::u16string(target) : std::u16string(target);
    const std::size_t zero = mountPoint ? sizeof(char16_t) : 0;
    const std::size_t substituteBytes = substitute.size() * sizeof(char16_t);
    const std::size_t shownBytes = target.size() * sizeof(char16_t);
    const std::size_t names = substituteBytes + zero + shownBytes + zero;

    std::vector<std::byte> data;
    AppendNumber(data, mountPoint ? kTagMountPoint : kTagSymbolicLink);
    AppendNumber(data, static_cast<std::uint16_t>(names + (mountPoint ? 8 : 12)));
    AppendNumber(data, std::uint16_t{0});
    AppendNumber(data, std::uint16_t{0});
    AppendNumber(data, static_cast<std::uint16_t>(substituteBytes));
    AppendNumber(data, static_cast<std::uint16_t>(substituteBytes + zero));
    AppendNumber(data, static_cast<std::uint16_t>(shownBytes));
    if (!mountPoint) AppendNumber(data, kLinkIsRelative);
    Append(data, substitute.c_str(), substituteBytes + zero);
    const std::u16string shown(target);
    Append(data, shown.c_str(), shownBytes + zero);
    return data;
}

}  // namespace

// The name that each part of the path gets; empty for one that stays as it is written.
Win32Error RecordedFileSystem::PartNames(const WinPath& path, Form form, std::vector<std::u16string>& names) {
    std::vector<FileEntry*> trail;
    const FileTree::Found found = m_tree.Find(path, FileTree::Last::AsItIs, &trail);
    if (found.error != kErrorSuccess) return found.error;
    for (const FileEntry* entry : trail) {
        if (form == Form::Long) {
            names.emplace_back(entry->name);
        } else {
            names.push_back(entry->parent != nullptr ? entry->parent->ShortNameOf(*entry) : std::u16string());
        }
    }
    if (found.mapped == nullptr) return kErrorSuccess;
    FileInfo info;
    if (const Win32Error error = found.mapped->Describe(found.rest, info); error != kErrorSuccess) return error;
    if (form == Form::Short) return kErrorSuccess;
    std::u16string real;
    const Win32Error error = found.mapped->RealNames(found.rest, real);
    for (std::u16string_view rest = real; !rest.empty();) names.emplace_back(TakePart(rest));
    return error;
}

// The text stays as it was written, separators and all, but for the parts that have another name. A path with "."
// or ".." in it is put in its full form first, since its parts are not those that were found.
std::uint32_t RecordedFileSystem::ConvertPath(const char16_t* path, Form form, char16_t* buffer, std::uint32_t size) {
    WinPath parsed;
    std::vector<std::u16string> names;
    Win32Error error = ParsePath(path, parsed);
    if (error == kErrorSuccess) error = PartNames(parsed, form, names);
    if (error != kErrorSuccess) {
        SetLastFailure(error);
        return 0;
    }
    std::u16string_view written(path);
    const std::size_t colon = written.find(u':');
    std::u16string result(written.substr(0, colon + 1));
    written.remove_prefix(colon + 1);
    std::u16string_view parts = parsed.Parts();
    std::size_t index = 0;
    while (!parts.empty()) {
        const std::u16string_view part = TakePart(parts);
        const bool asWritten = written.size() > part.size() && written.substr(1, part.size()) == part;
        result.push_back(asWritten ? written[0] : u'\\');
        result.append(index < names.size() && !names[index].empty() ? std::u16string_view(names[index]) : part);
        ++index;
        written = asWritten ? written.substr(part.size() + 1) : std::u16string_view();
    }
    if (parsed.endsInSeparator) result.push_back(written.empty() ? u'\\' : written[0]);
    if (parsed.text.size() == 3 && !parsed.endsInSeparator) result.push_back(u'\\');
    return AnswerText(result, buffer, size);
}

// Written straight from the entries, whose names are the long ones.
std::uint32_t RecordedFileSystem::GetLongPath(const char16_t* path, char16_t* buffer, std::uint32_t size) try {
    if (const PathTrail* const trail = m_tree.FindPlain(path)) {
        std::size_t length = 2;
        for (const PathTrail::Part& part : trail->Asked()) length += 1 + part.entry->name.size();
        if (length >= size || buffer == nullptr) return static_cast<std::uint32_t>(length + 1);
        // The path may lie in the buffer, so its drive is taken from the trail.
        char16_t* end = std::copy_n(trail->text, 2, buffer);
        for (const PathTrail::Part& part : trail->Asked()) {
            *end++ = u'\\';
            end = std::copy(part.entry->name.begin(), part.entry->name.end(), end);
        }
        *end = u'\0';
        return static_cast<std::uint32_t>(length);
    }
    return ConvertPath(path, Form::Long, buffer, size);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory), 0;
}

// What has no short name stays as it is written.
std::uint32_t RecordedFileSystem::GetShortPath(const char16_t* path, char16_t* buffer, std::uint32_t size) try {
    if (const PathTrail* const trail = m_tree.FindPlain(path)) {
        std::u16string result;
        std::size_t copied = 0;
        std::size_t start = 2;
        for (const auto& [end, entry] : trail->Asked()) {
            const std::u16string name = entry->parent != nullptr ? entry->parent->ShortNameOf(*entry) : u"";
            if (!name.empty()) {
                result.append(trail->text + copied, start + 1 - copied).append(name);
                copied = end;
            }
            start = end;
        }
        const std::u16string_view rest(trail->text + copied, start - copied);
        return AnswerText(copied == 0 ? rest : result.append(rest), buffer, size);
    }
    return ConvertPath(path, Form::Short, buffer, size);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory), 0;
}

std::uint32_t RecordedFileSystem::GetFullPath(const char16_t* path, char16_t* buffer, std::uint32_t size) try {
    const std::u16string full = FullPathText(path);
    if (full.empty()) {
        SetLastFailure(kErrorPathNotFound);
        return 0;
    }
    return AnswerText(full, buffer, size);
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory), 0;
}

Win32Error RecordedFileSystem::GetVolumeFileSystem(const char16_t* root, char16_t* name, std::uint32_t size) try {
    WinPath parsed;
    if (const Win32Error error = ParsePath(root, parsed); error != kErrorSuccess) return Note(error);
    if (parsed.text.size() != 3 || !m_tree.HasDrive(parsed.Drive())) return Note(kErrorPathNotFound);
    std::u16string_view fileSystem = u"NTFS";
    for (const auto& [letter, own] : m_volumes) {
        if (letter == ToUpper(parsed.Drive())) fileSystem = own;
    }
    if (fileSystem.size() + 1 > size) return Note(kErrorMoreData);
    std::memcpy(name, fileSystem.data(), fileSystem.size() * sizeof(char16_t));
    name[fileSystem.size()] = u'\0';
    return kErrorSuccess;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

Win32Error RecordedFileSystem::LinkTextOf(const WinPath& path, std::u16string& text, bool& mountPoint) {
    WinPath itself = path;
    itself.endsInSeparator = false;
    const FileTree::Found found = m_tree.Find(itself, FileTree::Last::AsItIs);
    if (found.error != kErrorSuccess) return found.error;
    mountPoint = false;
    if (found.mapped != nullptr) return found.mapped->ReadLinkText(found.rest, text);
    FileEntry& entry = *found.entry;
    if (entry.extras && !entry.extras->reparseTarget.empty()) {
        mountPoint = true;
        text = entry.extras->reparseTarget;
        return kErrorSuccess;
    }
    if (entry.kind != SourceKind::Link) return kErrorNotAReparsePoint;
    LinkTarget target;
    std::u16string link = entry.parent->SourcePath();
    if (!link.empty()) link.push_back(u'\\');
    const Win32Error error = m_tree.Source().ReadLink(link.append(entry.name), target);
    if (error != kErrorSuccess || target.outside) return kErrorCannotAccessFile;
    for (const std::u16string& part : target.parts) text.append(text.empty() ? u"" : u"\\").append(part);
    return kErrorSuccess;
}

Win32Error RecordedFileSystem::ReadReparsePoint(const char16_t* path, void* buffer, std::uint32_t size,
                                                std::uint32_t& done) try {
    done = 0;
    WinPath parsed;
    if (const Win32Error error = ParsePath(path, parsed); error != kErrorSuccess) return Note(error);
    std::u16string text;
    bool mountPoint = false;
    if (const Win32Error error = LinkTextOf(parsed, text, mountPoint); error != kErrorSuccess) return Note(error);
    std::replace(text.begin(), text.end(), u'/', u'\\');
    // The most that a reparse point can hold (MAXIMUM_REPARSE_DATA_BUFFER_SIZE).
    constexpr std::size_t kLargest = 16384;
    const std::vector<std::byte> data = ReparseData(text, mountPoint);
    if (data.size() > kLargest) return Note(kErrorInvalidName);
    if (data.size() > size) return Note(kErrorMoreData);
    std::memcpy(buffer, data.data(), data.size());
    done = static_cast<std::uint32_t>(data.size());
    return kErrorSuccess;
} catch (const std::bad_alloc&) {
    return Note(kErrorNotEnoughMemory);
}

}  // namespace roundup
