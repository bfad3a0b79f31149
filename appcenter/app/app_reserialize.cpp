// Reading the stored form of an application back. What is read may be broken or hostile: every field is held against
// the buffer and the record's own length, and no object is made before its bytes are there.
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/app/filerecord.h"
#include "appcenter/app/recordformat.h"
#include "appcenter/app/recordreader.h"
#include "utility/boundary.h"

namespace roundup {

// Fills one application, and by recursion those below it.
//
// The object of a temporary file deletes what its path names. A read that fails must delete nothing: the record may be
// hostile, or the copy of an application whose files are still in use. So these files are marked as staying until the
// outermost record has been read to its end.
class CApp::RecordLoader {
  public:
    static ResultCode LoadWhole(CApp& app, RecordReader& reader) {
        std::vector<CWFYFile*> temporary;
        if (auto rc = RecordLoader(0, temporary).Load(app, reader); Failed(rc)) return PassQuiet(rc);
        for (CWFYFile* file : temporary) file->dwFlags &= ~FileFlags::kStaysOnDisk;
        return kSuccess;
    }

  private:
    RecordLoader(std::uint32_t depth, std::vector<CWFYFile*>& temporary) noexcept
        : m_depth(depth), m_temporary(temporary) {}

    ResultCode Load(CApp& app, RecordReader& reader) {
        std::uint32_t total = 0;
        if (!reader.SkipWord(kAppMagic)) return Fail(SmallCode::BadArgument, reader.Position());
        if (auto rc = reader.Read(total); Failed(rc)) return Pass(rc);
        if (total == 0 || !reader.EndAt(total)) return Fail(SmallCode::BadArgument, total);
        if (auto rc = LoadHead(app, reader); Failed(rc)) return Pass(rc);
        if (auto rc = LoadIcon(app, reader); Failed(rc)) return Pass(rc);
        if (auto rc = LoadFiles(app, reader); Failed(rc)) return Pass(rc);
        if (auto rc = LoadDirectories(app, reader); Failed(rc)) return Pass(rc);
        if (auto rc = LoadSubApps(app, reader); Failed(rc)) return Pass(rc);
        return LoadTail(app, reader);
    }

    static ResultCode LoadHead(CApp& app, RecordReader& reader) {
        if (auto rc = reader.ReadText(app.pwszName, true); Failed(rc)) return Pass(rc);
        if (auto rc = reader.ReadText(app.pwszKeyString, true); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(app.llGatheredSize); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(app.llEstimatedSize); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(app.ProductCode.bytes); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(app.qwFlags); Failed(rc)) return Pass(rc);
        for (OwnedString* text :
             {&app.pwszInstallLoc, &app.pwszVersion, &app.pwszPublisher, &app.pwszType, &app.pwszTypeDes}) {
            if (auto rc = reader.ReadText(*text, false); Failed(rc)) return Pass(rc);
        }
        return kSuccess;
    }

    static ResultCode LoadIcon(CApp& app, RecordReader& reader) {
        std::uint32_t size = 0;
        std::span<const std::byte> bytes;
        if (auto rc = reader.Read(size); Failed(rc)) return Pass(rc);
        if (auto rc = reader.ReadBytes(size, bytes); Failed(rc)) return Pass(rc);
        if (size == 0) return kSuccess;
        std::unique_ptr<std::byte[]> icon(new (std::nothrow) std::byte[size]);
        if (icon == nullptr) return Fail(SmallCode::ObjectAllocation, size);
        std::memcpy(icon.get(), bytes.data(), size);
        app.pIconData = std::move(icon);
        app.dwIconDataSize = size;
        return kSuccess;
    }

    ResultCode LoadFiles(CApp& app, RecordReader& reader) const {
        std::uint32_t count = 0;
        if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
        for (; count > 0; --count) {
            auto file = std::make_unique<CWFYFile>();
            if (auto rc = ReadFile(reader, *file); Failed(rc)) return Pass(rc);
            if (file->IsTemporary()) {
                file->dwFlags |= FileFlags::kStaysOnDisk;
                m_temporary.push_back(file.get());
            }
            GatheredItems& gathered = app.MakeGathered();
            gathered.Files.push_back(std::move(file));
            gathered.KeepStoreFile(*gathered.Files.back());
        }
        return kSuccess;
    }

    static ResultCode LoadDirectories(CApp& app, RecordReader& reader) {
        std::uint32_t count = 0;
        if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
        for (; count > 0; --count) {
            OwnedString directory;
            if (auto rc = reader.ReadText(directory, true); Failed(rc)) return Pass(rc);
            if (!app.MakeGathered().Directories.Add(directory)) return Fail(SmallCode::ObjectAllocation);
        }
        return kSuccess;
    }

    ResultCode LoadSubApps(CApp& app, RecordReader& reader) const {
        std::uint32_t count = 0;
        if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
        if (count > 0 && m_depth == kMaxSubAppDepth) return Fail(SmallCode::BadArgument, count);
        for (; count > 0; --count) {
            RecordReader below(reader.Rest());
            std::span<const std::byte> consumed;
            auto sub = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
            if (!sub) return Fail(SmallCode::ObjectAllocation);
            if (auto rc = RecordLoader(m_depth + 1, m_temporary).Load(*sub, below); Failed(rc)) return Pass(rc);
            if (auto rc = reader.ReadBytes(below.Position(), consumed); Failed(rc)) return Pass(rc);
            app.SubApps.emplace_back(std::move(sub));
        }
        return kSuccess;
    }

    // An older record ends before some of these.
    static ResultCode LoadTail(CApp& app, RecordReader& reader) {
        for (OwnedString* text :
             {&app.pwszInstallDate, &app.pwszMsiPath, &app.pwszRealInstallLoc, &app.pwszUnInstallProgram,
              &app.pwszIconProgram, &app.pwszOriginalInstallLoc, &app.pwszParentKeyName}) {
            if (reader.Left() == 0) return kSuccess;
            if (auto rc = reader.ReadText(*text, false); Failed(rc)) return Pass(rc);
        }
        return kSuccess;
    }

    const std::uint32_t m_depth;  // levels above this record
    std::vector<CWFYFile*>& m_temporary;
};

ResultCode CApp::ReSerialize(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) {
    count = 0;
    if (buffer == nullptr) return Fail(SmallCode::BadArgument);
    RecordReader reader({buffer, size});
    auto rc = AtBoundary([&] { return RecordLoader::LoadWhole(*this, reader); },
                         [] { return Fail(SmallCode::ObjectAllocation); });
    if (Failed(rc)) return Pass(rc);
    count = static_cast<std::uint32_t>(reader.Position());
    return kSuccess;
}

}  // namespace roundup
