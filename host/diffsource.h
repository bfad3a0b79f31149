// Where the catalogues come from that are compared.
#pragma once

#include <string>
#include <vector>

#include "host/diff.h"

namespace roundup::host {

// Reads a machine (a folder) or a file with the JSON of `list`. Exit status; what went wrong has been told.
int ReadDiffSource(const Options& options, const std::string& path, std::vector<DiffEntry>& entries);

// The entries of such a JSON text, those below others included. False when it is none.
bool ParseCatalogueJson(const std::string& text, std::vector<DiffEntry>& entries);

}  // namespace roundup::host
