#include <cstdlib>

#include "tests/host/runprogram.h"

namespace roundup {

namespace {

// For the shell that std::system starts.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

}  // namespace

ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    const TempFolder folder;
    std::string command = "env -u ROUNDUP_MACHINE -u ROUNDUP_HOST TMPDIR=" + Quoted(folder.Text());
    for (const std::string& setting : environment) command += " " + Quoted(setting);
    command += " " + Quoted(ROUNDUP_PROGRAM);
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    command += " >" + Quoted(folder / "out") + " 2>" + Quoted(folder / "err") + " </dev/null";
    ProgramRun run;
    const int status = std::system(command.c_str());
    run.status = (status & 0x7F) == 0 ? (status >> 8) & 0xFF : 128 + (status & 0x7F);
    run.output = folder.Read("out");
    run.error = folder.Read("err");
    return run;
}

}  // namespace roundup
