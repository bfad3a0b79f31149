#include "host/machinechoice.h"

#include <cstdio>

#include "platform/livemachine.h"
#include "platform/recorded/openmachine.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

void ShowDiagnosis(std::u16string_view text) {
    const std::string shown = ToUtf8(text);
    std::fwrite(shown.data(), 1, shown.size(), stderr);
}

void DropDiagnosis(std::u16string_view) {}

std::unique_ptr<Machine> ChooseLive(const Options& options, std::string& message) {
    LiveOptions open;
    open.output = options.verbose ? ShowDiagnosis : DropDiagnosis;
    std::unique_ptr<Machine> machine = OpenLiveMachine(open);
    if (machine == nullptr) message = "no machine: name one with --machine DIR or ROUNDUP_MACHINE";
    return machine;
}

}  // namespace

// What the module writes for diagnosis must not mix with the data on standard output.
std::unique_ptr<Machine> ChooseMachine(const Options& options, std::string& message) {
    if (options.machine.empty()) return ChooseLive(options, message);
    OpenOptions open;
    open.folder = options.machine;
    open.hostFolder = options.hostFolder;
    open.user = options.user;
    if (options.verbose) open.debug = open.output = ShowDiagnosis;
    SourceError error;
    std::unique_ptr<Machine> machine = OpenRecordedMachine(open, error);
    if (machine == nullptr) message = error.Text();
    return machine;
}

}  // namespace roundup::host
