#include "host/machinechoice.h"

#include "host/terminal.h"
#include "platform/recorded/openmachine.h"

namespace roundup::host {

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
    SourceError error;
    chosen.owned = OpenRecordedMachine(open, error);
    chosen.machine = chosen.owned.get();
    if (chosen.machine == nullptr) message = error.Text();
    return chosen;
}

}  // namespace roundup::host
