#include "platform/recorded/recordedprofile.h"

#include <algorithm>
#include <cstring>

#include "platform/recorded/lastfailure.h"

namespace roundup {

namespace {

// A larger file is taken for unreadable: sizes of profiles are numbers of 32 bits with a sign.
constexpr std::uint64_t kLargestFile = 0x7FFFFFFF;

std::u16string_view ViewOf(const char16_t* text) noexcept {
    return text != nullptr ? std::u16string_view(text) : std::u16string_view();
}

std::uint32_t AnswerCut(std::u16string_view text, char16_t* buffer, std::uint32_t size) noexcept {
    if (size == 0) return 0;
    const std::size_t length = std::min<std::size_t>(text.size(), size - 1);
    if (length != 0) std::memcpy(buffer, text.data(), length * sizeof(char16_t));
    buffer[length] = u'\0';
    return static_cast<std::uint32_t>(length);
}

// Texts one behind the other, each with its zero, and one more zero behind the last.
class ListAnswer {
  public:
    ListAnswer(char16_t* buffer, std::uint32_t size) noexcept : m_buffer(buffer), m_size(size) {}

    // False once something did not fit.
    bool Add(std::u16string_view text) noexcept {
        if (m_size < 2) return false;
        const std::size_t room = m_size - 2 - m_used;
        const std::size_t length = std::min(text.size(), room);
        std::memcpy(m_buffer + m_used, text.data(), length * sizeof(char16_t));
        m_used += length;
        m_cut = text.size() >= room;
        if (!m_cut) m_buffer[m_used++] = u'\0';
        return !m_cut;
    }
    std::uint32_t Finish() noexcept {
        if (m_size == 0) return 0;
        m_buffer[m_used] = u'\0';
        if (m_size > 1) m_buffer[m_used + 1] = u'\0';
        return static_cast<std::uint32_t>(m_used);
    }

  private:
    char16_t* m_buffer;
    std::size_t m_size;
    std::size_t m_used = 0;
    bool m_cut = false;
};

std::uint32_t ListSections(std::u16string_view text, char16_t* buffer, std::uint32_t size) {
    ListAnswer answer(buffer, size);
    IniLine line;
    for (IniLines lines(text); lines.Next(line);) {
        if (line.kind == IniLine::Kind::Section && !line.name.empty() && !answer.Add(line.name)) break;
    }
    return answer.Finish();
}

std::uint32_t ListKeys(std::u16string_view text, std::u16string_view section, char16_t* buffer, std::uint32_t size) {
    ListAnswer answer(buffer, size);
    const std::optional<IniSection> found = FindIniSection(text, section);
    if (!found) return answer.Finish();
    IniLine line;
    for (IniLines lines(text.substr(0, found->end), found->start); lines.Next(line);) {
        if (line.kind == IniLine::Kind::Key && !line.name.empty() && !answer.Add(line.name)) break;
    }
    return answer.Finish();
}

// Keeps other processes from writing for the scope.
class WritersLock {
  public:
    explicit WritersLock(MappedFolder* folder) : m_folder(folder) {
        if (m_folder != nullptr) m_folder->LockWriters();
    }
    ~WritersLock() {
        if (m_folder != nullptr) m_folder->UnlockWriters();
    }
    WritersLock(const WritersLock&) = delete;
    WritersLock& operator=(const WritersLock&) = delete;

  private:
    MappedFolder* const m_folder;
};

}  // namespace

RecordedProfile::RecordedProfile(IFileSystem& files, std::u16string windowsFolder)
    : m_files(files), m_windowsFolder(std::move(windowsFolder)) {}

std::u16string RecordedProfile::PathOf(const char16_t* path) const {
    const std::u16string_view text(path);
    const bool bare = text.find_first_of(u"\\/:") == std::u16string_view::npos;
    return bare ? m_windowsFolder + u"\\" + std::u16string(text) : std::u16string(text);
}

Win32Error RecordedProfile::ReadFile(const std::u16string& path, std::string& bytes) {
    FileHandle file = kInvalidFile;
    Win32Error error = m_files.Open(path.c_str(), kGenericRead, kShareRead | kShareWrite, kOpenExisting, file);
    if (error != kErrorSuccess) return error;
    std::uint64_t size = 0;
    error = m_files.GetSize(file, size);
    if (error == kErrorSuccess && size > kLargestFile) error = kErrorNotEnoughMemory;
    if (error == kErrorSuccess) {
        bytes.resize(static_cast<std::size_t>(size));
        std::uint32_t done = 0;
        error = m_files.Read(file, bytes.data(), static_cast<std::uint32_t>(size), done);
        bytes.resize(done);
    }
    m_files.Close(file);
    return error;
}

bool RecordedProfile::WriteFile(const std::u16string& path, std::string_view bytes) {
    FileHandle file = kInvalidFile;
    // Not emptied first: a process that reads meanwhile, or finds the file after this one has died, finds the rest.
    if (m_files.Open(path.c_str(), kGenericWrite, kShareRead, kOpenAlways, file) != kErrorSuccess) return false;
    std::uint32_t done = 0;
    const auto size = static_cast<std::uint32_t>(bytes.size());
    bool written = m_files.Write(file, bytes.data(), size, done) == kErrorSuccess && done == size;
    written = written && m_files.SetEnd(file) == kErrorSuccess;
    m_files.Close(file);
    return written;
}

std::uint32_t RecordedProfile::GetString(const char16_t* section, const char16_t* key, const char16_t* fallback,
                                         char16_t* buffer, std::uint32_t size, const char16_t* path) {
    std::string bytes;
    const Win32Error error = ReadFile(PathOf(path), bytes);
    IniEncoding encoding = IniEncoding::Utf8;
    const std::u16string text = error == kErrorSuccess ? DecodeIni(bytes, encoding) : std::u16string();
    // The fallback loses the blanks at its end, in the answer as well as in a list that is empty.
    std::u16string_view otherwise = ViewOf(fallback);
    while (!otherwise.empty() && otherwise.back() == u' ') otherwise.remove_suffix(1);

    std::optional<std::u16string_view> value;
    if (error == kErrorSuccess && section == nullptr) return ListSections(text, buffer, size);
    if (const std::optional<IniSection> found = FindIniSection(text, TrimIni(ViewOf(section)))) {
        if (key == nullptr) return ListKeys(text, TrimIni(section), buffer, size);
        if (const std::optional<IniLine> line = FindIniKey(text, *found, TrimIni(key))) value = line->value;
    }
    if (!value) SetLastFailure(error != kErrorSuccess ? error : kErrorFileNotFound);
    return AnswerCut(value.value_or(otherwise), buffer, size);
}

bool RecordedProfile::WriteString(const char16_t* section, const char16_t* key, const char16_t* value,
                                  const char16_t* path) {
    const std::u16string_view name = TrimIni(ViewOf(section));
    if (name.empty()) return false;
    const std::lock_guard guard(m_writing);
    const WritersLock shared(m_shared);
    const std::u16string file = PathOf(path);
    std::string bytes;
    const Win32Error error = ReadFile(file, bytes);
    if (error == kErrorFileNotFound && (key == nullptr || value == nullptr)) return true;
    if (error != kErrorSuccess && error != kErrorFileNotFound) return false;

    IniEncoding encoding = IniEncoding::Utf8;
    std::u16string text = DecodeIni(bytes, encoding);
    if (key == nullptr) {
        RemoveIniSection(text, name);
    } else if (value == nullptr) {
        RemoveIniKey(text, name, TrimIni(key));
    } else {
        SetIniKey(text, name, TrimIni(key), value);
    }
    const std::string changed = EncodeIni(text, encoding);
    return changed.size() <= kLargestFile && WriteFile(file, changed);
}

}  // namespace roundup
