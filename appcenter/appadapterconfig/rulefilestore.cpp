#include "appcenter/appadapterconfig/rulefilestore.h"

#include "appcenter/appadapterconfig/ruletext.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/sysinfo.h"

namespace roundup {
namespace {

constexpr std::u16string_view kIncludeEnding = u".INC";
constexpr std::u16string_view kExcludeEnding = u".EXC";

// Separators lead out of the folder, "~" may stand in a short name, and the platform drops what a path ends in, but
// for the extension, which no name lacks.
bool MayLieElsewhere(std::u16string_view name) noexcept {
    return name.find_first_of(u"\\/:~") != std::u16string_view::npos;
}

std::u16string RulePath(std::u16string_view folder, std::u16string_view name, RuleFileKind kind) {
    std::u16string path(folder);
    path += u'\\';
    path += name;
    path += kind == RuleFileKind::Include ? kIncludeEnding : kExcludeEnding;
    return path;
}

}  // namespace

std::u16string ConfigFolder() {
    std::u16string folder = GetExeFolder();
    if (!folder.empty()) folder += u"\\Config";
    return folder;
}

void RuleFileStore::Note(std::u16string_view fileName) {
    for (const std::u16string_view ending : {kIncludeEnding, kExcludeEnding}) {
        if (!EndsWithNoCase(fileName, ending)) continue;
        NamedFiles& files = m_rules[std::u16string(fileName.substr(0, fileName.size() - ending.size()))];
        (ending == kIncludeEnding ? files.include : files.exclude).exists = true;
        return;
    }
    m_others.try_emplace(std::u16string(fileName), true);
}

void RuleFileStore::List() {
    m_listed = true;
    m_folder = ConfigFolder();
    if (m_folder.empty()) return;
    const FsRedirectGuard guard;
    IFileSystem& files = CurrentMachine().Files();
    FindHandle find = kInvalidFile;
    FindData data;
    if (files.FindFirst((m_folder + u"\\*").c_str(), find, data) != kErrorSuccess) return;
    struct Closer {
        IFileSystem& files;
        FindHandle find;
        ~Closer() { files.FindClose(find); }
    } const closer{files, find};
    do {
        Note(data.name);
    } while (files.FindNext(find, data) == kErrorSuccess);
}

RuleFileStore::Slot* RuleFileStore::SlotOf(std::u16string_view name, RuleFileKind kind) {
    if (!m_listed) List();
    const auto slotIn = [kind](NamedFiles& files) {
        return kind == RuleFileKind::Include ? &files.include : &files.exclude;
    };
    if (const auto at = m_rules.find(name); at != m_rules.end() && slotIn(at->second)->exists) {
        return slotIn(at->second);
    }
    if (m_folder.empty() || !MayLieElsewhere(name)) return nullptr;
    if (!PathExists(RulePath(m_folder, name, kind).c_str(), true)) return nullptr;
    Slot* const slot = slotIn(m_rules[std::u16string(name)]);
    slot->exists = true;
    return slot;
}

FoundRuleFile RuleFileStore::Find(std::u16string_view name, RuleFileKind kind) {
    const LockGuard guard(m_lock);
    Slot* const slot = SlotOf(name, kind);
    if (slot == nullptr) return {};
    if (!slot->read) {
        OwnedString text;
        if (ReadRuleText(RulePath(m_folder, name, kind).c_str(), text)) {
            slot->file = std::make_shared<const RuleFile>(std::move(text));
        }
        slot->read = true;
    }
    return {true, slot->file};
}

bool RuleFileStore::HasConfigFile(std::u16string_view name) {
    const LockGuard guard(m_lock);
    if (!m_listed) List();
    return m_others.contains(name);
}

void RuleFileStore::Renew() {
    const LockGuard guard(m_lock);
    m_listed = false;
    ++m_generation;
    m_rules.clear();
    m_others.clear();
}

std::uint32_t RuleFileStore::Generation() {
    const LockGuard guard(m_lock);
    return m_generation;
}

}  // namespace roundup
