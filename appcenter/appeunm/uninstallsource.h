// The Uninstall key of one root and view as a source of the catalogue.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/sourcethread.h"
#include "appcenter/appeunm/uninstallentry.h"
#include "platform/registry.h"

namespace roundup {

// Fills a list of its own, in the order of enumeration, from its construction to the end of its destruction; nobody
// else touches the list in between. The entries are taken as they are found: what is no application of its own only
// gets its flag. A failure is logged and ends the source; what it has found stays.
class UninstallEnumerator final : public SourceThread {
  public:
    // root: HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER. view64: the 64-bit view; else the 32-bit one of a 64-bit
    // machine, or the only one.
    UninstallEnumerator(const IContinue& goOn, AppList& list, KeyHandle root, bool view64);
    ~UninstallEnumerator() override { Join(); }

  private:
    void Walk() override;
    ResultCode AddEntry(CWFYRegKey& uninstallKey, OwnedString name);

    const IContinue& m_goOn;
    AppList& m_list;
    const KeyHandle m_root;
    const EntryOrigin m_origin;
    EntryValues m_values;  // of the entry in hand
};

}  // namespace roundup
