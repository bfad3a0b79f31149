// What belongs to one application.
#pragma once

#include "host/catalogue.h"
#include "host/findapp.h"
#include "host/options.h"

namespace roundup::host {

// Gathers the application, writes what the options ask for, and keeps its stores when they name a folder. Exit status.
int Gather(const Options& options, const Found& found);

// The JSON of a gather, whole, with a line end. result is the small code.
std::string GatherJson(IApp& app, std::uint32_t result);
// A summary for people.
std::string GatherText(IApp& app);

// Copies the store pair of each application of the tree to the folder, and what the gather wrote elsewhere on a machine
// that is not live. False, and message says why, when something cannot be written.
bool KeepStores(const IApp& app, const std::string& folder, std::string& message);

}  // namespace roundup::host
