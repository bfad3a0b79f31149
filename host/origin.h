// Where an application comes from and why it hangs below another one, in words.
#pragma once

#include <string>

#include "appcenter/app/apporigin.h"

namespace roundup::host {

// The places that its records were found in; empty when they are not known, as of an application of the cache.
std::string OriginWords(std::uint32_t origins);

// What tied it to its parent; empty when that is not known.
std::string LinkWords(LinkReason reason);

}  // namespace roundup::host
