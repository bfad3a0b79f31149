#include "appcenter/appreggather/classcache.h"

#include <utility>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

CClassCache::CClassCache() {
    ForEachHive([this](KeyHandle root, bool view64) { AtBoundary([&] { ScanClasses(root, view64); }, [] {}); });
}

void CClassCache::ScanClasses(KeyHandle root, bool view64) {
    CWFYRegKey key;
    if (Failed(key.Open(root, u"SOFTWARE\\Classes", view64, false))) return;
    SubKeyReader reader(key, view64);
    if (m_handled.Count() == 0) m_handled.Reserve(key.KeyCount());
    ForEachSubKey(key, [&](const OwnedString& name) {
        if (m_handled.Find(name) != TextIndex::kNone) return true;
        switch (name.View().front()) {
            case u'.':
                ScanExtension(reader, name);
                break;
            case u'*':
                ScanHandlers(reader, name, view64);
                break;
            default:
                ScanClass(reader, name);
                break;
        }
        return true;
    });
}

void CClassCache::Enter(CMultiMap& map, OwnedString key, std::u16string_view name) {
    if (key.IsEmpty()) return;
    std::uint32_t number = m_handled.Find(name);
    if (number == TextIndex::kNone) {
        OwnedString copy(name);
        if (copy.IsEmpty()) return;
        number = m_handled.Add(std::move(copy)).first;
    }
    map.Add(std::move(key), m_handled.Text(number));
}

void CClassCache::ScanExtension(SubKeyReader& reader, const OwnedString& name) {
    OwnedString value;
    if (reader.Read(name, {}, value) != DefaultRead::Read) return;
    Enter(m_extensionsByProgId, std::move(value), name);
    if (reader.Read(name, u"PersistentHandler", value) != DefaultRead::Read) return;
    Enter(m_extensionsByHandler, std::move(value), name);
    if (Failed(reader.Open(name, u"OpenWithProgIds"))) return;
    for (RegValueView progId;;) {
        const ResultCode rc = reader.Key().EnumValueView(progId);
        if (Small(rc) == SmallCode::NoMoreItems) return;
        if (Succeeded(rc)) Enter(m_extensionsByProgId, OwnedString(progId.Name()), name);
    }
}

void CClassCache::ScanClass(SubKeyReader& reader, const OwnedString& name) {
    OwnedString value;
    switch (reader.Read(name, u"shell\\open\\command", value)) {
        case DefaultRead::Read:
            if (!value.IsEmpty()) ExpandPath(value);
            Enter(m_classesByCommand, std::move(value), name);
            break;
        case DefaultRead::CannotOpen:
            if (reader.Read(name, u"CLSID", value) == DefaultRead::Read) Enter(m_classesById, std::move(value), name);
            break;
        case DefaultRead::CannotRead:
            break;
    }
}

void CClassCache::ScanHandlers(SubKeyReader& reader, const OwnedString& name, bool view64) {
    if (Failed(reader.Open(name, u"shellex\\ContextMenuHandlers"))) return;
    SubKeyReader handlers(reader.Key(), view64);
    OwnedString classId;
    ForEachSubKey(reader.Key(), [&](const OwnedString& handler) {
        const DefaultRead read = handlers.Read(handler, {}, classId);
        if (read == DefaultRead::Read) Enter(m_classesById, std::move(classId), handler);
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
