// What has changed between two catalogues.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/options.h"

namespace roundup::host {

// One application or store package of a catalogue, wherever it hangs.
struct DiffEntry {
    bool package = false;
    std::string identity;  // what stays over an update: the key, or the family of a package
    std::string key, name, publisher, version, installDate, installLocation;
    std::int64_t size = 0;  // bytes
};

struct CatalogueDiff {
    struct Change {
        DiffEntry from;
        DiffEntry to;
        std::vector<std::string> fields;  // members of the JSON that differ
    };
    std::vector<DiffEntry> added;
    std::vector<DiffEntry> removed;
    std::vector<Change> changed;
};

// Pairs entries of equal identity in their order, then those left over of one name and publisher: a new version of a
// product often comes under a new key. Case does not matter. Lists have the order of the catalogues.
CatalogueDiff CompareCatalogues(const std::vector<DiffEntry>& from, const std::vector<DiffEntry>& to);

// Runs the command: options.diff names two machines, or two files with the JSON of `list`, or one of each. Exit status.
int RunDiff(const Options& options);

}  // namespace roundup::host
