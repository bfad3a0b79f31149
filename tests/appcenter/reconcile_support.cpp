#include "tests/appcenter/reconcile_support.h"

#include "appcenter/appeunm/reconcile.h"
#include "platform/machine.h"
#include "tests/support/machinefiles.h"
#include "utility/formattext.h"
#include "utility/log.h"
#include "utility/utf.h"

namespace roundup {
namespace {

constexpr const char* kReasons[] = {
    "", "code:", "name:", "loc:", "dep:", "suite:", "src:", "runtime:", "rule:", "shared:", "list:"};

void Append(const CApp& app, std::string& text) {
    text += kReasons[static_cast<std::size_t>(app.eLinkReason)];
    text += ToUtf8(app.pwszKeyString.IsEmpty() ? app.pwszName : app.pwszKeyString);
    if (app.SubApps.empty()) return;
    for (std::size_t i = 0; i < app.SubApps.size(); ++i) {
        text += i == 0 ? "(" : ", ";
        Append(static_cast<const CApp&>(*app.SubApps[i]), text);
    }
    text += ")";
}

template <class List>
std::string TextOfAll(const List& apps) {
    std::string text;
    for (const auto& app : apps) {
        if (!text.empty()) text += " ";
        Append(static_cast<const CApp&>(*app), text);
    }
    return text;
}

AppList AsAppList(CAppList list) {
    AppList apps;
    for (RefPtr<CApp>& app : list) apps.emplace_back(std::move(app));
    return apps;
}

}  // namespace

Guid CodeOf(int number) {
    Guid code;
    if (number != 0) code.bytes = {0x10, 0x32, 0x54, 0x76, 0x98, 0xBA, 0xDC, 0xFE};
    code.bytes[15] = static_cast<std::uint8_t>(number);
    code.bytes[14] = static_cast<std::uint8_t>(number >> 8);
    return code;
}

std::u16string CodeText(int number, GuidForm form) { return std::u16string(FormatGuid(CodeOf(number), form)); }

RefPtr<CApp> MakeApp(const Record& record) {
    auto app = RefPtr<CApp>::Adopt(new CApp);
    AssignString(app->pwszKeyString, record.key);
    if (record.name != u"-") AssignString(app->pwszName, record.name.empty() ? record.key : record.name);
    AssignString(app->pwszInstallLoc, record.location);
    AssignString(app->pwszMsiPath, record.package);
    AssignString(app->pwszParentDisplayName, record.parent);
    AssignString(app->pwszInstallSource, record.source);
    AssignString(app->pwszVersion, record.version);
    AssignString(app->pwszTypeDes, record.type);
    app->ProductCode = CodeOf(record.code);
    for (const int claim : record.claims) app->RelatedCodes.insert(CodeOf(claim));
    app->qwFlags = record.hidden ? AppFlags::kNotTopLevel : 0;
    app->llEstimatedSize = record.size;
    for (const Record& part : record.parts) app->SubApps.emplace_back(MakeApp(part));
    return app;
}

CAppList MakeList(const std::vector<Record>& records) {
    CAppList list;
    for (const Record& record : records) list.push_back(MakeApp(record));
    return list;
}

std::string ForestText(const CAppList& apps) { return TextOfAll(apps); }
std::string ForestText(const AppList& apps) { return TextOfAll(apps); }

CAppManager& ReconcileTest::StartManager() {
    m_manager.Reset();
    Start();
    m_manager = RefPtr<CAppManager>::Adopt(new CAppManager);
    const auto goOn = [](std::uint32_t, void*) -> std::uint8_t { return 1; };
    // From a load on a manager goes on until it is stopped.
    EXPECT_TRUE(Succeeded(m_manager->LoadAppEx(goOn, nullptr, false)));
    m_manager->Applications().clear();
    return *m_manager;
}

std::string ReconcileTest::Reconciled(const std::vector<Record>& uninstalls, const std::vector<Record>& installs) {
    CAppManager& manager = StartManager();
    AppList first = AsAppList(MakeList(installs));
    AppList second = AsAppList(MakeList(uninstalls));
    Reconcile(manager, first, second);
    EXPECT_TRUE(first.empty() && second.empty()) << "both lists are consumed";
    return ForestText(manager.Applications());
}

std::string ReconcileTest::Passed(ResultCode (*pass)(CAppManager&, CAppList&, CAppList&),
                                  const std::vector<Record>& main, const std::vector<Record>& hide) {
    CAppManager& manager = StartManager();
    CAppList mainList = MakeList(main);
    CAppList hideList = MakeList(hide);
    Ignore(pass(manager, mainList, hideList), u"the lists tell");
    return ForestText(mainList) + " | " + ForestText(hideList);
}

std::string ReconcileTest::LogLines(std::u16string_view text) {
    Machine& machine = CurrentMachine();
    char16_t folder[260] = {};
    char16_t host[260] = {};
    machine.System().GetTempFolder(folder, std::size(folder));
    machine.System().GetHostExecutable(host, std::size(host));
    FixedText<260> path;
    log_detail::NameFile(folder, host, path);
    const std::string bytes = ReadFile(machine.Files(), std::u16string(path));
    std::u16string log(bytes.size() / 2, u'\0');
    bytes.copy(reinterpret_cast<char*>(log.data()), log.size() * 2);
    std::string lines;
    for (std::size_t at = log.find(text); at != log.npos; at = log.find(text, at + 1)) {
        lines += ToUtf8(std::u16string_view(log).substr(at, log.find(u'\r', at) - at)) + "\n";
    }
    return lines;
}

}  // namespace roundup
