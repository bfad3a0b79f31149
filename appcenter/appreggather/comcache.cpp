#include "appcenter/appreggather/comcache.h"

#include <utility>

#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

namespace {

// The keys of one kind in one view. What is read of them is kept until the last one has been read, and then numbered
// together: one by one, each text would wait for the memory of its index.
class KeyScan {
  public:
    KeyScan(const char16_t* path, bool view64) : m_view64(view64) {
        (void)m_key.Open(kHkeyLocalMachine, path, view64, false);
    }

    // Calls use(reader, id) for the keys that the index does not know, or only as one that others name, in the order of
    // the hive; keeps their ids. hasRecord(number) tells the two kinds of known ids apart.
    template <class HasRecord, class Use>
    void ForEachNew(const TextIndex& index, HasRecord hasRecord, TextColumn& ids, Use use) {
        if (m_key.GetKeyHandle() == 0) return;
        SubKeyReader reader(m_key, m_view64);
        ids.Reserve(m_key.KeyCount());
        ForEachSubKey(m_key, [&](std::u16string_view id) {
            // A hive lists a name once: only the second view meets one that has been read.
            const std::uint32_t number = m_view64 ? index.Find(id) : TextIndex::kNone;
            if (number != TextIndex::kNone && hasRecord(number)) return true;
            use(reader, id);
            Keep(id, ids);
            return true;
        });
    }
    void Keep(std::u16string_view text, TextColumn& column) { column.Add(text.empty() ? text : m_texts.Copy(text)); }
    // Keeps the default value of the key "below" the id, empty without one; false when that key cannot be opened.
    bool Read(SubKeyReader& reader, std::u16string_view id, std::u16string_view below, TextColumn& column) {
        std::u16string_view text;
        const DefaultRead read = reader.Read(id, below, text);
        Keep(text, column);
        return read != DefaultRead::CannotOpen;
    }

  private:
    const bool m_view64;
    CWFYRegKey m_key;
    TextArena m_texts;
};

// A record that names another one is read before that one, and may spell its id otherwise.
template <class Index>
void NumberIds(Index& index, TextColumn& ids) {
    const std::size_t before = index.Count();
    index.Reserve(ids.texts.size());
    index.AddAll(ids);
    for (std::size_t i = 0; i < ids.texts.size(); ++i) {
        if (ids.numbers[i] < before) index.Respell(ids.numbers[i], ids.texts[i]);
    }
}

// Fetches the value of a number that comes soon.
template <class Table>
void FetchAhead(const Table& table, const std::vector<std::uint32_t>& numbers, std::size_t at) {
    constexpr std::size_t kAhead = 8;
    if (at + kAhead < numbers.size()) table.Fetch(numbers[at + kAhead]);
}

// The path that stands for a library: of its first version's first locale. Empty without one.
OwnedString LibraryPath(SubKeyReader& reader, bool view64, std::u16string_view id) {
    OwnedString version;
    OwnedString locale;
    const bool isThere = Succeeded(reader.Open(id, {})) && Succeeded(reader.Key().EnumKey(version)) &&
                         !version.IsEmpty() &&
                         Succeeded(reader.Key().Open(reader.Key().GetKeyHandle(), version.Get(), view64, false)) &&
                         Succeeded(reader.Key().EnumKey(locale)) && !locale.IsEmpty();
    if (!isThere) return {};
    SubKeyReader platforms(reader.Key(), view64);
    std::u16string_view path;
    (void)platforms.Read(locale, u"win32", path);
    if (path.empty()) (void)platforms.Read(locale, u"win64", path);
    return OwnedString(path);
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

void CComCache::NumberPaths(TextColumn& paths) {
    auto raw = static_cast<std::uint32_t>(m_rawPaths.Count());
    m_rawPaths.AddAll(paths);
    for (; raw < m_rawPaths.Count(); ++raw) {
        OwnedString path(m_rawPaths.Text(raw));
        ExpandPath(path);
        m_rawPaths[raw].path = m_paths.AddOrNone(path);
    }
    for (std::uint32_t& number : paths.numbers) {
        if (number != TextIndex::kNone) number = m_rawPaths[number].path;
    }
}

void CComCache::ScanClasses(bool view64) {
    KeyScan scan(u"SOFTWARE\\Classes\\CLSID", view64);
    const auto hasRecord = [this](std::uint32_t id) { return m_classIds[id].record != TextIndex::kNone; };
    TextColumn ids;
    TextColumn libraries;
    TextColumn servers;
    std::vector<std::u16string_view> progIds;
    scan.ForEachNew(m_classIds, hasRecord, ids, [&](SubKeyReader& reader, std::u16string_view id) {
        scan.Read(reader, id, u"TypeLib", libraries);
        std::u16string_view text;
        if (reader.Read(id, u"InprocServer32", text) == DefaultRead::CannotOpen) {
            (void)reader.Read(id, u"LocalServer32", text);
        }
        scan.Keep(text, servers);
        (void)reader.Read(id, u"ProgID", text);
        progIds.push_back(text.empty() ? text : m_progIds.Copy(text));
    });
    NumberIds(m_classIds, ids);
    m_libraryIds.AddAll(libraries);
    NumberPaths(servers);

    m_classes.reserve(m_classes.size() + ids.numbers.size());
    for (std::size_t i = 0; i < ids.numbers.size(); ++i) {
        FetchAhead(m_classIds, ids.numbers, i);
        FetchAhead(m_libraryIds, libraries.numbers, i);
        FetchAhead(m_paths, servers.numbers, i);
        const CCSLIDInfo info{ids.numbers[i], libraries.numbers[i], servers.numbers[i], progIds[i]};
        const auto number = static_cast<std::uint32_t>(m_classes.size());
        m_classes.push_back(info);
        m_classIds[info.classId].record = number;
        if (info.typeLibrary != TextIndex::kNone) m_links.Add(m_libraryIds[info.typeLibrary].classes, number);
        if (info.serverPath != TextIndex::kNone) m_links.Add(m_paths[info.serverPath].classes, number);
    }
}

void CComCache::ScanTypeLibraries(bool view64) {
    KeyScan scan(u"SOFTWARE\\Classes\\TypeLib", view64);
    const auto hasRecord = [this](std::uint32_t id) { return m_libraryIds[id].library != TextIndex::kNone; };
    TextColumn ids;
    TextColumn paths;
    scan.ForEachNew(m_libraryIds, hasRecord, ids, [&](SubKeyReader& reader, std::u16string_view id) {
        scan.Keep(LibraryPath(reader, view64, id), paths);
    });
    NumberIds(m_libraryIds, ids);
    NumberPaths(paths);

    for (std::size_t i = 0; i < ids.numbers.size(); ++i) {
        const auto number = static_cast<std::uint32_t>(m_libraries.size());
        m_libraries.push_back({ids.numbers[i], paths.numbers[i]});
        m_libraryIds[ids.numbers[i]].library = number;
        if (paths.numbers[i] != TextIndex::kNone) m_links.Add(m_paths[paths.numbers[i]].libraries, number);
    }
}

void CComCache::ScanInterfaces(bool view64) {
    KeyScan scan(u"SOFTWARE\\Classes\\Interface", view64);
    const auto hasRecord = [](std::uint32_t) { return true; };  // nothing else names an interface
    TextColumn ids;
    TextColumn libraries;
    TextColumn proxies;
    TextColumn proxies32;
    scan.ForEachNew(m_interfaceIds, hasRecord, ids, [&](SubKeyReader& reader, std::u16string_view id) {
        scan.Read(reader, id, u"TypeLib", libraries);
        if (scan.Read(reader, id, u"ProxyStubClsid", proxies)) {
            scan.Keep({}, proxies32);
        } else {
            scan.Read(reader, id, u"ProxyStubClsid32", proxies32);
        }
    });
    m_interfaceIds.Reserve(ids.texts.size());
    m_interfaceIds.AddAll(ids);
    m_libraryIds.AddAll(libraries);
    m_classIds.AddAll(proxies);
    m_classIds.AddAll(proxies32);

    m_interfaces.reserve(m_interfaces.size() + ids.numbers.size());
    for (std::size_t i = 0; i < ids.numbers.size(); ++i) {
        FetchAhead(m_libraryIds, libraries.numbers, i);
        FetchAhead(m_classIds, proxies.numbers, i);
        FetchAhead(m_classIds, proxies32.numbers, i);
        const CInterfaceInfo info{ids.numbers[i], libraries.numbers[i], proxies.numbers[i], proxies32.numbers[i]};
        const auto number = static_cast<std::uint32_t>(m_interfaces.size());
        m_interfaces.push_back(info);
        if (info.typeLibrary != TextIndex::kNone) m_links.Add(m_libraryIds[info.typeLibrary].interfaces, number);
        for (const std::uint32_t proxyClass : {info.proxyClass, info.proxyClass32}) {
            if (proxyClass != TextIndex::kNone) m_links.Add(m_classIds[proxyClass].interfaces, number);
        }
    }
}

}  // namespace roundup
