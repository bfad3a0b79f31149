#include "appcenter/appadapterconfig/pathtokens.h"

#include "appcenter/appadapterconfig/ruletext.h"
#include "utility/specialfolders.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

// Numbers of SHGetFolderPathW (shlobj_core.h). Searched in this order. A misspelt token stays as the files have it.
constexpr RuleWord<std::uint32_t> kPathTokens[] = {
    {u"[CommonAdminToolsFolder]", 0x2F},  {u"[AdminToolsFolder]", 0x30},      {u"[AppDataFolder]", 0x1A},
    {u"[CommonAppDataFolder]", 0x23},     {u"[CommonFiles64Folder]", 0x2B},   {u"[CommonFilesFolder]", 0x2B},
    {u"[CommonFilesX86Folder]", 0x2C},    {u"[DesktopFolder]", 0x00},         {u"[CommonDesktopFolder]", 0x19},
    {u"[CommonFavoritesFolder]", 0x1F},   {u"[FavoritesFolder]", 0x06},       {u"[FontsFolder]", 0x14},
    {u"[LocalAppDataFolder]", 0x1C},      {u"[CommonPicturesFolder]", 0x36},  {u"[MyPicturesFolder]", 0x27},
    {u"[CommonMusicFolder]", 0x35},       {u"[MyMusicFolder]", 0x0D},         {u"[CommonVideoFolder]", 0x37},
    {u"[MyVedioFolder]", 0x0E},           {u"[PersonalFolder]", 0x05},        {u"[ProgramFiles64Folder]", 0x26},
    {u"[ProgramFilesFolder]", 0x26},      {u"[ProgramFilesX86Folder]", 0x2A}, {u"[ProgramMenuFolder]", 0x02},
    {u"[CommonProgramMenuFolder]", 0x17}, {u"[SendToFolder]", 0x09},          {u"[CommonStartMenuFolder]", 0x16},
    {u"[StartMenuFolder]", 0x0B},         {u"[StartupFolder]", 0x07},         {u"[CommonStartupFolder]", 0x18},
    {u"[System64Folder]", 0x25},          {u"[SystemFolder]", 0x25},          {u"[SystemX86Folder]", 0x29},
    {u"[TemplateFolder]", 0x15},          {u"[CommonTemplatesFolder]", 0x2D}, {u"[WindowsFolder]", 0x24},
};

constexpr std::u16string_view kAppToken = u"[App]";
constexpr std::u16string_view kHostToken = u"[WFY]";

std::u16string ReplaceAt(std::u16string_view text, std::size_t at, std::size_t length, std::u16string_view with) {
    return std::u16string(text).replace(at, length, with);
}

}  // namespace

const char16_t* TakePathToken(std::u16string_view& text) {
    if (text.empty() || text.front() != u'[') return nullptr;
    for (const RuleWord<std::uint32_t>& token : kPathTokens) {
        if (!StartsWithNoCase(text, token.text)) continue;
        const char16_t* const folder = GetSpecialFolder(token.value);
        if (folder == nullptr) continue;
        text.remove_prefix(token.text.size());
        return folder;
    }
    return nullptr;
}

std::u16string ExpandAction(std::u16string_view text, std::u16string_view location) {
    if (const std::size_t at = text.find(kAppToken); at != std::u16string_view::npos) {
        if (location.empty()) return {};
        return ReplaceAt(text, at, kAppToken.size(), location);
    }
    if (const std::size_t at = text.find(kHostToken); at != std::u16string_view::npos) {
        const std::u16string_view host = GetExeFolder();
        if (host.empty()) return {};
        return ReplaceAt(text, at, kHostToken.size(), std::u16string(host) + u'\\');
    }
    // Lines without a bracket are the rule, and the table is long.
    if (text.find(u'[') == std::u16string_view::npos) return std::u16string(text);
    for (const RuleWord<std::uint32_t>& token : kPathTokens) {
        const std::size_t at = text.find(token.text);
        if (at == std::u16string_view::npos) continue;
        const char16_t* const folder = GetSpecialFolder(token.value);
        if (folder != nullptr) return ReplaceAt(text, at, token.text.size(), folder);
    }
    return std::u16string(text);
}

}  // namespace roundup
