// Registry exports: whatever the bytes, the reader ends in a message or in a registry that can be walked.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"

namespace {

// Lists the keys below one, as deep as the stack of a test allows, and checks their order.
void Walk(roundup::IRegistry& registry, roundup::KeyHandle parent, int depth) {
    using namespace roundup;
    if (depth == 40) return;
    char16_t name[256];
    char16_t before[256] = {};
    for (std::uint32_t i = 0;; ++i) {
        std::uint32_t length = 256;
        const Win32Error error = registry.EnumKey(parent, i, name, length);
        if (error == kErrorNoMoreItems) return;
        if (error != kErrorSuccess) std::abort();
        if (i != 0 && CompareFolded(before, {name, length}) > 0) std::abort();
        std::u16string_view(name, length + 1).copy(before, 256);
        // A name with a zero in it opens another key, at worst its own parent.
        if (std::u16string_view(name).size() != length) continue;
        KeyHandle key = 0;
        if (registry.OpenKey(parent, name, kKeyRead, key) != kErrorSuccess) continue;
        Walk(registry, key, depth + 1);
        registry.CloseKey(key);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    roundup::RegistryStore store;
    const auto status = roundup::ParseRegText(store, std::as_bytes(std::span(data, size)), "fuzz.reg");
    if (status && status->Text().empty()) std::abort();
    roundup::RecordedRegistry registry(store);
    for (const roundup::KeyHandle root : {roundup::kHkeyLocalMachine, roundup::kHkeyUsers}) Walk(registry, root, 0);
    return 0;
}
