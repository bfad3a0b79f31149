// The terminal and the process as this system has them: what the two builds of the program do differently.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace roundup::host {

enum class Stream { Output, Error };

// The program's arguments as UTF-8, without its name.
std::vector<std::string> ProgramArguments(int argc, char** argv);

// Prepares the standard streams: UTF-8 out, no translation of line ends.
void PrepareStreams();

bool IsTerminal(Stream stream);

// Columns of the terminal behind a stream; nothing when it is none or does not tell.
std::optional<std::size_t> TerminalWidth(Stream stream);

// True when a terminal behind a stream understands colour and nobody asked for none (NO_COLOR, TERM=dumb).
bool WantsColour(Stream stream);

// Columns that a character takes on a terminal: 0 for marks that combine, 2 for wide ones.
std::size_t CharacterColumns(char32_t character);

// From now on Ctrl-C sets a flag that Interrupted tells, instead of ending the process; a second Ctrl-C ends it.
void CatchInterrupts();
bool Interrupted();

}  // namespace roundup::host
