#include "tests/support/samplemachine.h"

#include <vector>

#include "appcenter/appeunm/appmanager.h"
#include "appcenter/appfile/iwfyfile.h"
#include "platform/recorded/openmachine.h"
#include "utility/boundary.h"

namespace roundup {

namespace {

void GatherOne(CAppManager& manager, std::uint32_t number, CStringSet& paths) {
    IApp* found = nullptr;
    if (Failed(manager.GetApp(&found, number))) return;
    const auto app = RefPtr<IApp>::Adopt(found);
    Ignore(app->Gather(nullptr, nullptr), u"what it found counts");
    std::vector<IWFYFile*> files;
    CStringVec directories;
    app->GetFilesAndDirectories(files, directories);
    for (const IWFYFile* file : files) {
        if (file->GetType() >= FileType::kOrdinary) paths.Add(file->GetPath());
    }
    app->UnGather();
}

}  // namespace

std::unique_ptr<Machine> OpenSampleMachine() {
    OpenOptions options;
    options.folder = ROUNDUP_SOURCE_DIR "/samples/machine";
    SourceError error;
    return OpenRecordedMachine(options, error);
}

CStringSet GatherWholeCatalogue() {
    CStringSet paths;
    AtBoundary(
        [&] {
            const auto manager = RefPtr<CAppManager>::Adopt(new CAppManager);
            const auto goOn = [](std::uint32_t, void*) -> std::uint8_t { return 1; };
            Ignore(manager->LoadAppEx(goOn, nullptr, false), u"what it found is gathered");
            for (std::uint32_t i = 0; i < manager->GetCount(); ++i) {
                AtBoundary([&] { GatherOne(*manager, i, paths); }, [] {});
            }
        },
        [] {});
    return paths;
}

}  // namespace roundup
