// The repository of store packages as a source of the catalogue.
#pragma once

#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/sourcethread.h"

namespace roundup {

// Fills the package list from its construction to the end of its destruction; nobody else touches the list in
// between. Only Windows 10 and what calls itself so has the repository. The go-on query is asked before each package,
// once the whole repository has been read.
class CLoadAppx final : public SourceThread {
  public:
    CLoadAppx(const IContinue& goOn, AppList& packages);
    ~CLoadAppx() override { Join(); }

  private:
    void Walk() override;

    const IContinue& m_goOn;
    AppList& m_packages;
};

}  // namespace roundup
