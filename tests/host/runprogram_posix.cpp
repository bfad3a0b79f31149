#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

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

TempFolder::TempFolder() {
    static std::atomic<unsigned> next{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    const std::filesystem::path path =
        std::filesystem::temp_directory_path() /
        ("roundup-test-" + std::to_string(now) + "-" + std::to_string(next.fetch_add(1)));
    std::filesystem::create_directories(path);
    m_path = path.string();
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ReadWholeFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteWholeFile(const std::string& path, const std::string& bytes) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << bytes;
}

ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::vector<std::string>& environment) {
    const TempFolder folder;
    std::string command = "env -u ROUNDUP_MACHINE -u ROUNDUP_HOST TMPDIR=" + Quoted(folder.Path());
    for (const std::string& setting : environment) command += " " + Quoted(setting);
    command += " " + Quoted(ROUNDUP_PROGRAM);
    for (const std::string& argument : arguments) command += " " + Quoted(argument);
    command += " >" + Quoted(folder / "out") + " 2>" + Quoted(folder / "err") + " </dev/null";
    ProgramRun run;
    const int status = std::system(command.c_str());
    run.status = (status & 0x7F) == 0 ? (status >> 8) & 0xFF : 128 + (status & 0x7F);
    run.output = ReadWholeFile(folder / "out");
    run.error = ReadWholeFile(folder / "err");
    return run;
}

}  // namespace roundup
