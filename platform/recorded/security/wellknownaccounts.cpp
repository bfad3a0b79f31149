#include "platform/recorded/security/wellknownaccounts.h"

#include <algorithm>

namespace roundup {

namespace {

constexpr std::u16string_view kNt = u"NT AUTHORITY";
constexpr std::u16string_view kBuiltin = u"BUILTIN";
constexpr std::u16string_view kPackage = u"APPLICATION PACKAGE AUTHORITY";
constexpr std::u16string_view kLabel = u"Mandatory Label";

constexpr WellKnownAccount kAccounts[] = {
    {0, 1, 0, 0, u"", u"NULL SID"},
    {1, 1, 0, 0, u"", u"Everyone"},
    {2, 1, 0, 0, u"", u"LOCAL"},
    {2, 1, 1, 0, u"", u"CONSOLE LOGON"},
    {3, 1, 0, 0, u"", u"CREATOR OWNER"},
    {3, 1, 1, 0, u"", u"CREATOR GROUP"},
    {3, 1, 2, 0, u"", u"CREATOR OWNER SERVER"},
    {3, 1, 3, 0, u"", u"CREATOR GROUP SERVER"},
    {3, 1, 4, 0, u"", u"OWNER RIGHTS"},
    {5, 1, 1, 0, kNt, u"DIALUP"},
    {5, 1, 2, 0, kNt, u"NETWORK"},
    {5, 1, 3, 0, kNt, u"BATCH"},
    {5, 1, 4, 0, kNt, u"INTERACTIVE"},
    {5, 1, 6, 0, kNt, u"SERVICE"},
    {5, 1, 7, 0, kNt, u"ANONYMOUS LOGON"},
    {5, 1, 8, 0, kNt, u"PROXY"},
    {5, 1, 9, 0, kNt, u"ENTERPRISE DOMAIN CONTROLLERS"},
    {5, 1, 10, 0, kNt, u"SELF"},
    {5, 1, 11, 0, kNt, u"Authenticated Users"},
    {5, 1, 12, 0, kNt, u"RESTRICTED"},
    {5, 1, 13, 0, kNt, u"TERMINAL SERVER USER"},
    {5, 1, 14, 0, kNt, u"REMOTE INTERACTIVE LOGON"},
    {5, 1, 15, 0, kNt, u"This Organization"},
    {5, 1, 17, 0, kNt, u"IUSR"},
    {5, 1, 18, 0, kNt, u"SYSTEM"},
    {5, 1, 19, 0, kNt, u"LOCAL SERVICE"},
    {5, 1, 20, 0, kNt, u"NETWORK SERVICE"},
    {5, 1, 33, 0, kNt, u"WRITE RESTRICTED"},
    {5, 1, 113, 0, kNt, u"Local account"},
    {5, 1, 114, 0, kNt, u"Local account and member of Administrators group"},
    {5, 2, 32, 544, kBuiltin, u"Administrators"},
    {5, 2, 32, 545, kBuiltin, u"Users"},
    {5, 2, 32, 546, kBuiltin, u"Guests"},
    {5, 2, 32, 547, kBuiltin, u"Power Users"},
    {5, 2, 32, 551, kBuiltin, u"Backup Operators"},
    {5, 2, 32, 552, kBuiltin, u"Replicator"},
    {5, 2, 32, 555, kBuiltin, u"Remote Desktop Users"},
    {5, 2, 32, 556, kBuiltin, u"Network Configuration Operators"},
    {5, 2, 32, 558, kBuiltin, u"Performance Monitor Users"},
    {5, 2, 32, 559, kBuiltin, u"Performance Log Users"},
    {5, 2, 32, 562, kBuiltin, u"Distributed COM Users"},
    {5, 2, 32, 568, kBuiltin, u"IIS_IUSRS"},
    {5, 2, 32, 569, kBuiltin, u"Cryptographic Operators"},
    {5, 2, 32, 573, kBuiltin, u"Event Log Readers"},
    {5, 2, 32, 578, kBuiltin, u"Hyper-V Administrators"},
    {5, 2, 32, 579, kBuiltin, u"Access Control Assistance Operators"},
    {5, 2, 32, 580, kBuiltin, u"Remote Management Users"},
    {5, 2, 80, 0, u"NT SERVICE", u"ALL SERVICES"},
    {5, 2, 83, 0, u"NT VIRTUAL MACHINE", u"Virtual Machines"},
    {15, 2, 2, 1, kPackage, u"ALL APPLICATION PACKAGES"},
    {15, 2, 2, 2, kPackage, u"ALL RESTRICTED APPLICATION PACKAGES"},
    {16, 1, 0, 0, kLabel, u"Untrusted Mandatory Level"},
    {16, 1, 4096, 0, kLabel, u"Low Mandatory Level"},
    {16, 1, 8192, 0, kLabel, u"Medium Mandatory Level"},
    {16, 1, 12288, 0, kLabel, u"High Mandatory Level"},
    {16, 1, 16384, 0, kLabel, u"System Mandatory Level"},
};

}  // namespace

const WellKnownAccount* FindWellKnownAccount(const Sid& sid) noexcept {
    const auto found = std::ranges::find_if(kAccounts, [&sid](const WellKnownAccount& account) {
        return sid.authority == account.authority && sid.count == account.count && sid.parts[0] == account.first &&
               sid.parts[1] == account.second;
    });
    return found != std::end(kAccounts) ? &*found : nullptr;
}

}  // namespace roundup
