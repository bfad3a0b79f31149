#include "appcenter/appreggather/comcache.h"

#include <algorithm>
#include <utility>

#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

namespace {

bool OpenClassesKey(CWFYRegKey& key, const char16_t* path, bool view64) {
    return Succeeded(key.Open(kHkeyLocalMachine, path, view64, false));
}

}  // namespace

// A hive lists a name once: only the second pass can meet one that is there already.
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
    CWFYRegKey key;
    if (!OpenClassesKey(key, u"SOFTWARE\\Classes\\CLSID", view64)) return;
    SubKeyReader reader(key, view64);
    if (!view64) m_classIds.Reserve(key.KeyCount()), m_classes.reserve(key.KeyCount());
    ForEachSubKey(key, [&](OwnedString& id) {
        const std::uint32_t known = view64 ? m_classIds.Find(id) : TextIndex::kNone;
        if (known == TextIndex::kNone || m_classIds[known].record == TextIndex::kNone) ScanClass(reader, id);
        return true;
    });
}

void CComCache::ScanClass(SubKeyReader& reader, OwnedString& id) {
    OwnedString library;
    OwnedString server;
    CCSLIDInfo info;
    (void)reader.Read(id, u"TypeLib", library);
    if (reader.Read(id, u"InprocServer32", server) == DefaultRead::CannotOpen) {
        (void)reader.Read(id, u"LocalServer32", server);
    }
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
    CWFYRegKey key;
    if (!OpenClassesKey(key, u"SOFTWARE\\Classes\\TypeLib", view64)) return;
    SubKeyReader reader(key, view64);
    ForEachSubKey(key, [&](OwnedString& id) {
        const std::uint32_t known = view64 ? m_libraryIds.Find(id) : TextIndex::kNone;
        if (known == TextIndex::kNone || m_libraryIds[known].library == TextIndex::kNone) {
            ScanTypeLibrary(reader, view64, id);
        }
        return true;
    });
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
    CWFYRegKey key;
    if (!OpenClassesKey(key, u"SOFTWARE\\Classes\\Interface", view64)) return;
    SubKeyReader reader(key, view64);
    if (!view64) m_interfaceIds.Reserve(key.KeyCount()), m_interfaces.reserve(key.KeyCount());
    ForEachSubKey(key, [&](OwnedString& id) {
        if (!view64 || m_interfaceIds.Find(id) == TextIndex::kNone) ScanInterface(reader, id);
        return true;
    });
}

void CComCache::ScanInterface(SubKeyReader& reader, OwnedString& id) {
    OwnedString library;
    OwnedString proxy;
    OwnedString proxy32;
    (void)reader.Read(id, u"TypeLib", library);
    if (reader.Read(id, u"ProxyStubClsid", proxy) == DefaultRead::CannotOpen) {
        (void)reader.Read(id, u"ProxyStubClsid32", proxy32);
    }
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
