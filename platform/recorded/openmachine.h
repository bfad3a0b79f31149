// Opens a machine that is not live from a folder of this computer.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/machine.h"
#include "platform/recorded/sourceerror.h"

namespace roundup {

// Texts are UTF-8.
struct OpenOptions {
    std::string folder;
    // The host folder, with Config and cache below it; empty: the folder of the running program. A recorded folder
    // with a folder "host" has its own.
    std::string hostFolder;
    // The user whose HKEY_CURRENT_USER and folders the machine shows; empty: the only one there is.
    std::string user;
    // Receive what the module writes as debug text, and what it writes to the standard output of the process. Without
    // them that is dropped. Called by one thread at a time.
    std::function<void(std::u16string_view)> debug;
    std::function<void(std::u16string_view)> output;
};

// The kind of the source is recognised from the folder: a recorded folder has machine.ini, a Wine prefix system.reg
// and drive_c, an offline Windows volume Windows/System32/config/SOFTWARE in any case. Null, and error says why, when
// it is none of them or cannot be read. Nothing is written to the folder, now or later, apart from a recorded
// folder's own host folder. The machine's program is named after the running one and lies in C:\RoundupHost; its
// temporary folder is the one of this process.
std::unique_ptr<Machine> OpenRecordedMachine(const OpenOptions& options, SourceError& error);

}  // namespace roundup
