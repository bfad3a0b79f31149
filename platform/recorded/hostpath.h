// Whole files and folders of the computer that the process runs on, named by paths of its own, UTF-8. Links are
// followed, other than through HostFolder. Operations answer 0 or an errno number (errno.h); all threads may call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/filesource.h"

namespace roundup {

// size in bytes, 0 for all but files.
int HostQueryPath(const std::string& path, SourceKind& kind, std::uint64_t& size);
// Whether there is something of that name, be it a link that leads nowhere.
bool HostPathExists(const std::string& path) noexcept;
// The path from the root on, without links, "." and "..", with "/" between its parts.
int HostRealPath(const std::string& path, std::string& real);
// The names in a folder, in the system's order, without "." and "..".
int HostListNames(const std::string& folder, std::vector<std::string>& names);
// Reads from the start of a file; done is below size when the file ends before.
int HostReadFile(const std::string& path, void* buffer, std::size_t size, std::size_t& done);
// The folder that holds the last part of a path, by name: whatever a link of that name leads to.
std::string HostFolderAbove(std::string_view path);

}  // namespace roundup
