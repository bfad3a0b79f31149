// The stored form of a store package: a flat little-endian record without padding.
//
//     magic, length of the whole record, texts, numbers and flags in the order of the fields, icon, gathered size,
//     files, names of extra folders, paths of data folders, dependencies
//
// A text is a byte count and so many bytes of UTF-16 with the terminator; 0 stands for null. The length is written
// last, so that a record that was cut short has none.
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>

#include "appcenter/app/filerecord.h"
#include "appcenter/app/recordreader.h"
#include "appcenter/app/recordwriter.h"
#include "appcenter/appx/appx.h"
#include "utility/boundary.h"

namespace roundup {
namespace {

template <class Sink>
void PutTexts(Sink& sink, const CStringSet& texts) {
    sink.Put(static_cast<std::uint32_t>(texts.size()));
    for (const OwnedString& text : texts) sink.PutText(text);
}

template <class Sink>
void PutLists(Sink& sink, const CAppx& package) {
    sink.Put(static_cast<std::uint32_t>(package.m_listFiles.size()));
    for (const auto& file : package.m_listFiles) PutFile(sink, *file);
    PutTexts(sink, package.ExtraFolder);
    PutTexts(sink, package.DataFolder);
    sink.Put(static_cast<std::uint32_t>(package.Dependency.size()));
    for (const PackageDependency& needed : package.Dependency) {
        sink.PutText(needed.name);
        sink.Put(needed.minVersion);
    }
}

template <class Sink>
bool PutPackage(Sink& sink, const CAppx& package) {
    sink.Put(kPackageMagic);
    sink.Put(std::uint32_t{0});
    sink.PutText(package.m_wzDisplayName);
    sink.PutText(package.m_wzInstallDate);
    sink.Put(package.m_ullSize);
    for (const OwnedString* text : {&package.m_wzPackageName, &package.m_wzPackageFullName,
                                    &package.m_wzPackageFamilyName, &package.m_wzPublisherId, &package.m_wzPublisher}) {
        sink.PutText(*text);
    }
    sink.Put(package.m_ullVersion);
    sink.PutText(package.m_wzArchitecture);
    sink.Put(package.m_bIsFramework);
    for (const OwnedString* text :
         {&package.m_wzInstallLocal, &package.m_wzRealInstallLocal, &package.m_wzPackagesFolder}) {
        sink.PutText(*text);
    }
    sink.Put(package.m_dwDeviceMinVersion);
    sink.Put(package.m_dwDeviceMaxVersionTested);
    sink.PutText(package.m_wzIcon);
    sink.Put(package.m_dwIconDataSize);
    sink.PutBytes(package.m_pIconData);
    sink.Put(package.m_ullGatheredSize);
    PutLists(sink, package);
    sink.Patch(sizeof kPackageMagic, static_cast<std::uint32_t>(sink.Position()));
    return sink.Ok();
}

ResultCode ReadIcon(RecordReader& reader, CAppx& package) {
    std::uint32_t size = 0;
    std::span<const std::byte> bytes;
    if (auto rc = reader.Read(size); Failed(rc)) return Pass(rc);
    if (auto rc = reader.ReadBytes(size, bytes); Failed(rc)) return Pass(rc);
    package.m_pIconData.assign(bytes.begin(), bytes.end());
    package.m_dwIconDataSize = size;
    return kSuccess;
}

ResultCode ReadHead(RecordReader& reader, CAppx& package) {
    const auto texts = [&reader](std::initializer_list<OwnedString*> fields) -> ResultCode {
        for (OwnedString* text : fields) {
            if (auto rc = reader.ReadText(*text, false); Failed(rc)) return Pass(rc);
            if (text->IsEmpty()) text->Reset();
        }
        return kSuccess;
    };
    if (auto rc = texts({&package.m_wzDisplayName, &package.m_wzInstallDate}); Failed(rc)) return PassQuiet(rc);
    if (auto rc = reader.Read(package.m_ullSize); Failed(rc)) return Pass(rc);
    if (auto rc = texts({&package.m_wzPackageName, &package.m_wzPackageFullName, &package.m_wzPackageFamilyName,
                         &package.m_wzPublisherId, &package.m_wzPublisher});
        Failed(rc)) {
        return PassQuiet(rc);
    }
    if (auto rc = reader.Read(package.m_ullVersion); Failed(rc)) return Pass(rc);
    if (auto rc = texts({&package.m_wzArchitecture}); Failed(rc)) return PassQuiet(rc);
    if (auto rc = reader.Read(package.m_bIsFramework); Failed(rc)) return Pass(rc);
    if (auto rc = texts({&package.m_wzInstallLocal, &package.m_wzRealInstallLocal, &package.m_wzPackagesFolder});
        Failed(rc)) {
        return PassQuiet(rc);
    }
    if (auto rc = reader.Read(package.m_dwDeviceMinVersion); Failed(rc)) return Pass(rc);
    if (auto rc = reader.Read(package.m_dwDeviceMaxVersionTested); Failed(rc)) return Pass(rc);
    return texts({&package.m_wzIcon});
}

ResultCode ReadFiles(RecordReader& reader, CAppx& package) {
    std::uint32_t count = 0;
    if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
    for (; count > 0; --count) {
        std::unique_ptr<CWFYFile> file(new (std::nothrow) CWFYFile);
        if (file == nullptr) return Fail(SmallCode::ObjectAllocation);
        if (auto rc = ReadFile(reader, *file); Failed(rc)) return Pass(rc);
        if (file->IsTemporary()) {
            file->dwFlags |= FileFlags::kStaysOnDisk;
            return Fail(SmallCode::BadArgument, file->dwType);
        }
        package.m_listFiles.push_back(std::move(file));
    }
    return kSuccess;
}

ResultCode ReadTexts(RecordReader& reader, CStringSet& texts) {
    std::uint32_t count = 0;
    if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
    for (; count > 0; --count) {
        OwnedString text;
        if (auto rc = reader.ReadText(text, false); Failed(rc)) return Pass(rc);
        if (!text.IsEmpty()) texts.Add(text);
    }
    return kSuccess;
}

ResultCode ReadDependencies(RecordReader& reader, CAppx& package) {
    std::uint32_t count = 0;
    if (auto rc = reader.Read(count); Failed(rc)) return Pass(rc);
    for (; count > 0; --count) {
        PackageDependency needed;
        if (auto rc = reader.ReadText(needed.name, false); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(needed.minVersion); Failed(rc)) return Pass(rc);
        package.Dependency.push_back(std::move(needed));
    }
    return kSuccess;
}

}  // namespace

std::uint32_t CAppx::GetSize() const {
    RecordCounter counter;
    if (!PutPackage(counter, *this) || counter.Position() > std::numeric_limits<std::uint32_t>::max()) return 0;
    return static_cast<std::uint32_t>(counter.Position());
}

ResultCode CAppx::Serialize(std::byte* buffer, std::uint32_t size, std::uint32_t& count) const {
    count = 0;
    if (buffer == nullptr) return Fail(SmallCode::GeneralFailure);
    RecordWriter writer(buffer, size);
    const bool written = PutPackage(writer, *this);
    count = static_cast<std::uint32_t>(writer.Position());
    if (!written) return Fail(SmallCode::GeneralFailure, size);
    return kSuccess;
}

ResultCode CAppx::ReSerialize(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) {
    count = 0;
    if (buffer == nullptr) return Fail(SmallCode::BadArgument);
    return AtBoundary([&] { return ReadRecord(buffer, size, count); },
                      [] { return Fail(SmallCode::ObjectAllocation); });
}

ResultCode CAppx::ReadRecord(const std::byte* buffer, std::uint32_t size, std::uint32_t& count) {
    RecordReader reader({buffer, size}, SmallCode::GeneralFailure);
    std::uint32_t magic = 0;
    std::uint32_t total = 0;
    const auto read = [&]() -> ResultCode {
        if (auto rc = reader.Read(magic); Failed(rc)) return Pass(rc);
        if (magic != kPackageMagic) return Fail(SmallCode::BadArgument, magic);
        if (auto rc = reader.Read(total); Failed(rc)) return Pass(rc);
        if (total == 0) return Fail(SmallCode::BadArgument);
        if (!reader.EndAt(total)) return Fail(SmallCode::GeneralFailure, total);
        if (auto rc = ReadHead(reader, *this); Failed(rc)) return Pass(rc);
        if (auto rc = ReadIcon(reader, *this); Failed(rc)) return Pass(rc);
        if (auto rc = reader.Read(m_ullGatheredSize); Failed(rc)) return Pass(rc);
        if (auto rc = ReadFiles(reader, *this); Failed(rc)) return Pass(rc);
        if (auto rc = ReadTexts(reader, ExtraFolder); Failed(rc)) return Pass(rc);
        if (auto rc = ReadTexts(reader, DataFolder); Failed(rc)) return Pass(rc);
        return ReadDependencies(reader, *this);
    };
    auto rc = read();
    count = static_cast<std::uint32_t>(reader.Position());
    return rc;
}

}  // namespace roundup
