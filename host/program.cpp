#include "host/program.h"

#include <cstdio>

#include "host/appjson.h"
#include "host/applist.h"
#include "host/catalogue.h"
#include "host/complain.h"
#include "host/findapp.h"
#include "host/terminal.h"
#include "host/textout.h"
#include "host/uninstall.h"

namespace roundup::host {

namespace {

Layout LayoutOf(Stream stream) { return {TerminalWidth(stream), WantsColour(stream)}; }

bool WriteList(const Options& options, Catalogue& catalogue) {
    switch (options.format) {
        case Format::Tree:
            return WriteTree(catalogue.Apps(), LayoutOf(Stream::Output));
        case Format::Json:
            return WriteJson(catalogue.Apps());
        case Format::Csv:
            return WriteCsv(catalogue.Apps());
        case Format::Table:
        case Format::Text:
            break;
    }
    return WriteTable(catalogue.Records(), LayoutOf(Stream::Output));
}

int Show(const Options& options, const Found& found) {
    bool written = true;
    if (options.format == Format::Json) {
        WriteAppJson(*found.app, found.index, [&](std::string_view text) { written = WriteOut(text) && written; });
        written = WriteOut("\n") && written;
    } else {
        written = WriteApp(found, LayoutOf(Stream::Output));
    }
    return written && std::fflush(stdout) == 0 ? kExitSuccess : Complain(kOutputFailed);
}

}  // namespace

int RunCommand(const Options& options) {
    Catalogue catalogue;
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
    if (options.command == Command::List) {
        const bool written = WriteList(options, catalogue) && std::fflush(stdout) == 0;
        return written ? kExitSuccess : Complain(kOutputFailed);
    }
    const Found found = FindApp(catalogue.Apps(), options);
    if (found.app == nullptr) return Complain(NotFoundMessage(options));
    return options.command == Command::Show ? Show(options, found) : Uninstall(options, catalogue, found);
}

}  // namespace roundup::host
