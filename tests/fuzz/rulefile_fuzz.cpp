// Rule files of every format, read as a host's files are: reading ends, what a rule set holds are texts of the file put
// behind known folders, and an adapter file is taken whole or not at all. The first byte says what the rest is.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "appcenter/app/app.h"
#include "appcenter/appadapterconfig/appadapterconfig.h"
#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appadapterconfig/ruletext.h"
#include "appcenter/appadaptermgr/appadaptermgr.h"
#include "appcenter/appadaptermgr/compatibility.h"
#include "tests/support/machinebuilder.h"

namespace {

using namespace roundup;

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckTexts(const RuleTexts& texts) {
    for (const OwnedString& text : texts) {
        Check(!text.IsEmpty() && texts.Contains(text));
        Check(text.View().find(u'\0') == std::u16string_view::npos);
    }
}

void CheckRules(const CAppRuleSet& rules) {
    for (const RuleTexts* texts :
         {&rules.IncludedFiles, &rules.ExcludedFiles, &rules.IncludedDirectories, &rules.ExcludedDirectories,
          &rules.Actions, &rules.HideNames, &rules.HideKeys, &rules.SubAppNames, &rules.SubAppKeys}) {
        CheckTexts(*texts);
    }
    for (const RuleRegItems* items : {&rules.IncludedRegs, &rules.ExcludedRegs}) {
        for (const RuleRegItem& item : *items) Check(!item.path.IsEmpty() && items->Contains(item.root, item.path));
    }
    for (const OwnedString& path : rules.ExcludedFiles) Check(rules.IsFileExcluded(path));
    for (const OwnedString& path : rules.ExcludedDirectories) Check(rules.IsDirExcluded(path));
    for (const OwnedString& name : rules.SubAppNames) Check(rules.IsSubAppMatch(name, {}));
    for (const OwnedString& key : rules.HideKeys) Check(rules.IsHideAppMatch({}, key));
}

void ReadRules() {
    const CAppRuleSet rules(RuleSetSource{u"Tool - 2", u"C:\\Apps\\Tool", {}, u"D:\\Tool"});
    CheckRules(rules);
    CheckRules(CAppRuleSet::Global());
}

void ApplyAdapter() {
    const auto app = RefPtr<CApp>::Adopt(new CApp);
    app->pwszName = OwnedString(u"Adobe Tool CC");
    app->pwszInstallLoc = OwnedString(u"C:\\Apps");
    app->pwszKeyString = OwnedString(u"Tool");
    CAppRuleSet rules;
    Check(Succeeded(LoadAdapters()) && Succeeded(ApplyAdapters(app.Get(), &rules)));
    CheckRules(rules);
    CAppAdapterConfig config;
    const bool failed = Failed(config.Parse(u"C:\\RoundupHost\\Config\\Tool.INCEX", u"C:\\Apps"));
    Check(config.bParsed ? !failed && !config.pwszVersion.IsEmpty()
                         : config.Programs.empty() && config.Actions.empty());
}

void ReadList() {
    CompatibilityMap map;
    LoadCompatibility(u"Tool", map);
    for (const auto& [name, number] : map) Check(!name.IsEmpty() && number >= 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    MachineBuilder builder;
    builder.Text(u"HKLM\\SOFTWARE\\Tool", u"Path", u"C:\\Data")
        .Key(u"HKCU\\Tool\\Sub.1")
        .Folder(u"C:\\ProgramData\\Tool 1");
    switch (data[0] % 4) {
        case 0:
            builder.HostFile(u"Config\\Tool.INC", bytes).HostFile(u"Config\\Tool - 2.EXC", bytes);
            builder.HostFile(u"Config\\{00000000.EXC", bytes);
            break;
        case 1:
            builder.HostFile(u"Config\\AppsIniEx.ini", "[AppName]\r\nTool=\r\n").HostFile(u"Config\\Tool.INCEX", bytes);
            break;
        case 2:
            builder.HostFile(u"Config\\AppsIniEx.ini", bytes);
            break;
        default:
            builder.HostFile(u"Config\\Compatibility\\Tool.ini", bytes);
            break;
    }
    const std::unique_ptr<Machine> machine = builder.Build();
    const MachineScope scope(*machine);
    switch (data[0] % 4) {
        case 0:
            ReadRules();
            break;
        case 3:
            ReadList();
            break;
        default:
            ApplyAdapter();
            break;
    }
    return 0;
}
