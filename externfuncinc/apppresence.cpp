// What the registry says of a single application: whether it is still there, and what command uninstalls it.
#include "externfuncinc/externfunccall.h"
#include "utility/fixedtext.h"
#include "utility/formattext.h"
#include "utility/guid.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr char16_t kUserData[] = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";

// Write access is asked for everywhere here: a key that can only be read opens all the same.
bool KeyOpens(KeyHandle root, const FixedText<520>& path, bool view64) {
    CWFYRegKey key;
    return Succeeded(key.Open(root, path.Text(), view64, true));
}

ResultCode OpenEntry(CWFYRegKey& key, const AppRecordEx& record, bool is64Bit) {
    FixedText<520> path;
    FormatText(path, u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\%s", record.wzKeyString);
    const KeyHandle root = (record.qwFlags & AppFlags::kCurrentUser) != 0 ? kHkeyCurrentUser : kHkeyLocalMachine;
    return key.Open(root, path.Text(), is64Bit && (record.qwFlags & AppFlags::k64BitView) != 0, true);
}

// The value stays as it is: it is a command line of the installer's own.
bool ReadUninstallString(const AppRecordEx& record, bool is64Bit, OwnedString& command) {
    CWFYRegKey key;
    auto rc = OpenEntry(key, record, is64Bit);
    if (Succeeded(rc)) rc = key.GetString(u"UninstallString", command);
    if (Succeeded(rc)) return true;
    Ignore(Pass(rc), u"the caller learns that no command can be had");
    return false;
}

}  // namespace

bool CExternFuncCall::IsAppPresent(const IApp& app) const {
    AppRecordEx record{};
    app.FillAppInfo(record);
    if (app.IsAppx() == 1) return IsPackagePresent(record);
    if ((record.qwFlags & AppFlags::kWindowsInstaller) != 0) return IsProductPresent(record);
    CWFYRegKey key;
    return Succeeded(OpenEntry(key, record, m_is64Bit));
}

bool CExternFuncCall::IsIndexPresent(std::int32_t index) const {
    const IApp* const app = At(index);
    return app != nullptr && IsAppPresent(*app);
}

bool CExternFuncCall::IsPackagePresent(const AppRecordEx& record) const {
    FixedText<520> path;
    FormatText(path,
               u"Software\\Classes\\Local Settings\\Software\\Microsoft\\Windows\\CurrentVersion\\AppModel\\Repository"
               u"\\Families\\%s",
               record.wzTypeDes);
    return KeyOpens(kHkeyCurrentUser, path, m_is64Bit);
}

// The books of the installer have the products of each user, and those of the machine, below an account's key.
bool CExternFuncCall::IsProductPresent(const AppRecordEx& record) const {
    CWFYRegKey userData;
    if (Failed(userData.Open(kHkeyLocalMachine, kUserData, m_is64Bit, true))) return false;
    const auto packed = GuidText(ParseGuid(record.wzKeyString, GuidForm::Braced), GuidForm::Packed);
    OwnedString account;
    for (auto rc = userData.EnumKey(account); Small(rc) != SmallCode::NoMoreItems; rc = userData.EnumKey(account)) {
        if (Failed(rc)) continue;
        FixedText<520> path;
        // A path that was cut would name another key, and that one may be there.
        const bool whole = FormatText(path, u"%s\\%s\\Products\\%s", kUserData, account, packed);
        if (whole && KeyOpens(kHkeyLocalMachine, path, m_is64Bit)) return true;
    }
    return false;
}

bool CExternFuncCall::GetUninstallCommand(std::int32_t index, OwnedString& command, std::uint8_t& hidden) const {
    const IApp* const app = At(index);
    return app != nullptr && GetUninstallCommand(*app, command, hidden);
}

bool CExternFuncCall::GetUninstallCommand(const IApp& app, OwnedString& command, std::uint8_t& hidden) const {
    hidden = 0;
    if (!IsAppPresent(app)) return false;
    AppRecordEx record{};
    app.FillAppInfo(record);
    if ((record.qwFlags & AppFlags::kStorePackage) != 0) {
        hidden = 1;
        return command.Assign(FormatText(u"PowerShell Remove-AppxPackage -Package %s", record.wzKeyString));
    }
    if ((record.qwFlags & AppFlags::kWindowsInstaller) != 0) {
        return command.Assign(FormatText(u"msiexec.exe /X%s", record.wzKeyString));
    }
    return ReadUninstallString(record, m_is64Bit, command);
}

}  // namespace roundup
