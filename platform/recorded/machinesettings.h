// What neither a registry nor a file tree can say of a machine: the content of machine.ini.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/recorded/sourceerror.h"
#include "platform/system.h"

namespace roundup {

struct MachineSettings {
    using Texts = std::vector<std::pair<std::u16string, std::u16string>>;
    using Lists = std::vector<std::pair<std::u16string, std::vector<std::u16string>>>;
    struct Version {
        std::uint32_t major = 10;
        std::uint32_t minor = 0;
        std::uint32_t build = 19045;
    };

    std::uint16_t architecture = kArchitectureAmd64;
    Version version;
    std::u16string computer = u"RECORDED";
    std::u16string user = u"User";
    std::uint32_t processors = 4;

    Texts environment;                                              // name, value; later ones win
    std::vector<std::pair<std::uint32_t, std::u16string>> folders;  // CSIDL number, path
    Texts reparse;                                                  // path, target of its mount point
    Texts shortPaths;                                               // long path, short path, part by part
    std::vector<std::pair<std::u16string, std::uint32_t>> attributes;
    Lists groups;                                              // local group, members
    Lists accounts;                                            // path or MACHINE\... key path, names of its access list
    Texts strings;                                             // indirect string, text
    std::vector<std::pair<char16_t, std::u16string>> volumes;  // drive letter in upper case, file system name

    bool Is64Bit() const noexcept { return architecture == kArchitectureAmd64; }
};

// Reads the text of a machine.ini (UTF-8, with or without its mark). file is the name that errors tell. A section or
// key that is not known, a value that is none of its kind, and a line that is neither are errors.
SourceStatus ReadMachineSettings(std::string_view text, const std::string& file, MachineSettings& settings);

// The same settings as text; what has its default is left out.
std::string WriteMachineSettings(const MachineSettings& settings);

}  // namespace roundup
