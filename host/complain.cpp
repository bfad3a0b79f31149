#include "host/complain.h"

#include <cstdio>

#include "host/options.h"

namespace roundup::host {

int Complain(const std::string& message) {
    std::fprintf(stderr, "roundup: %s\n", message.c_str());
    return kExitFailure;
}

}  // namespace roundup::host
