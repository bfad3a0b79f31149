// Readers of the files in which registries are kept: text exports, the files of a Wine prefix, hives.
//
// Each fills a store and answers what is wrong with the file, if anything: the file, the line or offset, and what was
// found there. What was read up to the fault stays in the store, which is of no use then. They do not throw: want of
// memory is told like a fault. File names are paths on this computer, UTF-8.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "platform/recorded/registry/registrystore.h"
#include "platform/recorded/sourceerror.h"

namespace roundup {

// A text export of the Windows registry editor: "Windows Registry Editor Version 5.00", UTF-16LE with a mark or UTF-8
// with or without one. Values of a later file win. Deletions are carried out.
SourceStatus LoadRegText(RegistryStore& store, const std::string& file);
// All files of the folder whose name ends in .reg, in the order of their names. A folder that does not exist holds
// none.
SourceStatus LoadRegTextFolder(RegistryStore& store, const std::string& folder);
// The same of text in memory; name stands for the file in messages.
SourceStatus ParseRegText(RegistryStore& store, std::span<const std::byte> text, const std::string& name);

// One of the files system.reg, user.reg and userdef.reg of a Wine prefix ("WINE REGISTRY Version 2"). The file says
// itself where its keys belong; the user that user.reg names becomes the user of the store.
SourceStatus LoadWineText(RegistryStore& store, const std::string& file);
SourceStatus ParseWineText(RegistryStore& store, std::span<const std::byte> text, const std::string& name);
// The registry of a whole prefix. Sets the store's layout, so the store must be empty. A prefix may lack user.reg and
// userdef.reg, but not system.reg.
SourceStatus LoadWinePrefix(RegistryStore& store, const std::string& folder);

// A hive with the transaction logs beside it, those that there are.
struct HiveFiles {
    std::string file;
    std::vector<std::string> logs = {};
};
enum class HiveState : std::uint8_t {
    Whole,
    Completed,  // a write had not ended; the logs told the rest
    Incomplete  // a write had not ended, and no log tells the rest: it is read as it is
};
// Mounts a hive (SOFTWARE, SYSTEM, SAM, NTUSER.DAT, UsrClass.dat, ...) at a key, such as
// "HKEY_LOCAL_MACHINE\\SOFTWARE"; the key's former content goes. The file stays open as long as the store lives and is
// read where keys are asked for; a key at which it is damaged answers error 1015. What logs tell is applied to a copy
// in memory. On Windows hives are not supported, which is told as a fault.
SourceStatus MountHive(RegistryStore& store, const HiveFiles& files, std::u16string_view path, HiveState& state);
// Makes HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet the control set that Select\Current names. Nothing happens when
// that is not recorded or when the key exists.
SourceStatus LinkCurrentControlSet(RegistryStore& store);

}  // namespace roundup
