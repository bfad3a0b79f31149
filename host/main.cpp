// The program `roundup`: reads its arguments, chooses the machine, runs the command.

#include <cstdio>
#include <exception>
#include <memory>
#include <string>

#include "host/diff.h"
#include "host/machinechoice.h"
#include "host/options.h"
#include "host/program.h"
#include "host/terminal.h"

namespace {

int Run(int argc, char** argv) {
    using namespace roundup;
    using namespace roundup::host;
    PrepareStreams();
    const ParsedCommandLine parsed = ParseCommandLine(ProgramArguments(argc, argv));
    if (!parsed.options) return parsed.exitStatus;
    CatchInterrupts();
    if (parsed.options->command == Command::Diff) return RunDiff(*parsed.options);
    std::string message;
    const std::unique_ptr<Machine> machine = ChooseMachine(*parsed.options, message);
    if (machine == nullptr) {
        std::fprintf(stderr, "roundup: %s\n", message.c_str());
        return kExitFailure;
    }
    const MachineScope scope(*machine);
    return RunCommand(*parsed.options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "roundup: %s\n", error.what());
        return roundup::host::kExitFailure;
    }
}
