#include "appcenter/appadapterconfig/rulefilestore.h"

#include <utility>

#include "appcenter/appadapterconfig/ruletext.h"
#include "utility/sysinfo.h"

namespace roundup {

std::u16string ConfigFolder() {
    std::u16string folder = GetExeFolder();
    if (!folder.empty()) folder += u"\\Config";
    return folder;
}

ConfigListing& RuleFileStore::Config() {
    if (!m_config) m_config.emplace(ConfigFolder());
    return *m_config;
}

bool RuleFileStore::MayHave(std::u16string_view name, std::u16string_view shorterName) {
    const LockGuard guard(m_lock);
    const ConfigListing& config = Config();
    return config.MayHave(name) || (!shorterName.empty() && config.MayHave(shorterName));
}

FoundRuleFile RuleFileStore::Find(std::u16string_view name, RuleFileKind kind) {
    const LockGuard guard(m_lock);
    if (!Config().MayHave(name)) return {};
    std::u16string fileName(name);
    fileName += kind == RuleFileKind::Include ? u".INC" : u".EXC";
    if (const auto at = m_files.find(fileName); at != m_files.end()) return {true, at->second};
    if (!Config().Has(fileName)) return {};
    OwnedString text;
    std::shared_ptr<const RuleFile> file;
    if (ReadRuleText(Config().PathOf(fileName).c_str(), text)) {
        file = std::make_shared<const RuleFile>(std::move(text));
    }
    m_files.emplace(std::move(fileName), file);
    return {true, std::move(file)};
}

bool RuleFileStore::HasConfigFile(std::u16string_view fileName) {
    const LockGuard guard(m_lock);
    return Config().Has(fileName);
}

std::u16string RuleFileStore::CompatibilityFile(std::u16string_view name) {
    const LockGuard guard(m_lock);
    if (!m_compatibility) {
        std::u16string folder = ConfigFolder();
        if (!folder.empty()) folder += u"\\Compatibility";
        m_compatibility.emplace(std::move(folder));
    }
    if (!m_compatibility->MayHave(name)) return {};
    const std::u16string fileName = std::u16string(name) + u".ini";
    return m_compatibility->Has(fileName) ? m_compatibility->PathOf(fileName) : std::u16string();
}

void RuleFileStore::Renew() {
    const LockGuard guard(m_lock);
    ++m_generation;
    m_config.reset();
    m_compatibility.reset();
    m_files.clear();
}

std::uint32_t RuleFileStore::Generation() {
    const LockGuard guard(m_lock);
    return m_generation;
}

}  // namespace roundup
