#include "host/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace roundup::host {

namespace {

constexpr const char* kEpilogue =
    "A machine is a recorded folder, a Wine prefix or the root of an offline Windows volume.\n"
    "\n"
    "Exit status: 0 success, 1 the operation failed or the application was not found,\n"
    "2 wrong usage, 130 cancelled with Ctrl-C; uninstall ends with that of the uninstaller.\n"
    "\n"
    "Examples:\n"
    "  roundup list --machine samples/machine\n"
    "  roundup list --machine ~/.wine --format json\n"
    "  roundup list --publisher 'Otter*' --larger-than 100M --sort size\n"
    "  roundup diff monday.json /mnt/windows\n"
    "  roundup show '{1D2C96C3-A3F3-49E7-B839-95279DED837F}' --machine /mnt/windows --user Ann\n"
    "  roundup gather PustelginNotes --machine samples/machine --store kept\n"
    "  roundup gather --all --format ndjson --machine ~/.wine\n"
    "  roundup uninstall PustelginNotes --machine samples/machine --dry-run";

// A choice of names for an enumeration, as CLI11 wants it.
template <class T>
CLI::Option* AddChoice(CLI::App& app, const std::string& flag, T& target, std::map<std::string, T> choices,
                       const std::string& text) {
    return app.add_option(flag, target, text)
        ->transform(CLI::CheckedTransformer(std::move(choices)).description(""))
        ->option_text([&] { return std::string("NAME"); }());
}

void AddHostOptions(CLI::App& app, Options& options) {
    app.add_option("--host", options.hostFolder, "host folder, with Config and cache in it (or ROUNDUP_HOST)")
        ->option_text("DIR")
        ->envname("ROUNDUP_HOST");
    app.add_option("--user", options.user, "user of a machine with several profiles")->option_text("NAME");
    app.add_flag("--verbose", options.verbose, "show the module's own diagnosis on standard error");
}

void AddMachineOptions(CLI::App& app, Options& options) {
    app.add_option("--machine", options.machine, "folder of the machine (or ROUNDUP_MACHINE)")
        ->option_text("DIR")
        ->envname("ROUNDUP_MACHINE");
    AddHostOptions(app, options);
}

// The application that a command is about. name is set when the option was given.
CLI::Option* AddApplication(CLI::App& app, Options& options) {
    CLI::Option* key = app.add_option("KEY", options.key, "key of the application, case does not matter");
    app.add_option_function<std::string>(
           "--name", [&options](const std::string& name) { options.name = name; },
           "name of the application, when several share the key")
        ->option_text("NAME");
    return key;
}

void AddGather(CLI::App& app, Options& options, Format& format) {
    CLI::Option* key = AddApplication(app, options);
    CLI::Option* all = app.add_flag("--all", options.all, "gather everything that is listed, in place of a KEY");
    key->excludes(all);
    app.add_option("--jobs", options.jobs, "with --all: so many side by side (default: one for each processor)")
        ->option_text("NUMBER")
        ->check(CLI::Range(1, 64).description(""))
        ->needs(all);
    app.add_option("--store", options.store, "keep the store pair of each application in that folder")
        ->option_text("DIR");
    AddChoice<Format>(app, "--format", format,
                      {{"text", Format::Text}, {"json", Format::Json}, {"ndjson", Format::JsonLines}},
                      "text (a summary), json or ndjson (one object a line)");
    app.final_callback([&options] {
        if (!options.all && options.key.empty()) throw CLI::RequiredError("KEY or --all");
    });
}

void AddProgress(CLI::App& app, Options& options) {
    AddChoice<ProgressStyle>(app, "--progress", options.progress,
                             {{"auto", ProgressStyle::Auto},
                              {"bar", ProgressStyle::Bar},
                              {"plain", ProgressStyle::Plain},
                              {"none", ProgressStyle::None}},
                             "progress on standard error: auto, bar, plain or none");
}

template <class T>
CLI::Option* AddParsed(CLI::App& app, const std::string& flag, std::optional<T>& target,
                       std::optional<T> (*parse)(const std::string&), const char* wanted, const std::string& text) {
    return app
        .add_option_function<std::string>(
            flag,
            [&target, parse, flag, wanted](const std::string& value) {
                target = parse(value);
                if (!target) throw CLI::ValidationError(flag, "'" + value + "' is no " + wanted);
            },
            text)
        ->option_text("VALUE");
}

void AddFilter(CLI::App& app, ListFilter& filter) {
    app.add_option("--name", filter.name, "only names with that text, or like that pattern (* and ?)")
        ->option_text("TEXT");
    app.add_option("--publisher", filter.publisher, "only publishers with that text, or like that pattern")
        ->option_text("TEXT");
    AddParsed<Kind>(app, "--kind", filter.kind, ParseKind, "kind (app, msi, package or update)",
                    "only one kind: app (a setup program's), msi, package (of the store) or update");
    AddParsed<std::uint64_t>(app, "--larger-than", filter.largerThan, ParseSize, "size",
                             "only above that size in bytes, or with K, M, G or T (powers of 1,024)");
    AddParsed<std::string>(app, "--since", filter.since, ParseDay, "day",
                           "only what was installed on that day (2024-03-01) or later");
    AddParsed<SortBy>(app, "--sort", filter.sort, ParseOrder, "order (name, publisher, size or date)",
                      "by name, publisher, size (largest first) or date (newest first)");
}

// CLI11 calls the name of the last parsed subcommand's parent "roundup" itself; its error texts are one line each.
ParsedCommandLine ReportUsage(const CLI::App& app, const CLI::ParseError& error) {
    ParsedCommandLine result;
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
        app.exit(error);  // writes help or version to standard output
        return result;
    }
    std::fprintf(stderr, "roundup: %s (see 'roundup --help')\n", error.what());
    result.exitStatus = kExitUsage;
    return result;
}

}  // namespace

ParsedCommandLine ParseCommandLine(std::vector<std::string> arguments) {
    Options options;
    CLI::App app("Takes stock of the applications that are installed on a Windows machine.", "roundup");
    app.set_version_flag("--version", "roundup " ROUNDUP_VERSION);
    app.footer(kEpilogue);
    app.require_subcommand(1);

    CLI::App* list = app.add_subcommand("list", "List the applications of a machine");
    AddMachineOptions(*list, options);
    AddChoice<Format>(*list, "--format", options.format,
                      {{"table", Format::Table},
                       {"tree", Format::Tree},
                       {"json", Format::Json},
                       {"ndjson", Format::JsonLines},
                       {"csv", Format::Csv}},
                      "table, tree, json, ndjson (one object a line) or csv");
    AddFilter(*list, options.filter);
    AddProgress(*list, options);

    Format showFormat = Format::Text;
    CLI::App* show = app.add_subcommand("show", "Show one application");
    AddApplication(*show, options)->required();
    AddMachineOptions(*show, options);
    show->add_flag("--why", options.why, "tell of each field where it comes from (as text)");
    AddChoice<Format>(*show, "--format", showFormat, {{"text", Format::Text}, {"json", Format::Json}}, "text or json");

    Format gatherFormat = Format::Text;
    CLI::App* gather = app.add_subcommand("gather", "Work out what belongs to an application");
    AddMachineOptions(*gather, options);
    AddGather(*gather, options, gatherFormat);
    AddProgress(*gather, options);

    CLI::App* uninstall = app.add_subcommand("uninstall", "Run the uninstaller of an application and wait for it");
    AddApplication(*uninstall, options)->required();
    AddMachineOptions(*uninstall, options);
    uninstall->add_flag("--dry-run", options.dryRun, "tell what would run, as JSON, and run nothing");

    CLI::App* report = app.add_subcommand("report", "Write the list as a page for a browser");
    report->add_option("--html", options.html, "file of the page, which is replaced")->option_text("FILE")->required();
    AddMachineOptions(*report, options);
    AddFilter(*report, options.filter);
    AddProgress(*report, options);

    Format diffFormat = Format::Text;
    CLI::App* diff = app.add_subcommand("diff", "Tell what has changed between two catalogues");
    diff->add_option("OLD", options.diff[0], "machine, or file with the JSON of 'list'")->required();
    diff->add_option("NEW", options.diff[1], "the same")->required();
    AddHostOptions(*diff, options);
    AddChoice<Format>(*diff, "--format", diffFormat, {{"text", Format::Text}, {"json", Format::Json}}, "text or json");

    try {
        std::reverse(arguments.begin(), arguments.end());
        app.parse(std::move(arguments));
    } catch (const CLI::ParseError& error) {
        return ReportUsage(app, error);
    }
    if (show->parsed() || uninstall->parsed()) {
        options.command = show->parsed() ? Command::Show : Command::Uninstall;
        options.format = showFormat;
        options.progress = ProgressStyle::None;
    }
    if (gather->parsed()) {
        options.command = Command::Gather;
        options.format = gatherFormat;
        if (!options.all) options.progress = ProgressStyle::None;
    }
    if (report->parsed()) options.command = Command::Report;
    if (diff->parsed()) {
        options.command = Command::Diff;
        options.format = diffFormat;
        options.progress = ProgressStyle::None;
    }
    return {std::move(options), kExitSuccess};
}

}  // namespace roundup::host
