#include "host/program.h"

#include <cstdio>
#include <unordered_map>

#include "host/appjson.h"
#include "host/applist.h"
#include "host/catalogue.h"
#include "host/complain.h"
#include "host/findapp.h"
#include "host/gather.h"
#include "host/report.h"
#include "host/terminal.h"
#include "host/textout.h"
#include "host/uninstall.h"
#include "platform/machine.h"

namespace roundup::host {

namespace {

Layout LayoutOf(Stream stream) { return {TerminalWidth(stream), WantsColour(stream)}; }

// The records in the order of the applications that are shown; those that are no longer present are left out.
std::vector<Catalogue::Listed> RecordsOf(const std::vector<NumberedApp>& shown, Catalogue& catalogue) {
    std::unordered_map<const IApp*, const _tagAppInfo*> byApp;
    for (const Catalogue::Listed& listed : catalogue.Records()) byApp.emplace(listed.app, listed.record);
    std::vector<Catalogue::Listed> records;
    for (const NumberedApp& one : shown) {
        if (const auto found = byApp.find(one.app); found != byApp.end()) records.push_back({found->second, one.app});
    }
    return records;
}

bool WriteList(const Options& options, Catalogue& catalogue) {
    const std::vector<NumberedApp> shown = SelectApps(catalogue.Apps(), options.filter);
    const std::string total = TotalLine(shown, catalogue.Apps());
    switch (options.format) {
        case Format::Tree:
            return WriteTree(shown, total, LayoutOf(Stream::Output));
        case Format::Json:
            return WriteJson(shown);
        case Format::JsonLines:
            return WriteJsonLines(shown);
        case Format::Csv:
            return WriteCsv(shown);
        case Format::Table:
        case Format::Text:
            break;
    }
    return WriteTable(RecordsOf(shown, catalogue), total, LayoutOf(Stream::Output));
}

int Show(const Options& options, const Found& found) {
    bool written = true;
    if (options.format == Format::Json) {
        WriteAppJson(*found.app, found.index, [&](std::string_view text) { written = WriteOut(text) && written; });
        written = WriteOut("\n") && written;
    } else {
        written = WriteApp(found, options.why, LayoutOf(Stream::Output));
    }
    return written && std::fflush(stdout) == 0 ? kExitSuccess : Complain(kOutputFailed);
}

std::string ComputerName() {
    char16_t name[64] = u"";
    (void)CurrentMachine().System().GetComputerName(name, 64);
    return Utf8(name);
}

int Report(const Options& options, const Catalogue& catalogue) {
    const std::vector<NumberedApp> shown = SelectApps(catalogue.Apps(), options.filter);
    const std::string computer = ComputerName();
    const std::string title = computer.empty() ? "Applications" : "Applications on " + computer;
    const std::string page = MakeReport(shown, title, TotalLine(shown, catalogue.Apps()));
    return WriteReport(options.html, page) ? kExitSuccess : Complain("'" + options.html + "' cannot be written");
}

}  // namespace

int LoadCatalogue(const Options& options, Catalogue& catalogue) {
    LoadOutcome outcome = LoadOutcome::Failed;
    {
        ProgressMeter progress(options.progress);
        outcome = catalogue.Load(progress, Interrupted);
    }
    if (outcome == LoadOutcome::Cancelled) {
        Complain("cancelled");
        return kExitCancelled;
    }
    if (outcome == LoadOutcome::Failed) return Complain("the catalogue cannot be loaded (the log tells more)");
    return kExitSuccess;
}

int RunCommand(const Options& options) {
    Catalogue catalogue;
    if (const int status = LoadCatalogue(options, catalogue); status != kExitSuccess) return status;
    if (options.command == Command::List) {
        const bool written = WriteList(options, catalogue) && std::fflush(stdout) == 0;
        return written ? kExitSuccess : Complain(kOutputFailed);
    }
    if (options.command == Command::Report) return Report(options, catalogue);
    if (options.all) return GatherAll(options, catalogue);
    const Found found = FindApp(catalogue.Apps(), options);
    if (found.app == nullptr) return Complain(NotFoundMessage(options));
    if (options.command == Command::Gather) return Gather(options, found);
    return options.command == Command::Show ? Show(options, found) : Uninstall(options, catalogue, found);
}

}  // namespace roundup::host
