// The database server: rules for what its instances own, and the cache file of their names, accounts and permissions.
#pragma once

#include <cstdint>

#include "utility/result.h"

namespace roundup {

class CApp;
class CAppRuleSet;
class IApp;

// Has no state: the picture of the server is made anew for each call, from the registry and the folders.
class CSqlServerGather {
  public:
    // Adds the folders, files and keys of every instance to the set, writes the cache file and adds it as a file. A
    // rule that the set has already is no failure, and neither is a cache file that cannot be written: its rule is
    // left out. Small code 1 without a set, for a version that is not known, and for a machine without the server's
    // keys. The caller holds g_SoftDataLock.
    static ResultCode AddSqlServerRules(const IApp& app, CAppRuleSet* ruleSet);
    // An application of the server whose folder lies on another drive than an instance gets that instance's folder as
    // pwszOriginalInstallLoc. Every other application stays as it is. Takes g_SoftDataLock; a null application is
    // logged.
    static void CorrectSqlServerLocation(CApp* app);
    // 20082 for 2008 R2, else the year from 2012 to 2019 that the key string of the record names; 0 for any other.
    static std::uint32_t GetSqlServerVersion(const IApp& app);
};

ResultCode AddSqlServerRules(const CApp& app, CAppRuleSet& ruleSet);

}  // namespace roundup
