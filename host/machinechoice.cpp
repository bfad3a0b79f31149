#include "host/machinechoice.h"

#include <cstdio>

#include "host/terminal.h"
#include "platform/recorded/openmachine.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

void ShowDiagnosis(std::u16string_view text) {
    const std::string shown = ToUtf8(text);
    std::fwrite(shown.data(), 1, shown.size(), stderr);
}

}  // namespace

ChosenMachine ChooseMachine(const Options& options, std::string& message) {
    ChosenMachine chosen;
    if (options.machine.empty()) {
        chosen.machine = LiveMachine();
        if (chosen.machine == nullptr) message = "no machine: name one with --machine DIR or ROUNDUP_MACHINE";
        return chosen;
    }
    OpenOptions open;
    open.folder = options.machine;
    open.hostFolder = options.hostFolder;
    open.user = options.user;
    // What the module writes for diagnosis must not mix with the data on standard output.
    if (options.verbose) open.debug = open.output = ShowDiagnosis;
    SourceError error;
    chosen.owned = OpenRecordedMachine(open, error);
    chosen.machine = chosen.owned.get();
    if (chosen.machine == nullptr) message = error.Text();
    return chosen;
}

}  // namespace roundup::host
