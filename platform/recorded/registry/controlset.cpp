// What the kernel does at start with the SYSTEM hive.
#include <cstring>
#include <mutex>
#include <new>

#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registry/sourcefile.h"
#include "platform/recorded/registry/storedkeys.h"

namespace roundup {

namespace {

constexpr std::uint32_t kHighestControlSet = 999;

std::u16string ControlSetName(std::uint32_t number) {
    std::u16string name = u"ControlSet";
    for (const std::uint32_t unit : {100U, 10U, 1U}) name += static_cast<char16_t>(u'0' + number / unit % 10);
    return name;
}

}  // namespace

SourceStatus LinkCurrentControlSet(RegistryStore& store) {
    try {
        const std::lock_guard guard(store.Lock());
        RegistryTree& tree = store.Tree();
        StoredKeys keys(store);
        RegistryNode* const system = keys.Find(u"HKEY_LOCAL_MACHINE\\SYSTEM");
        RegistryNode* const select = system != nullptr ? keys.FindBelow(*system, u"Select") : nullptr;
        const RegistryValue* const current =
            select != nullptr ? tree.FindValue(*select, tree.Fold(u"Current")) : nullptr;
        std::uint32_t number = 0;
        if (current == nullptr || current->size != sizeof(number)) return {};
        std::memcpy(&number, current->data, sizeof(number));
        const FoldedName name = tree.Fold(u"CurrentControlSet");
        if (number > kHighestControlSet || tree.FindChild(*system, name) != nullptr) return {};
        RegistryNode& link = tree.MakeChild(*system, name);
        const std::u16string target = u"\\Registry\\Machine\\System\\" + ControlSetName(number);
        tree.SetValue(link, tree.Fold(u"SymbolicLinkValue"), kRegLink, target.data(),
                      static_cast<std::uint32_t>(target.size() * sizeof(char16_t)));
        link.link = true;
        store.Changed();
        return {};
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault("SYSTEM");
    }
}

}  // namespace roundup
