// Texts of store packages that the registry names by their resource.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/filesystem.h"
#include "platform/registry.h"

namespace roundup {

// The text that a source such as "@{FullName?ms-resource://Name/Resources/AppName}" names, in the user's language or
// the package's default one. The package's folder is that of the user's repository; a path of an index in place of the
// full name is understood, too. Nothing for another form, an unknown package, or an index that cannot be read. Reads
// nothing but files of the machine. Every thread may call; throws std::bad_alloc.
std::optional<std::u16string> FindPackageText(std::u16string_view source, IFileSystem& files, IRegistry& registry);

}  // namespace roundup
