// The library that reads hives is one of Linux. On Windows an offline volume is no source.
#include "platform/recorded/registry/registrysources.h"

namespace roundup {

SourceStatus MountHive(RegistryStore&, const std::string& file, std::u16string_view) {
    return SourceError{file, SourceError::Place::None, 0, "registry hives cannot be read on Windows"};
}

}  // namespace roundup
