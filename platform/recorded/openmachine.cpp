#include "platform/recorded/openmachine.h"

#include <new>

#include "platform/recorded/machinesources.h"
#include "utility/utf.h"

namespace roundup {

namespace {

using Loader = SourceStatus (*)(const std::shared_ptr<HostFolder>&, const OpenOptions&, MachineParts&);

Loader Recognise(HostFolder& folder) {
    SourceKind kind = SourceKind::Other;
    std::uint64_t size = 0;
    const auto is = [&](const char* path, SourceKind wanted) {
        return folder.Query(path, kind, size) == kErrorSuccess && kind == wanted;
    };
    if (is("machine.ini", SourceKind::File)) return LoadRecordedFolder;
    if (is("system.reg", SourceKind::File) && is("drive_c", SourceKind::Folder)) return LoadWineSource;
    if (FindBelow(folder, {"Windows", "System32", "config", "SOFTWARE"}, SourceKind::File)) return LoadOfflineVolume;
    return nullptr;
}

SourceStatus OpenFolder(const std::string& path, const char* what, std::unique_ptr<HostFolder>& folder) {
    if (HostFolder::Open(path, folder) == kErrorSuccess) return std::nullopt;
    return SourceError{path, SourceError::Place::None, 0, what};
}

// The two real folders, and the name of the program, which is that of the running one.
SourceStatus OpenProcessFolders(const OpenOptions& options, MachineParts& parts) {
    const std::string program = HostProgramPath();
    const std::size_t cut = program.find_last_of("/\\");
    std::string name = program.substr(cut == std::string::npos ? 0 : cut + 1);
    if (const std::size_t dot = name.rfind('.'); dot != std::string::npos && dot != 0) name.resize(dot);
    if (!name.empty()) parts.programName = FromUtf8(name);
    parts.sinks = {options.debug, options.output};

    if (SourceStatus status =
            OpenFolder(HostTempFolder(), "the folder for temporary files cannot be opened", parts.tempFolder)) {
        return status;
    }
    if (parts.hostFolder) return std::nullopt;
    if (!options.hostFolder.empty()) {
        return OpenFolder(options.hostFolder, "the host folder cannot be opened", parts.hostFolder);
    }
    if (cut != std::string::npos) {
        return OpenFolder(program.substr(0, cut), "the folder of the program cannot be opened", parts.hostFolder);
    }
    return std::nullopt;
}

SourceStatus OpenParts(const OpenOptions& options, MachineParts& parts) {
    std::unique_ptr<HostFolder> opened;
    if (SourceStatus status = OpenFolder(options.folder, "there is no such folder, or it cannot be opened", opened)) {
        return status;
    }
    const std::shared_ptr<HostFolder> folder = std::move(opened);
    const Loader load = Recognise(*folder);
    if (load == nullptr) {
        return SourceError{options.folder, SourceError::Place::None, 0,
                           "is no machine: it has neither machine.ini (recorded folder), nor system.reg and drive_c "
                           "(Wine prefix), nor Windows/System32/config/SOFTWARE (offline Windows volume)"};
    }
    if (SourceStatus status = load(folder, options, parts)) return status;
    return OpenProcessFolders(options, parts);
}

}  // namespace

std::unique_ptr<Machine> OpenRecordedMachine(const OpenOptions& options, SourceError& error) {
    try {
        MachineParts parts;
        if (SourceStatus status = OpenParts(options, parts)) {
            error = std::move(*status);
            return nullptr;
        }
        return std::make_unique<RecordedMachine>(std::move(parts));
    } catch (const std::bad_alloc&) {
        error = {options.folder, SourceError::Place::None, 0, "there is not enough memory for this machine"};
        return nullptr;
    }
}

}  // namespace roundup
