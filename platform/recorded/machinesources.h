// The three kinds of folders that a machine is read from, and what they share.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/recorded/hostfs.h"
#include "platform/recorded/openmachine.h"
#include "platform/recorded/recordedmachine.h"

namespace roundup {

// Each fills the parts that the folder itself knows of: settings, registry, files, drives, user. folder is the source.
SourceStatus LoadRecordedFolder(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options,
                                MachineParts& parts);
SourceStatus LoadWineSource(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options, MachineParts& parts);
SourceStatus LoadOfflineVolume(const std::shared_ptr<HostFolder>& folder, const OpenOptions& options,
                               MachineParts& parts);

// The path below folder whose parts are these names in any case, of the kind told; nothing when there is none. The
// exact names come first. Links are not followed.
std::optional<std::string> FindBelow(HostFolder& folder, std::initializer_list<std::string_view> names, SourceKind kind,
                                     std::string path = {});

// Whole content of a file that must not be larger than most bytes.
SourceStatus ReadWhole(HostFolder& folder, const std::string& path, std::uint64_t most, std::string& bytes);

// What a registry of a real Windows, or of Wine, says of the machine: version, computer, processors, architecture.
void ReadSystemSettings(IRegistry& registry, MachineSettings& settings);

// The fault of a user who was asked for and is not the one that the source has.
SourceError WrongUser(const std::string& folder, const std::string& asked, std::u16string_view known);

}  // namespace roundup
