// The books of Windows Installer as a source of the catalogue.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/sourcethread.h"

namespace roundup {

// Fills the install list from its construction to the end of its destruction; nobody else touches the list in
// between.
class ProductEnumerator final : public SourceThread {
  public:
    ProductEnumerator(const IContinue& goOn, AppList& installs);
    ~ProductEnumerator() override { Join(); }

  private:
    // This build does not read the books yet: it adds nothing.
    void Walk() override;

    [[maybe_unused]] const IContinue& m_goOn;
    [[maybe_unused]] AppList& m_installs;
};

}  // namespace roundup
