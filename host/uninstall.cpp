#include "host/uninstall.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "host/complain.h"
#include "host/terminal.h"
#include "host/textout.h"

namespace roundup::host {

namespace {

constexpr std::chrono::milliseconds kGlance{100};  // between two looks at Ctrl-C

int TellPlan(const std::optional<Catalogue::UninstallPlan>& plan) {
    nlohmann::ordered_json json;
    json["present"] = plan.has_value();
    json["command"] = plan ? Utf8(plan->command) : "";
    json["hidden"] = plan && plan->hidden;
    if (!WriteOut(json.dump() + "\n") || std::fflush(stdout) != 0) return Complain(kOutputFailed);
    return plan ? kExitSuccess : kExitFailure;
}

// Ctrl-C ends the waiting alone: nothing can take an uninstaller back. The process ends on the spot then, since the
// thread that waits for the uninstaller goes on using what an orderly end would destroy.
int WaitForEnd(Catalogue& catalogue) {
    while (!Interrupted()) {
        if (const auto code = catalogue.WaitForUninstall(kGlance)) return static_cast<int>(*code);
    }
    Complain("not waited for any longer; the uninstaller goes on by itself");
    std::fflush(stdout);
    std::_Exit(kExitCancelled);
}

int Run(const Options& options, Catalogue& catalogue, std::size_t index) {
    const auto plan = catalogue.PlanUninstall(*catalogue.Apps()[index]);
    if (!plan) return Complain("'" + options.key + "' has gone, or its entry has no uninstall command");
    const std::string command = Printable(plan->command);
    if (!command.empty() && (!WriteOut(command + "\n") || std::fflush(stdout) != 0)) return Complain(kOutputFailed);
    if (!options.machine.empty()) {
        return Complain("not run: '" + options.machine +
                        "' is not the machine that this program runs on, and nothing can be started there");
    }
    if (command.empty()) Complain("nothing to run: the uninstall command of the entry is empty");
    if (!catalogue.StartUninstall(index)) return Complain("the uninstaller cannot be started (the log tells more)");
    return WaitForEnd(catalogue);
}

}  // namespace

int Uninstall(const Options& options, Catalogue& catalogue, const Found& found) {
    if (options.dryRun) return TellPlan(catalogue.PlanUninstall(*found.app));
    if (found.index) return Run(options, catalogue, *found.index);
    // The exported face uninstalls what it lists.
    const char16_t* const name = found.root->GetName();
    return Complain("'" + options.key + "' is a part of '" + Printable(name != nullptr ? name : u"") +
                    "' and is uninstalled with it");
}

}  // namespace roundup::host
