#include "appcenter/appreggather/classcache.h"

#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

struct CClassCache::Pairs {
    TextColumn keys;
    TextColumn names;
};

// What one hive tells, kept until all of it has been read and then entered together: one by one, each text would wait
// for the memory of its index.
struct CClassCache::Hive {
    TextArena texts;
    Pairs classesByCommand;
    Pairs classesById;
    Pairs extensionsByProgId;
    Pairs extensionsByHandler;
    TextIndex handlers;  // a class that has the name of one is not read behind it

    // Nothing happens for a key without text. The name must lie in texts.
    void Add(Pairs& pairs, std::u16string_view key, std::u16string_view name) {
        if (key.empty()) return;
        pairs.keys.Add(texts.Copy(key));
        pairs.names.Add(name);
    }
};

CClassCache::CClassCache() {
    ForEachHive([this](KeyHandle root, bool view64) { AtBoundary([&] { ScanClasses(root, view64); }, [] {}); });
}

void CClassCache::ScanClasses(KeyHandle root, bool view64) {
    CWFYRegKey key;
    if (Failed(key.Open(root, u"SOFTWARE\\Classes", view64, false))) return;
    Hive hive;
    SubKeyReader reader(key, view64);
    const auto has = [](const TextIndex& index, std::u16string_view name) {
        return index.Count() != 0 && index.Find(name) != TextIndex::kNone;
    };
    ForEachSubKey(key, [&](std::u16string_view name) {
        const bool isHandled = has(m_handled, name) || has(hive.handlers, name);
        if (!isHandled) ScanName(reader, hive.texts.Copy(name), view64, hive);
        return true;
    });
    Enter(m_classesByCommand, hive.classesByCommand);
    Enter(m_classesById, hive.classesById);
    Enter(m_extensionsByProgId, hive.extensionsByProgId);
    Enter(m_extensionsByHandler, hive.extensionsByHandler);
}

void CClassCache::ScanName(SubKeyReader& reader, std::u16string_view name, bool view64, Hive& hive) {
    switch (name.front()) {
        case u'.':
            ScanExtension(reader, name, hive);
            break;
        case u'*':
            ScanHandlers(reader, name, view64, hive);
            break;
        default:
            ScanClass(reader, name, hive);
            break;
    }
}

void CClassCache::Enter(CMultiMap& map, Pairs& pairs) {
    m_handled.AddAll(pairs.names);
    map.AddAll(pairs.keys, [&](std::size_t i) { return m_handled.Text(pairs.names.numbers[i]); });
}

void CClassCache::ScanExtension(SubKeyReader& reader, std::u16string_view name, Hive& hive) {
    std::u16string_view value;
    if (reader.Read(name, {}, value) != DefaultRead::Read) return;
    hive.Add(hive.extensionsByProgId, value, name);
    if (reader.Read(name, u"PersistentHandler", value) != DefaultRead::Read) return;
    hive.Add(hive.extensionsByHandler, value, name);
    if (Failed(reader.Open(name, u"OpenWithProgIds"))) return;
    for (RegValueView progId;;) {
        const ResultCode rc = reader.Key().EnumValueView(progId);
        if (Small(rc) == SmallCode::NoMoreItems) return;
        if (Succeeded(rc)) hive.Add(hive.extensionsByProgId, progId.Name(), name);
    }
}

void CClassCache::ScanClass(SubKeyReader& reader, std::u16string_view name, Hive& hive) {
    std::u16string_view value;
    const DefaultRead read = reader.Read(name, u"shell\\open\\command", value);
    if (!value.empty()) {
        OwnedString command(value);
        ExpandPath(command);
        hive.Add(hive.classesByCommand, command, name);
    } else if (read == DefaultRead::CannotOpen && reader.Read(name, u"CLSID", value) == DefaultRead::Read) {
        hive.Add(hive.classesById, value, name);
    }
}

void CClassCache::ScanHandlers(SubKeyReader& reader, std::u16string_view name, bool view64, Hive& hive) {
    if (Failed(reader.Open(name, u"shellex\\ContextMenuHandlers"))) return;
    SubKeyReader handlers(reader.Key(), view64);
    ForEachSubKey(reader.Key(), [&](std::u16string_view handler) {
        std::u16string_view classId;
        const DefaultRead read = handlers.Read(handler, {}, classId);
        if (!classId.empty()) {
            hive.Add(hive.classesById, classId, hive.texts.Copy(handler));
            hive.handlers.Add(handler);
        }
        return read != DefaultRead::CannotOpen;
    });
}

void CClassCache::FindClassItems(const CApp& app, RegGatherResults& results) const {
    const auto addClass = [&](std::u16string_view name) { results.ClassNames.Add(name); };
    const auto addExtension = [&](std::u16string_view name) { results.ExtensionNames.Add(name); };
    m_classesByCommand.ForEachOf(app.Gathered().FilePaths, addClass);
    m_classesById.ForEachOf(results.ClassIds, addClass);
    m_extensionsByProgId.ForEachOf(results.ClassNames, addExtension);
    m_extensionsByHandler.ForEachOf(results.ClassIds, addExtension);
}

}  // namespace roundup
