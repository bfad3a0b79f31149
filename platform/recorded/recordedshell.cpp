#include "platform/recorded/recordedshell.h"

#include <array>
#include <optional>
#include <utility>

#include "platform/recorded/commandline.h"
#include "platform/recorded/resources/packagetexts.h"
#include "platform/recorded/textanswer.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

// Characters of a link's texts with the terminator.
constexpr std::uint32_t kLinkPathRoom = 520;
constexpr std::uint32_t kLinkDescriptionRoom = 1024;

}  // namespace

RecordedShell::RecordedShell(const MachineSettings& settings, const ShellFolders& folders,
                             std::u16string hostExecutable, const Environment& environment, IFileSystem& files,
                             IRegistry& registry)
    : m_settings(settings),
      m_folders(folders),
      m_hostExecutable(std::move(hostExecutable)),
      m_environment(environment),
      m_files(files),
      m_registry(registry),
      m_icons(files, registry) {}

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

// A text that is not indirect stands for itself. What the machine was told goes before what its packages say.
bool RecordedShell::LoadIndirectString(const char16_t* source, char16_t* buffer, std::uint32_t size) {
    std::u16string_view text(source);
    std::optional<std::u16string> named;
    if (text.starts_with(u'@')) {
        for (const auto& [known, its] : m_settings.strings) {
            if (EqualsNoCase(known, source)) named = its;
        }
        if (!named) named = FindPackageText(text, m_files, m_registry);
        if (!named) return false;
        text = *named;
    }
    if (text.size() >= size) return false;
    (void)AnswerText(text, buffer, size);
    return true;
}

// The first of the link's paths that exists, else the first that it has: what the shell's items say comes before the
// location, and the path with variables last, unless the link prefers it.
std::u16string RecordedShell::LinkTarget(const LinkFile& link) const {
    std::u16string expanded = m_environment.Expand(link.environmentPath);
    std::array<std::u16string, 5> paths{link.prefersEnvironment ? expanded : std::u16string(), link.idListPath,
                                        link.localPath, link.networkPath, std::move(expanded)};
    std::u16string* chosen = nullptr;
    for (std::u16string& path : paths) {
        if (path.empty() || path.size() >= kLinkPathRoom) continue;
        if (m_files.GetAttributes(path.c_str()) != kInvalidAttributes) {
            chosen = &path;
            break;
        }
        if (chosen == nullptr) chosen = &path;
    }
    if (chosen == nullptr) return {};
    char16_t shortPath[kLinkPathRoom];
    const std::uint32_t length = m_files.GetShortPath(chosen->c_str(), shortPath, kLinkPathRoom);
    return length != 0 && length < kLinkPathRoom ? std::u16string(shortPath, length) : std::move(*chosen);
}

// Texts are cut to the room that the live machine gives them.
bool RecordedShell::ReadLink(const char16_t* path, ShellLink& link) {
    LinkFile file;
    if (!LoadLinkFile(m_files, path, file)) return false;
    ShellLink read;
    read.path = LinkTarget(file);
    read.workingDirectory = file.workingDirectory.substr(0, kLinkPathRoom - 1);
    read.description = file.description.substr(0, kLinkDescriptionRoom - 1);
    read.arguments = file.arguments.substr(0, kLinkPathRoom - 1);
    std::u16string icon = m_environment.Expand(file.environmentIcon);
    if (icon.empty()) icon = std::move(file.iconPath);
    read.iconPath = icon.substr(0, kLinkPathRoom - 1);
    read.iconIndex = file.iconIndex;
    read.hotkey = file.hotkey;
    read.showCommand = file.showCommand;
    link = std::move(read);
    return true;
}

}  // namespace roundup
