// The books of Windows Installer as a source of the catalogue.
#pragma once

#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/app/icontinue.h"
#include "appcenter/appeunm/applist.h"
#include "appcenter/appeunm/entryvalues.h"
#include "appcenter/appeunm/sourcethread.h"
#include "utility/reg.h"

namespace roundup {

class PackageQueue;

// Fills the install list from its construction to the end of its destruction; nobody else touches the list in
// between. What the books of all users tell of products and patches comes first, in the order of the books, then the
// cached packages that no book mentions. A branch that cannot be opened is passed over.
class ProductEnumerator final : public SourceThread {
  public:
    ProductEnumerator(const IContinue& goOn, AppList& installs);
    ~ProductEnumerator() override { Join(); }

  private:
    // The branch of one user in the books, open while it is walked.
    struct Branch {
        CWFYRegKey& userData;
        const OwnedString& user;
        CWFYRegKey& products;
    };

    void Walk() override;
    void ReadBooks(PackageQueue& queue);
    void ReadProducts(CWFYRegKey& userData, const OwnedString& user, PackageQueue& queue);
    ResultCode ReadProduct(const Branch& branch, const OwnedString& packed, PackageQueue& queue);
    void FillProduct(CWFYRegKey& properties, CApp& app);
    // Notes the codes of a product's patches, and collects the patches that have a name in the books.
    void ReadPatches(const Branch& branch, const OwnedString& packed, CApp& app, std::vector<RefPtr<CApp>>& patches);
    ResultCode ReadPatch(const Branch& branch, CWFYRegKey& patchesKey, const OwnedString& packed, CApp& app,
                         std::vector<RefPtr<CApp>>& patches) const;

    const IContinue& m_goOn;
    AppList& m_installs;
    const bool m_view64;
    EntryValues m_values;  // of the product in hand
};

}  // namespace roundup
