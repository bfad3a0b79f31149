// Applications and store packages as JSON.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "appcenter/app/iapp.h"

namespace roundup::host {

// Takes the text piece by piece; what has been written is not held.
using JsonSink = std::function<void(std::string_view)>;

// One application with its sub-applications, or one store package. index is its position in the host's record array;
// sub-applications have none, which is null. A forest of any depth is written without recursion.
void WriteAppJson(const IApp& app, std::optional<std::size_t> index, const JsonSink& sink);

}  // namespace roundup::host
