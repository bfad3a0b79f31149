// Reads arbitrary bytes as a resource index of a package and asks for a text in it. The seeds are indexes of PriWriter
// (tests/support/priwriter.h): the plain form, and one with the longer schema, large tables and data items.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/recorded/resources/prifile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace roundup;
    PriFile file;
    if (!file.Open(ByteView(std::as_bytes(std::span(data, size))))) return 0;
    for (const char16_t* path : {u"Resources/AppName", u"Resources", u"AppName"}) {
        const auto text = file.FindText(path, u"de-DE");
        if (text && text->size() > size) std::abort();
    }
    return 0;
}
