#include "appcenter/appadapterconfig/appruleset.h"
#include "appcenter/appsoftdata/softdatalocators.h"
#include "utility/casemap.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kServices = u"SYSTEM\\CurrentControlSet\\services";
constexpr std::u16string_view kServiceName = u"MYSQL";

struct MySqlService {
    std::u16string folder;  // of the configuration file
    std::u16string file;
    std::u16string serviceKey;
    std::u16string imagePath;
    std::u16string program;
};

// The text from the character before the first colon behind start, which is the letter of a drive.
bool FromDriveLetter(std::u16string_view text, std::size_t start, std::size_t& drive) {
    const std::size_t colon = text.find(u':', start);
    if (colon == std::u16string_view::npos || colon == 0) return false;
    drive = colon - 1;
    return true;
}

//     "C:\Server\bin\mysqld.exe" --defaults-file="C:\Server\my.ini" MySQL
// holds the configuration's path behind the first equals sign and the program's path in front of it.
bool ReadImagePath(std::u16string_view text, MySqlService& service) {
    const std::size_t equals = text.find(u'=');
    std::size_t drive = 0;
    if (equals == std::u16string_view::npos || !FromDriveLetter(text, equals, drive)) return false;
    const std::size_t ending = text.find(u".ini");
    if (ending == std::u16string_view::npos || ending < drive) return false;
    const std::u16string_view path = text.substr(drive, ending + 4 - drive);
    const std::size_t separator = path.rfind(u'\\');
    if (separator == std::u16string_view::npos) return false;
    service.folder = path.substr(0, separator);
    service.file = path.substr(separator + 1);
    if (!FromDriveLetter(text, 0, drive)) return false;
    const std::size_t program = text.find(u".exe", drive);
    if (program == std::u16string_view::npos) return false;
    service.program = text.substr(drive, program + 4 - drive);
    service.imagePath = text;
    return true;
}

bool ReadService(CWFYRegKey& services, const OwnedString& name, MySqlService& service) {
    service.serviceKey = std::u16string(kServices).append(u"\\").append(name.View());
    CWFYRegKey key;
    OwnedString imagePath;
    if (Failed(key.Open(services.GetKeyHandle(), name.Get(), true, false))) return false;
    if (Failed(key.GetString(u"ImagePath", imagePath)) || imagePath.IsEmpty()) return false;
    return ReadImagePath(imagePath, service);
}

ResultCode FindMySqlService(MySqlService& found) {
    CWFYRegKey services;
    if (auto rc = services.Open(kHkeyLocalMachine, kServices.data(), true, false); Failed(rc)) {
        return Fail(SmallCode::GeneralFailure, rc.Value());
    }
    for (OwnedString name; Succeeded(services.EnumKey(name));) {
        MySqlService service;
        if (!StartsWithNoCase(name, kServiceName) || !ReadService(services, name, service)) continue;
        if (service.folder.empty() || service.file.empty()) continue;
        found = std::move(service);
        return kSuccess;
    }
    return Fail(SmallCode::GeneralFailure);
}

}  // namespace

ResultCode LocateMySql(const CApp& /*app*/, CAppRuleSet& ruleSet) {
    MySqlService service;
    if (auto rc = FindMySqlService(service); Failed(rc)) return Pass(rc);
    ruleSet.IncludedRegs.Add(RuleRoot::kLocalMachine, service.serviceKey);
    ruleSet.AddIncludedDirectory(service.folder);
    return kSuccess;
}

}  // namespace roundup
