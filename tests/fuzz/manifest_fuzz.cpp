// Reads arbitrary bytes as a package manifest and walks all that came of it.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

#include "appcenter/enumappx/manifest.h"
#include "appcenter/enumappx/manifesttext.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace roundup;
    std::u16string text;
    if (!DecodeManifest(std::as_bytes(std::span(data, size)), text)) return 0;
    const std::size_t length = text.size();
    ManifestDocument document;
    if (!document.Parse(std::move(text))) return 0;
    std::size_t characters = 0;
    std::size_t depth = 0;
    for (const ManifestNode* node = &document; node != nullptr && node->HasChildren(); node = node->children.back()) {
        characters += std::u16string_view(node->name).size() + std::u16string_view(node->text).size();
        for (const ManifestAttribute& each : node->attributes) {
            characters += std::u16string_view(each.name).size() + std::u16string_view(each.value).size();
        }
        ++depth;
    }
    if (characters > length || depth > length) std::abort();
    return 0;
}
