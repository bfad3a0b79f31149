#include "msianalyzer/typelibinformation.h"

#include <algorithm>
#include <iterator>

#include "msianalyzer/cachefile.h"
#include "msianalyzer/systemfolderproperty.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"
#include "utility/formattext.h"
#include "utility/reg.h"

namespace roundup {

namespace {

constexpr std::u16string_view kEveryVersion = u"0.0";

bool IsAbsent(ResultCode rc) noexcept { return Win32Of(rc) == kErrorFileNotFound; }

struct ByLibrary {
    using Referrer = CTypeLibInformation::Referrer;
    bool operator()(const Referrer& a, const Referrer& b) const noexcept { return a.first < b.first; }
    bool operator()(const Referrer& a, std::u16string_view b) const noexcept { return a.first < b; }
    bool operator()(std::u16string_view a, const Referrer& b) const noexcept { return a < b.first; }
};

struct ClassReferrers : CTypeLibInformation {
    ClassReferrers() : CTypeLibInformation(Kind::Classes) {}
};
struct InterfaceReferrers : CTypeLibInformation {
    InterfaceReferrers() : CTypeLibInformation(Kind::Interfaces) {}
};

}  // namespace

CTypeLibInformation::CTypeLibInformation(Kind kind)
    : m_kind(static_cast<std::uint32_t>(kind)), m_cacheLock(u"Global\\kv_ctypelibinformation_cache") {
    const auto noMemory = [] { return Fail(SmallCode::ObjectAllocation); };
    Ignore(AtBoundary([this] { return Load(); }, noMemory), u"what was found so far stays");
    Sort();
}

void CTypeLibInformation::AddReferrers(Identifiers& ids, std::u16string_view libId, std::u16string_view version,
                                       bool view64) const {
    const std::span<const Referrer> entries = Entries(view64);
    const auto [first, last] = std::equal_range(entries.begin(), entries.end(), libId, ByLibrary());
    for (auto entry = first; entry != last; ++entry) {
        const CTypeLibInfo& info = entry->second;
        if (version != kEveryVersion && version != info.version) continue;
        ids.emplace(info.path.substr(info.path.find(u'\\') + 1));
    }
}

ResultCode CTypeLibInformation::Load() {
    std::u16string path;
    if (const ResultCode rc = CacheFilePath(FormatText(u"%d%s", m_kind, u"TypeLib.ini"), path); Failed(rc)) {
        return Pass(rc);
    }
    if (PathExists(path.c_str())) return ReadCache(path.c_str());
    if (const ResultCode rc = GetArchitectureBits(m_bits); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = ReadReferrers(false); Failed(rc)) return Pass(rc);
    if (m_bits == 64) {
        if (const ResultCode rc = ReadReferrers(true); Failed(rc)) return Pass(rc);
    }
    Sort();
    return WriteCache(path.c_str());
}

ResultCode CTypeLibInformation::ReadReferrers(bool view64) {
    std::u16string path = m_kind == static_cast<std::uint32_t>(Kind::Classes) ? u"CLSID" : u"Interface";
    CWFYRegKey key;
    if (const ResultCode rc = key.Open(kHkeyClassesRoot, path.c_str(), view64, false); Failed(rc)) {
        return IsAbsent(rc) ? kSuccess : Pass(rc);
    }
    path += u'\\';
    const std::size_t length = path.size();
    for (OwnedString name;;) {
        const ResultCode rc = key.EnumKey(name);
        if (Small(rc) == SmallCode::NoMoreItems) return kSuccess;
        if (Failed(rc)) return Pass(rc);
        path.resize(length);
        path.append(name);
        if (const ResultCode read = ReadReferrer(path, view64); Failed(read)) return Pass(read);
    }
}

ResultCode CTypeLibInformation::ReadReferrer(std::u16string& path, bool view64) {
    const std::size_t length = path.size();
    CWFYRegKey key;
    const ResultCode opened = key.Open(kHkeyClassesRoot, path.append(u"\\TypeLib").c_str(), view64, false);
    path.resize(length);
    if (Failed(opened)) return IsAbsent(opened) ? kSuccess : Pass(opened);
    OwnedString texts[2];  // library, version
    const char16_t* const names[] = {u"", u"Version"};
    std::u16string_view kept[3];
    for (std::size_t i = 0; i < std::size(names); ++i) {
        if (const ResultCode rc = key.GetString(names[i], texts[i]); Failed(rc)) {
            return IsAbsent(rc) ? kSuccess : Pass(rc);
        }
    }
    const std::u16string_view found[] = {texts[0], texts[1], path};
    for (std::size_t i = 0; i < std::size(found); ++i) {
        if (const ResultCode rc = Keep(found[i], kept[i]); Failed(rc)) return Pass(rc);
    }
    m_entries[view64 ? 1 : 0].emplace_back(kept[0], CTypeLibInfo(kept[1], kept[2]));
    return kSuccess;
}

ResultCode CTypeLibInformation::ReadCache(const char16_t* path) {
    std::vector<std::byte> bytes;
    if (const ResultCode rc = ReadCacheFile(path, m_cacheLock, bytes); Failed(rc)) return Pass(rc);
    CacheReader reader(bytes);
    if (const ResultCode rc = reader.Header(kReferrersMagic); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = reader.Number(m_kind); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = reader.Number(m_bits); Failed(rc)) return Pass(rc);
    while (reader.More()) {
        if (const ResultCode rc = ReadGroup(reader); Failed(rc)) return Pass(rc);
    }
    return reader.End();
}

ResultCode CTypeLibInformation::ReadGroup(CacheReader& reader) {
    std::uint32_t view = 0;
    std::uint32_t count = 0;
    std::u16string_view library;
    if (const ResultCode rc = reader.Number(view); Failed(rc)) return Pass(rc);
    if (view >= std::size(m_entries)) return Fail(SmallCode::BadArgument, view);
    if (const ResultCode rc = reader.Text(m_texts, library); Failed(rc)) return Pass(rc);
    if (const ResultCode rc = reader.Number(count); Failed(rc)) return Pass(rc);
    // A count that lies ends at the end of the bytes.
    for (; count > 0; --count) {
        std::u16string_view version;
        std::u16string_view path;
        if (const ResultCode rc = reader.Text(m_texts, version); Failed(rc)) return Pass(rc);
        if (const ResultCode rc = reader.Text(m_texts, path); Failed(rc)) return Pass(rc);
        m_entries[view].emplace_back(library, CTypeLibInfo(version, path));
    }
    return kSuccess;
}

ResultCode CTypeLibInformation::WriteCache(const char16_t* path) {
    CacheWriter writer(kReferrersMagic);
    writer.Number(m_kind);
    writer.Number(m_bits);
    for (std::uint32_t view = 0; view < std::size(m_entries); ++view) {
        const std::vector<Referrer>& entries = m_entries[view];
        for (auto first = entries.begin(); first != entries.end();) {
            const auto last = std::upper_bound(first, entries.end(), first->first, ByLibrary());
            writer.Number(view);
            writer.Text(first->first);
            writer.Number(static_cast<std::uint32_t>(last - first));
            for (; first != last; ++first) writer.Text(first->second.version), writer.Text(first->second.path);
        }
    }
    std::span<const std::byte> bytes;
    if (const ResultCode rc = writer.Finish(bytes); Failed(rc)) return Pass(rc);
    return WriteCacheFile(path, m_cacheLock, bytes);
}

ResultCode CTypeLibInformation::Keep(std::u16string_view text, std::u16string_view& kept) {
    char16_t* const room = m_texts.Room(text.size());
    if (room == nullptr) return Fail(SmallCode::ObjectAllocation);
    text.copy(room, text.size());
    kept = m_texts.Keep(text.size());
    return kSuccess;
}

// Those of one library stay in the order in which they were found.
void CTypeLibInformation::Sort() noexcept {
    for (std::vector<Referrer>& entries : m_entries) std::stable_sort(entries.begin(), entries.end(), ByLibrary());
}

void GetClassesOfTypeLib(CTypeLibInformation::Identifiers& ids, std::u16string_view libId, std::u16string_view version,
                         bool view64) {
    ProcessWide<ClassReferrers>().AddReferrers(ids, libId, version, view64);
}

void GetInterfacesOfTypeLib(CTypeLibInformation::Identifiers& ids, std::u16string_view libId,
                            std::u16string_view version, bool view64) {
    ProcessWide<InterfaceReferrers>().AddReferrers(ids, libId, version, view64);
}

}  // namespace roundup
