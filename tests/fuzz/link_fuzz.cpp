// Reads arbitrary bytes as a link file, and its descriptor, if it has one. The seeds are links of LinkWriter
// (tests/support/linkwriter.h): one with every kind of path, one that is advertised.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/recorded/links/linkfile.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace roundup;
    LinkFile link;
    if (!ParseLinkFile(ByteView(std::as_bytes(std::span(data, size))), link)) return 0;
    // No text is longer than the file, nor has more characters than its length field can count.
    for (const std::u16string* text : {&link.description, &link.workingDirectory, &link.arguments, &link.iconPath}) {
        if (text->size() > size || text->size() > 0xFFFF || text->find(u'\0') != std::u16string::npos) std::abort();
    }
    std::u16string product, feature, component;
    if (ParseDescriptor(link.descriptor, product, feature, component) && product.size() != 38) std::abort();
    return 0;
}
