#include "platform/recorded/recordedshell.h"

#include "platform/recorded/commandline.h"
#include "platform/recorded/textanswer.h"
#include "utility/casemap.h"

namespace roundup {

RecordedShell::RecordedShell(const MachineSettings& settings, const ShellFolders& folders,
                             std::u16string hostExecutable, IFileSystem& files, IRegistry& registry)
    : m_settings(settings), m_folders(folders), m_hostExecutable(std::move(hostExecutable)), m_icons(files, registry) {}

bool RecordedShell::GetFolderPath(std::uint32_t number, char16_t (&path)[260]) {
    const std::u16string& folder = m_folders.Path(number);
    if (folder.empty() || folder.size() >= std::size(path)) return false;
    (void)AnswerText(folder, path, static_cast<std::uint32_t>(std::size(path)));
    return true;
}

bool RecordedShell::GetSpecialFolderPath(std::uint32_t number, char16_t (&path)[260]) {
    return GetFolderPath(number, path);
}

bool RecordedShell::SplitCommandLine(const char16_t* text, std::vector<std::u16string>& arguments) {
    arguments.clear();
    if (*text == u'\0') {
        arguments.push_back(m_hostExecutable);
    } else {
        arguments = SplitArguments(text);
    }
    return true;
}

// A text that is not indirect stands for itself.
bool RecordedShell::LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) {
    std::u16string_view text(source);
    if (text.starts_with(u'@')) {
        const std::u16string* found = nullptr;
        for (const auto& [known, its] : m_settings.strings) {
            if (EqualsNoCase(known, text)) found = &its;
        }
        if (found == nullptr) return false;
        text = *found;
    }
    if (text.size() >= size) return false;
    (void)AnswerText(text, buffer, size);
    return true;
}

bool RecordedShell::ReadLink(const char16_t*, ShellLink&) { return false; }

}  // namespace roundup
