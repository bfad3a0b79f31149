// Ini files from outside: reading ends, a key that was set is read back, removing it leaves its section without it,
// and machine.ini is either read or refused with a line that exists.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/recorded/initext.h"
#include "platform/recorded/machinesettings.h"

namespace {

using namespace roundup;

void Check(bool holds) {
    if (!holds) std::abort();
}

void CheckEdits(std::u16string text, IniEncoding encoding) {
    SetIniKey(text, u"Section", u"Key", u"value");
    const auto section = FindIniSection(text, u"section");
    Check(section.has_value());
    const auto line = FindIniKey(text, *section, u"KEY");
    Check(line && line->value == u"value");
    // What is written is read back the same, but for characters that the encoding does not have. Without a mark the
    // encoding is guessed from the bytes, and zeros among them may mislead.
    IniEncoding again = encoding;
    const std::u16string back = DecodeIni(EncodeIni(text, encoding), again);
    Check(again != encoding || back.size() <= text.size());
    Check(encoding != IniEncoding::Utf8Marked || again == encoding);
    RemoveIniSection(text, u"SECTION");
    RemoveIniKey(text, u"Section", u"Key");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    IniEncoding encoding = IniEncoding::Utf8;
    const std::u16string text = DecodeIni(bytes, encoding);
    IniLine line;
    std::size_t end = 0;
    for (IniLines lines(text); lines.Next(line); end = line.end) Check(line.start == end && line.end > line.start);
    Check(end == text.size());
    CheckEdits(text, encoding);

    MachineSettings settings;
    const SourceStatus status = ReadMachineSettings(bytes, "machine.ini", settings);
    const auto lines = static_cast<std::uint64_t>(
        std::count_if(bytes.begin(), bytes.end(), [](char c) { return c == '\n' || c == '\r'; }));
    if (status) Check(status->position >= 1 && status->position <= lines + 1);
    return 0;
}
