// Files of a Wine prefix: whatever the bytes, the reader ends in a message or in a registry whose links end.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/recorded/registry/recordedregistry.h"
#include "platform/recorded/registry/registrysources.h"

namespace {

void Walk(roundup::IRegistry& registry, roundup::KeyHandle parent, std::uint32_t view, int depth) {
    using namespace roundup;
    // Links may lead back up, so a walk is as long as its bounds say.
    if (depth == 6) return;
    char16_t name[256];
    for (std::uint32_t i = 0; i < 8; ++i) {
        std::uint32_t length = 256;
        const Win32Error error = registry.EnumKey(parent, i, name, length);
        if (error == kErrorNoMoreItems) return;
        if (error != kErrorSuccess) std::abort();
        // A name that begins with a zero opens its own parent.
        if (name[0] == u'\0') continue;
        KeyHandle key = 0;
        if (registry.OpenKey(parent, name, kKeyRead | view, key) != kErrorSuccess) continue;
        KeyInfo info;
        if (registry.QueryInfo(key, info) != kErrorSuccess) std::abort();
        Walk(registry, key, view, depth + 1);
        registry.CloseKey(key);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    roundup::RegistryStore store;
    const auto status = roundup::ParseWineText(store, std::as_bytes(std::span(data, size)), "fuzz.reg");
    if (status && status->Text().empty()) std::abort();
    roundup::RecordedRegistry registry(store);
    for (const std::uint32_t view : {roundup::kKeyWow64Key64, roundup::kKeyWow64Key32}) {
        for (const roundup::KeyHandle root : {roundup::kHkeyLocalMachine, roundup::kHkeyClassesRoot}) {
            Walk(registry, root, view, 0);
        }
    }
    return 0;
}
