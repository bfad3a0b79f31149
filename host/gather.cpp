#include "host/gather.h"

#include <cstdio>

#include "host/complain.h"
#include "host/textout.h"

namespace roundup::host {

int Gather(const Options& options, const Found& found) {
    IApp& app = Catalogue::Writable(*found.app);
    const ResultCode rc = app.Gather(nullptr, nullptr);
    const auto result = static_cast<std::uint32_t>(Small(rc));
    const bool written = WriteOut(options.format == Format::Json ? GatherJson(app, result) : GatherText(app));
    if (!written || std::fflush(stdout) != 0) return Complain(kOutputFailed);
    std::string message;
    const std::string& folder = options.store;
    if (!folder.empty() && !(KeepStores(app, folder, message) && KeepWritten(folder, message)))
        return Complain(message);
    if (Failed(rc)) return Complain("the gather failed with code " + std::to_string(result) + " (the log tells more)");
    return kExitSuccess;
}

}  // namespace roundup::host
