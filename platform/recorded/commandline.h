// The rules by which the shell splits a command line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace roundup {

// CommandLineToArgvW of a text that is not empty.
std::vector<std::u16string> SplitArguments(std::u16string_view text);

}  // namespace roundup
