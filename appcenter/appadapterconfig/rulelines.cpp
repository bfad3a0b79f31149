#include "appcenter/appadapterconfig/rulelines.h"

#include "appcenter/appadapterconfig/pathtokens.h"
#include "appcenter/appadapterconfig/ruleregistry.h"
#include "appcenter/appadapterconfig/ruletext.h"
#include "utility/specialfolders.h"

namespace roundup {
namespace {

enum class PathBase : std::uint8_t { Location, Parent, Grandparent, WindowsVolume, SourceVolume };

constexpr RuleWord<PathBase> kBases[] = {
    {u"[]", PathBase::Location},
    {u"[..]", PathBase::Parent},
    {u"[..\\..]", PathBase::Grandparent},
    {u"[WindowsVolume]", PathBase::WindowsVolume},
    {u"[VolumeOfInstallSource]", PathBase::SourceVolume},
};

// The path without its last component; empty when there is no other.
std::u16string_view ParentOf(std::u16string_view path) noexcept {
    path = WithoutTrailingBackslash(path);
    const std::size_t cut = path.find_last_of(u'\\');
    return path.substr(0, cut != std::u16string_view::npos ? cut : 0);
}

std::u16string_view FolderOf(PathBase base, const RuleSetSource& source) {
    switch (base) {
        case PathBase::Location:
            return source.location;
        case PathBase::Parent:
            return ParentOf(source.location);
        case PathBase::Grandparent:
            return ParentOf(ParentOf(source.location));
        case PathBase::WindowsVolume: {
            const char16_t* const windows = GetSpecialFolder(Csidl::Windows);
            return windows != nullptr ? std::u16string_view(windows).substr(0, 2) : std::u16string_view();
        }
        case PathBase::SourceVolume: {
            const std::u16string_view volume = source.originalLocation.substr(0, 2);
            return volume.size() == 2 && volume[1] == u':' ? volume : std::u16string_view();
        }
    }
    return {};
}

// The base of the value, which is taken off it; empty when it has none or it is not known.
std::u16string_view TakeBase(std::u16string_view& value, const RuleSetSource& source) {
    for (const RuleWord<PathBase>& word : kBases) {
        if (!StartsWithNoCase(value, word.text)) continue;
        value.remove_prefix(word.text.size());
        return FolderOf(word.value, source);
    }
    const char16_t* const folder = TakePathToken(value);
    return folder != nullptr ? std::u16string_view(folder) : std::u16string_view();
}

class LineReader {
  public:
    LineReader(RuleFileKind kind, const RuleSetSource& source, CAppRuleSet& rules) noexcept
        : m_include(kind == RuleFileKind::Include), m_source(source), m_rules(rules) {}

    void Apply(const RuleLine& line) {
        switch (line.keyword) {
            case RuleKeyword::Reg:
                AddRegRule(line.value, Regs());
                break;
            case RuleKeyword::RegX:
                AddRegPatternRule(line.value, Regs());
                break;
            case RuleKeyword::RegDir:
                ReadRegDirectories(line.value, [this](std::u16string_view path) { AddDirectory(path); });
                break;
            case RuleKeyword::Dir:
                AddDirectory(ExpandRulePath(line.value, m_source));
                break;
            case RuleKeyword::File:
                AddFile(ExpandRulePath(line.value, m_source));
                break;
            case RuleKeyword::Action:
                m_rules.Actions.Add(ExpandAction(line.value, m_source.location));
                break;
            case RuleKeyword::HideAppName:
                m_rules.HideNames.Add(line.value);
                break;
            case RuleKeyword::HideAppKey:
                m_rules.HideKeys.Add(line.value);
                break;
            case RuleKeyword::SubAppName:
                m_rules.SubAppNames.Add(line.value);
                break;
            case RuleKeyword::SubAppKey:
                m_rules.SubAppKeys.Add(line.value);
                break;
            case RuleKeyword::AppendProc:
                m_rules.bAppendProc = IsSetFlag(line.value);
                break;
        }
    }

  private:
    RuleRegItems& Regs() noexcept { return m_include ? m_rules.IncludedRegs : m_rules.ExcludedRegs; }
    void AddDirectory(std::u16string_view path) {
        m_include ? m_rules.AddIncludedDirectory(path) : m_rules.AddExcludedDirectory(path);
    }
    void AddFile(std::u16string_view path) { (m_include ? m_rules.IncludedFiles : m_rules.ExcludedFiles).Add(path); }

    const bool m_include;
    const RuleSetSource& m_source;
    CAppRuleSet& m_rules;
};

}  // namespace

std::u16string ExpandRulePath(std::u16string_view value, const RuleSetSource& source) {
    const std::u16string_view base = TakeBase(value, source);
    if (base.empty() || value.empty()) return {};
    return std::u16string(base).append(value);
}

void ApplyRuleLines(const RuleFile& file, RuleFileKind kind, const RuleSetSource& source, CAppRuleSet& rules) {
    LineReader reader(kind, source, rules);
    for (const RuleLine& line : file.Lines()) reader.Apply(line);
}

}  // namespace roundup
