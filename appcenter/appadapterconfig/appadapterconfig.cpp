#include "appcenter/appadapterconfig/appadapterconfig.h"

#include <optional>
#include <utility>

#include "appcenter/appadapterconfig/pathtokens.h"
#include "appcenter/appadapterconfig/ruletext.h"
#include "utility/boundary.h"

namespace roundup {
namespace {

// The numbers are those of the adapter file format.
enum class AdapterKeyword : std::uint32_t {
    Version = 1,
    AppName = 2,
    AppVersion = 3,
    AppKey = 4,
    AppDir = 5,
    ComponentsDir = 101,
    ComponentsReg = 102,
    ComponentsDeleteFile = 103,
    ComponentsFile = 104,
    ComponentsDirEx = 105,
    ComponentsHideAppName = 106,
    ComponentsHideAppKey = 107,
    ComponentsSubAppName = 108,
    ComponentsSubAppKey = 109,
    AppendProc = 110,
    Action = 111,
};

constexpr RuleWord<AdapterKeyword> kKeywords[] = {
    {u"VERSION:", AdapterKeyword::Version},
    {u"APPNAME:", AdapterKeyword::AppName},
    {u"APPVERSION:", AdapterKeyword::AppVersion},
    {u"APPKEY:", AdapterKeyword::AppKey},
    {u"APPDIR:", AdapterKeyword::AppDir},
    {u"COMPONENTSDIR:", AdapterKeyword::ComponentsDir},
    {u"COMPONENTSREG:", AdapterKeyword::ComponentsReg},
    {u"COMPONENTSDELETEFILE:", AdapterKeyword::ComponentsDeleteFile},
    {u"COMPONENTSFILE:", AdapterKeyword::ComponentsFile},
    {u"COMPONENTSDIREX:", AdapterKeyword::ComponentsDirEx},
    {u"COMPONENTSHIDEAPPNAME:", AdapterKeyword::ComponentsHideAppName},
    {u"COMPONENTSHIDEAPPKEY:", AdapterKeyword::ComponentsHideAppKey},
    {u"COMPONENTSSUBAPPNAME:", AdapterKeyword::ComponentsSubAppName},
    {u"COMPONENTSSUBAPPKEY:", AdapterKeyword::ComponentsSubAppKey},
    {u"APPENDPROC:", AdapterKeyword::AppendProc},
    {u"ACTION:", AdapterKeyword::Action},
};

// Reads the lines into a configuration that is empty at first.
class AdapterReader {
  public:
    AdapterReader(CAppAdapterConfig& config, std::u16string_view location) noexcept
        : m_config(config), m_location(location) {}

    ResultCode Read(std::u16string_view text) {
        RuleTextLines lines(text);
        for (std::u16string_view line; lines.Next(line);) {
            line = SkipBlanks(line);
            if (line.empty()) continue;
            const RuleWord<AdapterKeyword>* const word = TakeWord(line, kKeywords);
            if (word == nullptr) return Fail(SmallCode::GeneralFailure);
            if (auto rc = Apply(word->value, line); Failed(rc)) return Pass(rc);
        }
        CloseProgram();
        return kSuccess;
    }

  private:
    ResultCode Apply(AdapterKeyword keyword, std::u16string_view value) {
        switch (keyword) {
            case AdapterKeyword::Version:
                return Keep(m_config.pwszVersion, value);
            case AdapterKeyword::AppName:
                return OpenProgram(value);
            case AdapterKeyword::AppVersion:
                return AddVersion(value);
            case AdapterKeyword::AppKey:
                return Keep(m_pendingKey, value);
            case AdapterKeyword::AppDir:
                return AddProgramDir(value);
            case AdapterKeyword::ComponentsReg:
                return AddReg(value);
            case AdapterKeyword::AppendProc:
                m_config.bAppendProc = IsSetFlag(value);
                return kSuccess;
            case AdapterKeyword::Action:
                return AddTo(m_config.Actions, ExpandAction(value, m_location));
            default:
                return AddTo(*SetOf(keyword), value);
        }
    }

    CStringSet* SetOf(AdapterKeyword keyword) noexcept {
        switch (keyword) {
            case AdapterKeyword::ComponentsDir:
                return &m_config.ComponentDirs;
            case AdapterKeyword::ComponentsDeleteFile:
                return &m_config.ComponentDeleteFiles;
            case AdapterKeyword::ComponentsFile:
                return &m_config.ComponentFiles;
            case AdapterKeyword::ComponentsDirEx:
                return &m_config.ComponentDirsEx;
            case AdapterKeyword::ComponentsHideAppName:
                return &m_config.HideAppNames;
            case AdapterKeyword::ComponentsHideAppKey:
                return &m_config.HideAppKeys;
            case AdapterKeyword::ComponentsSubAppName:
                return &m_config.SubAppNames;
            default:
                return &m_config.SubAppKeys;
        }
    }

    static ResultCode Keep(OwnedString& target, std::u16string_view value) {
        return target.Assign(value) ? kSuccess : Fail(SmallCode::GeneralFailure);
    }
    // An empty value says nothing.
    static ResultCode AddTo(CStringSet& set, std::u16string_view value) {
        return value.empty() || set.Add(value) ? kSuccess : Fail(SmallCode::GeneralFailure);
    }

    void CloseProgram() {
        if (m_hasProgram) m_config.Programs.push_back(std::move(m_program));
        m_program = AdapterProgram();
        m_hasProgram = false;
    }
    ResultCode OpenProgram(std::u16string_view name) {
        CloseProgram();
        m_hasProgram = true;
        return Keep(m_program.pwszName, name);
    }
    ResultCode AddProgramDir(std::u16string_view value) {
        return m_hasProgram ? AddTo(m_program.Dirs, value) : Fail(SmallCode::GeneralFailure);
    }
    // A key that was given a version keeps it. One may be given an empty version here, which its reader refuses.
    ResultCode AddVersion(std::u16string_view version) {
        if (m_pendingKey.IsEmpty() || !m_hasProgram) return Fail(SmallCode::GeneralFailure);
        OwnedString value(version);
        if (value.IsNull()) return Fail(SmallCode::GeneralFailure);
        m_program.Versions.try_emplace(std::move(m_pendingKey), std::move(value));
        m_pendingKey.Reset();
        return kSuccess;
    }
    ResultCode AddReg(std::u16string_view value) {
        const std::optional<std::uint32_t> root = TakeRegistryRoot(value);
        if (!root || value.empty()) return kSuccess;
        RuleRegItem item{*root, 0, OwnedString(value)};
        if (item.path.IsNull()) return Fail(SmallCode::GeneralFailure);
        m_config.ComponentRegs.push_back(std::move(item));
        return kSuccess;
    }

    CAppAdapterConfig& m_config;
    const std::u16string_view m_location;
    OwnedString m_pendingKey;
    AdapterProgram m_program;  // the one whose lines are read
    bool m_hasProgram = false;
};

}  // namespace

ResultCode CAppAdapterConfig::Parse(const char16_t* path, std::u16string_view location) {
    OwnedString text;
    if (!ReadRuleText(path, text)) return Fail(SmallCode::GeneralFailure);
    return ParseText(text, location);
}

ResultCode CAppAdapterConfig::ParseText(std::u16string_view text, std::u16string_view location) {
    *this = CAppAdapterConfig();
    const ResultCode rc = AtBoundary([&] { return AdapterReader(*this, location).Read(text); },
                                     [] { return Fail(SmallCode::GeneralFailure); });
    bParsed = Succeeded(rc) && !pwszVersion.IsEmpty() && !(Programs.empty() && ComponentDirs.empty());
    if (!bParsed) *this = CAppAdapterConfig();
    return rc;
}

}  // namespace roundup
