// The library that reads hives is one of Linux. On Windows an offline volume is no source.
#include "platform/recorded/registry/registrysources.h"

namespace roundup {

SourceStatus MountHive(RegistryStore&, const HiveFiles& files, std::u16string_view, HiveState&) {
    return SourceError{files.file, SourceError::Place::None, 0, "registry hives cannot be read on Windows"};
}

}  // namespace roundup
