#include "appcenter/appreggather/folderscan.h"

#include <algorithm>

#include "appcenter/appreggather/scanentries.h"
#include "utility/filesearch.h"
#include "utility/formattext.h"

namespace roundup {

namespace {

bool IsOneOf(std::u16string_view name, std::span<const std::u16string_view> names) noexcept {
    return std::ranges::any_of(names, [&](std::u16string_view one) { return EqualsNoCase(one, name); });
}

bool IsPlainFolder(const FileSearch& search) noexcept { return search.IsFolder() && !search.IsReparseFolder(); }

// Adds the folder at path; false when it cannot be listed.
bool AddFolder(const std::u16string& path, std::u16string_view entryName, std::u16string_view word, std::uint32_t level,
               ScanEntries& entries) {
    bool isNew = false;
    ScanEntry& entry = entries.At(entryName, level, isNew);
    ScanEntries::AddWord(entry, word);
    FileSearch search((path + u"\\*").c_str());
    while (search.Next()) {
        if (IsPlainFolder(search)) ScanEntries::AddWord(entry, search.Name());
    }
    return search.Error() == kErrorSuccess;
}

void ScanGroup(const char16_t* root, const FolderScanRules& rules, ScanEntries& entries) {
    const std::u16string folder = FormatText(u"%s\\%s", root, rules.group);
    for (FileSearch search((folder + u"\\*").c_str()); search.Next();) {
        const std::u16string_view name = search.Name();
        if (!IsPlainFolder(search) || IsOneOf(name, rules.skippedInGroup)) continue;
        const std::u16string path = FormatText(u"%s\\%s", folder, name);
        if (!AddFolder(path, FormatText(u"%s\\%s", rules.group, name), name, 1, entries)) return;
    }
}

}  // namespace

void ScanFolder(const char16_t* root, const FolderScanRules& rules, ScanEntries& entries) {
    if (root == nullptr || *root == u'\0') return;
    for (FileSearch search(FormatText(u"%s\\*", root).c_str()); search.Next();) {
        const std::u16string_view name = search.Name();
        if (!IsPlainFolder(search) || IsOneOf(name, rules.skipped)) continue;
        if (EqualsNoCase(name, rules.group)) {
            ScanGroup(root, rules, entries);
        } else if (!AddFolder(FormatText(u"%s\\%s", root, name), name, name, 0, entries) && rules.endsAtUnlisted) {
            return;
        }
    }
}

}  // namespace roundup
