// Runs the built program and keeps what it wrote.
#pragma once

#include <string>
#include <vector>

#include "tests/support/tempfolder.h"

namespace roundup {

struct ProgramRun {
    int status = -1;
    std::string output;
    std::string error;
};

// Arguments as the program gets them, UTF-8. environment: "NAME=value" each, on top of the test's own.
ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment = {});

}  // namespace roundup
