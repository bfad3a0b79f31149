#include "appcenter/appreggather/comcache.h"

#include <algorithm>
#include <utility>

#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

namespace {

// Calls scan(reader, id) for each subkey of the machine's key, and makes room for them. A hive lists a name once: only
// the second pass can meet one that is there already, which isKnown(id) tells.
template <class Ids, class Records, class IsKnown, class Scan>
void ScanKey(const char16_t* path, bool view64, Ids& ids, Records& records, IsKnown isKnown, Scan scan) {
    CWFYRegKey key;
    if (Failed(key.Open(kHkeyLocalMachine, path, view64, false))) return;
    if (!view64) ids.Reserve(key.KeyCount()), records.reserve(key.KeyCount());
    SubKeyReader reader(key, view64);
    ForEachSubKey(key, [&](OwnedString& id) {
        if (!view64 || !isKnown(id)) scan(reader, id);
        return true;
    });
}

// The default value of the key "first" below the id; only when that key cannot be opened, that of "second".
void ReadEither(SubKeyReader& reader, const OwnedString& id, std::u16string_view first, OwnedString& text,
                std::u16string_view second, OwnedString& instead) {
    if (reader.Read(id, first, text) == DefaultRead::CannotOpen) (void)reader.Read(id, second, instead);
}

}  // namespace

CComCache::CComCache() {
    for (const bool view64 : {false, true}) {
        if (view64 && !Is64BitOS()) break;
        AtBoundary([&] { ScanClasses(view64); }, [] {});
        AtBoundary([&] { ScanTypeLibraries(view64); }, [] {});
        AtBoundary([&] { ScanInterfaces(view64); }, [] {});
    }
    m_rawPaths = {};
}

std::uint32_t CComCache::PathNumber(OwnedString& text) {
    if (text.IsEmpty()) return TextIndex::kNone;
    if (const std::uint32_t known = m_rawPaths.Find(text); known != TextIndex::kNone) return m_rawPaths[known];
    OwnedString path(text.View());
    const std::uint32_t raw = m_rawPaths.Add(std::move(text)).first;
    m_rawPaths[raw] = TextIndex::kNone;
    ExpandPath(path);
    return m_rawPaths[raw] = m_paths.AddOrNone(std::move(path));
}

void CComCache::ScanClasses(bool view64) {
    const auto isKnown = [this](const OwnedString& id) {
        const std::uint32_t known = m_classIds.Find(id);
        return known != TextIndex::kNone && m_classIds[known].record != TextIndex::kNone;
    };
    ScanKey(u"SOFTWARE\\Classes\\CLSID", view64, m_classIds, m_classes, isKnown,
            [this](SubKeyReader& reader, OwnedString& id) { ScanClass(reader, id); });
}

void CComCache::ScanClass(SubKeyReader& reader, OwnedString& id) {
    OwnedString library;
    OwnedString server;
    (void)reader.Read(id, u"TypeLib", library);
    ReadEither(reader, id, u"InprocServer32", server, u"LocalServer32", server);
    CCSLIDInfo info;
    (void)reader.Read(id, u"ProgID", info.progId);

    info.classId = m_classIds.AddSpelled(std::move(id));
    info.typeLibrary = m_libraryIds.AddOrNone(std::move(library));
    info.serverPath = PathNumber(server);
    const auto number = static_cast<std::uint32_t>(m_classes.size());
    m_classes.push_back(std::move(info));
    const CCSLIDInfo& added = m_classes.back();
    m_classIds[added.classId].record = number;
    if (added.typeLibrary != TextIndex::kNone) m_links.Add(m_libraryIds[added.typeLibrary].classes, number);
    if (added.serverPath != TextIndex::kNone) m_links.Add(m_paths[added.serverPath].classes, number);
}

void CComCache::ScanTypeLibraries(bool view64) {
    const auto isKnown = [this](const OwnedString& id) {
        const std::uint32_t known = m_libraryIds.Find(id);
        return known != TextIndex::kNone && m_libraryIds[known].library != TextIndex::kNone;
    };
    ScanKey(u"SOFTWARE\\Classes\\TypeLib", view64, m_libraryIds, m_libraries, isKnown,
            [&](SubKeyReader& reader, OwnedString& id) { ScanTypeLibrary(reader, view64, id); });
}

// The first version and its first locale stand for the library.
void CComCache::ScanTypeLibrary(SubKeyReader& reader, bool view64, OwnedString& id) {
    OwnedString version;
    OwnedString locale;
    OwnedString path;
    if (Succeeded(reader.Open(id, {})) && Succeeded(reader.Key().EnumKey(version)) && !version.IsEmpty() &&
        Succeeded(reader.Key().Open(reader.Key().GetKeyHandle(), version.Get(), view64, false)) &&
        Succeeded(reader.Key().EnumKey(locale)) && !locale.IsEmpty()) {
        SubKeyReader platforms(reader.Key(), view64);
        (void)platforms.Read(locale, u"win32", path);
        if (path.IsEmpty()) (void)platforms.Read(locale, u"win64", path);
    }
    CTypelibInfo info;
    info.id = m_libraryIds.AddSpelled(std::move(id));
    info.path = PathNumber(path);
    const auto number = static_cast<std::uint32_t>(m_libraries.size());
    m_libraries.push_back(info);
    m_libraryIds[info.id].library = number;
    if (info.path != TextIndex::kNone) m_links.Add(m_paths[info.path].libraries, number);
}

void CComCache::ScanInterfaces(bool view64) {
    const auto isKnown = [this](const OwnedString& id) { return m_interfaceIds.Find(id) != TextIndex::kNone; };
    ScanKey(u"SOFTWARE\\Classes\\Interface", view64, m_interfaceIds, m_interfaces, isKnown,
            [this](SubKeyReader& reader, OwnedString& id) { ScanInterface(reader, id); });
}

void CComCache::ScanInterface(SubKeyReader& reader, OwnedString& id) {
    OwnedString library;
    OwnedString proxy;
    OwnedString proxy32;
    (void)reader.Read(id, u"TypeLib", library);
    ReadEither(reader, id, u"ProxyStubClsid", proxy, u"ProxyStubClsid32", proxy32);
    CInterfaceInfo info;
    info.typeLibrary = m_libraryIds.AddOrNone(std::move(library));
    info.proxyClass = m_classIds.AddOrNone(std::move(proxy));
    info.proxyClass32 = m_classIds.AddOrNone(std::move(proxy32));
    info.id = m_interfaceIds.Add(std::move(id)).first;
    const auto number = static_cast<std::uint32_t>(m_interfaces.size());
    m_interfaces.push_back(info);
    if (info.typeLibrary != TextIndex::kNone) m_links.Add(m_libraryIds[info.typeLibrary].interfaces, number);
    for (const std::uint32_t proxyClass : {info.proxyClass, info.proxyClass32}) {
        if (proxyClass != TextIndex::kNone) m_links.Add(m_classIds[proxyClass].interfaces, number);
    }
}

}  // namespace roundup
