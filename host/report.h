// The catalogue as a page for a browser.
#pragma once

#include <string>
#include <vector>

#include "host/listfilter.h"

namespace roundup::host {

// One self-contained page: the forest as a table that can be searched and sorted, icons and sizes as pictures. It asks
// for nothing from anywhere, and without scripts it is the table alone. title is UTF-8.
std::string MakeReport(const std::vector<NumberedApp>& apps, const std::string& title, const std::string& total);

// The page as a file, which is replaced. False when it cannot be written.
bool WriteReport(const std::string& file, const std::string& page);

}  // namespace roundup::host
