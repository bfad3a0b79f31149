// Finds the application or the store package that the command line names.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "appcenter/app/iapp.h"
#include "host/options.h"

namespace roundup::host {

// An application and its position in the listing; without a position it hangs below parent, which is root or hangs
// below root, an application of the listing.
struct Found {
    const IApp* app = nullptr;  // null: there is none
    std::optional<std::size_t> index;
    const IApp* parent = nullptr;
    const IApp* root = nullptr;
};

// The first application whose key, and name when one is given, are equal ignoring case: the top level first, then
// what hangs below, in the order of the listing. The key of a store package is its full name.
Found FindApp(const std::vector<const IApp*>& apps, const Options& options);

// Why there is none, for people.
std::string NotFoundMessage(const Options& options);

}  // namespace roundup::host
