#include "host/program.h"

#include <cstdio>
#include <string>
#include <utility>

#include "host/appjson.h"
#include "host/applist.h"
#include "host/catalogue.h"
#include "host/terminal.h"
#include "host/textout.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup::host {

namespace {

int Complain(const std::string& message) {
    std::fprintf(stderr, "roundup: %s\n", message.c_str());
    return kExitFailure;
}

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

// An application and its position in the listing; without a position it hangs below another one.
struct Found {
    const CApp* app = nullptr;
    std::optional<std::size_t> index;
};

// The first application whose key, and name when one is given, are equal ignoring case: the top level first, then
// what hangs below, in the order of the listing.
Found Find(const std::vector<const IApp*>& apps, std::u16string_view key, const std::optional<std::u16string>& name) {
    const auto fits = [&](const CApp& app) {
        return EqualsNoCase(app.pwszKeyString, key) && (!name || EqualsNoCase(app.pwszName, *name));
    };
    for (std::size_t i = 0; i < apps.size(); ++i) {
        const auto* app = dynamic_cast<const CApp*>(apps[i]);
        if (app != nullptr && fits(*app)) return {app, i};
    }
    std::vector<const IApp*> waiting;
    for (std::size_t i = apps.size(); i > 0; --i) waiting.push_back(apps[i - 1]);
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        const IApp* parent = waiting.back();
        waiting.pop_back();
        below.clear();
        parent->GetSubApps(below);
        for (IApp* sub : below) {
            const auto* app = dynamic_cast<const CApp*>(sub);
            if (app != nullptr && fits(*app)) return {app, std::nullopt};
        }
        waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
    return {};
}

int Show(const Options& options, const Catalogue& catalogue) {
    std::optional<std::u16string> name;
    if (options.name) name = FromUtf8(*options.name);
    const Found found = Find(catalogue.Apps(), FromUtf8(options.key), name);
    if (found.app == nullptr)
        return Complain("no application has the key '" + options.key + "'" +
                        (name ? " and the name '" + *options.name + "'" : ""));
    bool written = true;
    if (options.format == Format::Json) {
        WriteAppJson(*found.app, found.index, [&](std::string_view text) { written = WriteOut(text) && written; });
        written = WriteOut("\n") && written;
    } else {
        written = WriteApp(*found.app, found.index, LayoutOf(Stream::Output));
    }
    return written && std::fflush(stdout) == 0 ? kExitSuccess : Complain("standard output cannot be written");
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
    if (options.command == Command::Show) return Show(options, catalogue);
    const bool written = WriteList(options, catalogue) && std::fflush(stdout) == 0;
    return written ? kExitSuccess : Complain("standard output cannot be written");
}

}  // namespace roundup::host
