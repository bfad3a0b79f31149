// The listings of the program.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/catalogue.h"
#include "host/findapp.h"

namespace roundup::host {

// How a listing for people is laid out: at most width columns (no limit without one), with colour or without.
struct Layout {
    std::optional<std::size_t> width;
    bool colour = false;
};

// Each writes to standard output and answers false when it cannot be written.
bool WriteTable(const std::vector<Catalogue::Listed>& records, const Layout& layout);
bool WriteTree(const std::vector<const IApp*>& apps, const Layout& layout);
bool WriteJson(const std::vector<const IApp*>& apps);
bool WriteCsv(const std::vector<const IApp*>& apps);

// One application, with where it comes from and why it, and what hangs below it, hang where they do.
bool WriteApp(const Found& found, const Layout& layout);

}  // namespace roundup::host
