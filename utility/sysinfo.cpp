#include "utility/sysinfo.h"

#include "platform/machine.h"
#include "utility/formattext.h"

namespace roundup {

namespace {

struct ExeFolder {
    ExeFolder() {
        const std::uint32_t length = CurrentMachine().System().GetHostExecutable(path.Data(), path.Size());
        const std::size_t cut = length < path.Size() ? path.View().find_last_of(u"\\/") : std::u16string_view::npos;
        path.Data()[cut != std::u16string_view::npos ? cut : 0] = u'\0';
    }
    FixedText<520> path;
};

// A system that does not know the longer record takes the one without its last members.
constexpr std::uint32_t kVersionRecordSizes[] = {284, 276};

bool AskVersion(ISystem& system, OsVersionInfo& version) {
    for (const std::uint32_t size : kVersionRecordSizes) {
        version = OsVersionInfo{};
        version.size = size;
        if (system.GetVersion(version)) return true;
    }
    return false;
}

}  // namespace

bool Is64BitOS() { return CurrentMachine().System().GetNativeArchitecture() == kArchitectureAmd64; }

bool GetOsVersion(OsVersionInfo& version) {
    ISystem& system = CurrentMachine().System();
    if (!AskVersion(system, version)) return false;
    std::uint32_t major = 0;
    std::uint32_t minor = 0;
    std::uint32_t build = 0;
    if (system.GetNtVersionNumbers(major, minor, build)) {
        version.major = major;
        version.minor = minor;
        version.build = build & 0xFFFF;  // the upper half tells free from checked builds
    }
    return true;
}

const char16_t* GetExeFolder() { return ProcessWide<ExeFolder>().path.Text(); }

bool GetCacheFolder(FixedText<260>& folder) {
    const std::u16string_view host = GetExeFolder();
    if (!host.empty() && FormatText(folder, u"%s\\cache", host)) return true;
    folder.Clear();
    return false;
}

}  // namespace roundup
