// What belongs to one application.
#pragma once

#include "host/catalogue.h"
#include "host/findapp.h"
#include "host/options.h"

namespace roundup::host {

// Gathers the application, writes what the options ask for, and keeps its stores when they name a folder. Exit status.
int Gather(const Options& options, const Found& found);

// Gathers every application and package of the catalogue, as many side by side as the options say, and writes them in
// the order of the list. What was gathered of one is let go of once it was written. Ctrl-C ends it between two. Exit
// status: failure when one of them failed.
int GatherAll(const Options& options, const Catalogue& catalogue);

// The JSON of a gather, whole, with a line end. result is the small code.
std::string GatherJson(IApp& app, std::uint32_t result);
// A summary for people.
std::string GatherText(IApp& app);

// Copies the store pair of each application of the tree to the folder, which is made. False, and message says why, when
// something cannot be written.
bool KeepStores(const IApp& app, const std::string& folder, std::string& message);
// The same for what gathers wrote elsewhere on a machine that is not live.
bool KeepWritten(const std::string& folder, std::string& message);

}  // namespace roundup::host
