#include "platform/recorded/installer/installerdatabase.h"

namespace roundup {

// A Windows build links no reader of databases beside the system's own, which reads from real paths alone: databases
// of its recorded machines cannot be opened.
Win32Error OpenInstallerDatabase(IFileSystem&, const char16_t*, std::shared_ptr<IInstallerDatabase>& database) {
    database.reset();
    return kErrorOpenFailed;
}

}  // namespace roundup
