// What the command line asks for.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/listfilter.h"

namespace roundup::host {

enum class Command { List, Show, Gather, Uninstall, Diff, Report };
enum class Format { Table, Tree, Json, JsonLines, Csv, Text };
enum class ProgressStyle { Auto, Bar, Plain, None };

// Exit status of the program; uninstallers answer with their own.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCancelled = 130;

// All texts are UTF-8.
struct Options {
    Command command = Command::List;
    Format format = Format::Table;
    ProgressStyle progress = ProgressStyle::Auto;
    std::string machine;  // folder; empty: the live machine, where there is one
    std::string hostFolder;
    std::string user;
    std::string key;
    std::optional<std::string> name;
    ListFilter filter;                // of list
    std::array<std::string, 2> diff;  // machines or files
    std::string store;                // folder for the stores of a gather; empty: they are not kept
    bool all = false;                 // gather everything; there is no key then
    unsigned jobs = 0;                // gathers side by side; 0: as many as there are processors
    std::string html;                 // file of the report
    bool why = false;                 // show the origin of each field
    bool dryRun = false;
    bool verbose = false;
};

// Either the options, or the exit status with which the program ends at once: help and version have been written to
// standard output then, a usage error to standard error.
struct ParsedCommandLine {
    std::optional<Options> options;
    int exitStatus = kExitSuccess;
};

// arguments without the program's name.
ParsedCommandLine ParseCommandLine(std::vector<std::string> arguments);

}  // namespace roundup::host
