// Lists for reconciliation made by hand, and the forest that comes of them as text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "appcenter/appeunm/reconcilelists.h"
#include "tests/appcenter/catalogue_support.h"

namespace roundup {

// One record; what is left out is not known. The name is the key's when it is left out, and stays unknown when "-".
struct Record {
    std::u16string key = {};
    std::u16string name = {};
    std::u16string location = {};
    std::u16string package = {};
    int code = 0;                  // see CodeOf
    std::vector<int> claims = {};  // codes of RelatedCodes
    std::u16string parent = {};    // display name
    bool hidden = false;
    std::u16string source = {};
    std::u16string version = {};
    std::u16string type = {};  // pwszTypeDes
    std::int64_t size = 0;
    std::vector<Record> parts = {};
};

// A code by number, nil for 0; its packed and braced texts are those of FormatGuid.
Guid CodeOf(int number);
std::u16string CodeText(int number, GuidForm form = GuidForm::Braced);

RefPtr<CApp> MakeApp(const Record& record);
CAppList MakeList(const std::vector<Record>& records);

// The forest as text: keys, or names of what has no key, each with the first letters of why it hangs where it does,
// parts in parentheses: "Tool(code:Patch, loc:Help)".
std::string ForestText(const CAppList& apps);
std::string ForestText(const AppList& apps);

class ReconcileTest : public CatalogueTest {
  protected:
    // Starts the builder's machine, with a manager that goes on.
    CAppManager& StartManager();
    // Reconciles the two lists on the builder's machine.
    std::string Reconciled(const std::vector<Record>& uninstalls, const std::vector<Record>& installs = {});
    // Runs one pass on the builder's machine; answers the main list, " | " and the hide list.
    std::string Passed(ResultCode (*pass)(CAppManager&, CAppList&, CAppList&), const std::vector<Record>& main,
                       const std::vector<Record>& hide);
    // The lines of the log since the last start that hold the text.
    std::string LogLines(std::u16string_view text);
    CAppManager& Manager() { return *m_manager; }
    void TearDown() override { m_manager.Reset(); }

  private:
    RefPtr<CAppManager> m_manager;
};

}  // namespace roundup
