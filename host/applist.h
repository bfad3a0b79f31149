// The listings of the program.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/catalogue.h"
#include "host/findapp.h"
#include "host/listfilter.h"

namespace roundup::host {

// How a listing for people is laid out: at most width columns (no limit without one), with colour or without.
struct Layout {
    std::optional<std::size_t> width;
    bool colour = false;
};

// The line below a listing.
std::string TotalText(const std::string& total, const Layout& layout);

// Each writes to standard output and answers false when it cannot be written. The listings for people end with total.
bool WriteTable(const std::vector<Catalogue::Listed>& records, const std::string& total, const Layout& layout);
bool WriteTree(const std::vector<NumberedApp>& apps, const std::string& total, const Layout& layout);
bool WriteJson(const std::vector<NumberedApp>& apps);
// One object a line, for pipelines.
bool WriteJsonLines(const std::vector<NumberedApp>& apps);
bool WriteCsv(const std::vector<NumberedApp>& apps);

// One application, with where it comes from and why it, and what hangs below it, hang where they do. why asks for the
// origin of each field.
bool WriteApp(const Found& found, bool why, const Layout& layout);

}  // namespace roundup::host
