// Counting and writing the stored form of an application.
#include <limits>

#include "appcenter/app/app.h"
#include "appcenter/app/filerecord.h"
#include "appcenter/app/recordformat.h"
#include "appcenter/app/recordwriter.h"
#include "utility/boundary.h"
#include "utility/stringcontainers.h"

namespace roundup {

namespace {

// The count is that of the list even when a file without a path writes nothing: such a file is never added.
template <class Sink>
void PutFilesAndDirectories(Sink& sink, const CApp& app) {
    const GatheredItems& gathered = app.Gathered();
    sink.Put(static_cast<std::uint32_t>(gathered.Files.size()));
    for (const auto& file : gathered.Files) PutFile(sink, *file);
    sink.Put(static_cast<std::uint32_t>(gathered.Directories.size()));
    for (const OwnedString& directory : gathered.Directories) sink.PutText(directory);
}

template <class Sink>
void PutIcon(Sink& sink, const CApp& app) {
    const std::uint32_t size = app.pIconData != nullptr ? app.dwIconDataSize : 0;
    sink.Put(size);
    sink.PutBytes({app.pIconData.get(), size});
}

template <class Sink>
bool PutApp(Sink& sink, const CApp& app, std::uint32_t depth);

template <class Sink>
bool PutSubApps(Sink& sink, const CApp& app, std::uint32_t depth) {
    sink.Put(static_cast<std::uint32_t>(app.SubApps.size()));
    for (const RefPtr<IApp>& sub : app.SubApps) {
        if (!sub) return false;
        const auto* const own = dynamic_cast<const CApp*>(sub.Get());
        if (own == nullptr) {
            sink.PutForeign(*sub);
        } else if (depth == kMaxSubAppDepth || !PutApp(sink, *own, depth + 1)) {
            return false;
        }
    }
    return true;
}

// False when the record cannot be: the application, or one below it, has no name or lies too deep, or the sink is full.
template <class Sink>
bool PutApp(Sink& sink, const CApp& app, std::uint32_t depth) {
    if (app.pwszName.IsEmpty()) return false;
    const std::uint64_t start = sink.Position();
    sink.Put(kAppMagic);
    sink.Put(std::uint32_t{0});
    sink.PutText(app.pwszName);
    sink.PutText(app.pwszKeyString);
    sink.Put(app.llGatheredSize);
    sink.Put(app.llEstimatedSize);
    sink.Put(app.ProductCode.bytes);
    sink.Put(app.qwFlags);
    for (const OwnedString* text :
         {&app.pwszInstallLoc, &app.pwszVersion, &app.pwszPublisher, &app.pwszType, &app.pwszTypeDes}) {
        sink.PutText(*text);
    }
    PutIcon(sink, app);
    PutFilesAndDirectories(sink, app);
    if (!sink.Ok() || !PutSubApps(sink, app, depth)) return false;
    for (const OwnedString* text :
         {&app.pwszInstallDate, &app.pwszMsiPath, &app.pwszRealInstallLoc, &app.pwszUnInstallProgram,
          &app.pwszIconProgram, &app.pwszOriginalInstallLoc, &app.pwszParentKeyName}) {
        sink.PutText(*text);
    }
    sink.Patch(start + sizeof kAppMagic, static_cast<std::uint32_t>(sink.Position() - start));
    return sink.Ok();
}

}  // namespace

std::uint32_t CApp::GetSize() const {
    RecordCounter counter;
    if (!PutApp(counter, *this, 0) || counter.Position() > std::numeric_limits<std::uint32_t>::max()) return 0;
    return static_cast<std::uint32_t>(counter.Position());
}

ResultCode CApp::Serialize(std::byte* buffer, std::uint32_t size, std::uint32_t& count) const {
    count = 0;
    if (buffer == nullptr) return Fail(SmallCode::GeneralFailure);
    RecordWriter writer(buffer, size);
    const bool written = AtBoundary([&] { return PutApp(writer, *this, 0); }, [] { return false; });
    count = static_cast<std::uint32_t>(writer.Position());
    if (!written) return Fail(SmallCode::GeneralFailure, size);
    return kSuccess;
}

}  // namespace roundup
