// The repository of store packages as a source of the catalogue.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/sourcethread.h"

namespace roundup {

// Fills the package list from its construction to the end of its destruction; nobody else touches the list in
// between.
class CLoadAppx final : public SourceThread {
  public:
    CLoadAppx(const IContinue& goOn, AppList& packages);
    ~CLoadAppx() override { Join(); }

  private:
    // This build does not read the repository yet: it adds nothing.
    void Walk() override;

    [[maybe_unused]] const IContinue& m_goOn;
    [[maybe_unused]] AppList& m_packages;
};

}  // namespace roundup
