#include "msianalyzer/installedcomponents.h"

#include <algorithm>
#include <string>

#include "msianalyzer/cachefile.h"
#include "platform/machine.h"
#include "utility/boundary.h"
#include "utility/fileinfo.h"

namespace roundup {

CInstalledComponents::CInstalledComponents() : m_cacheLock(u"Global\\kv_cinstalledcomponents_cache") {
    const auto noMemory = [] { return Fail(SmallCode::ObjectAllocation); };
    Ignore(AtBoundary([this] { return Load(); }, noMemory), u"what was found so far stays");
    Sort();
}

ResultCode CInstalledComponents::Load() {
    std::u16string path;
    if (const ResultCode rc = CacheFilePath(u"Components.ini", path); Failed(rc)) return Pass(rc);
    if (PathExists(path.c_str())) return ReadCache(path.c_str());
    if (const ResultCode rc = Enumerate(); Failed(rc)) return Pass(rc);
    Sort();
    return WriteCache(path.c_str());
}

ResultCode CInstalledComponents::Enumerate() {
    char16_t component[39] = {};
    for (std::uint32_t index = 0;; ++index) {
        if (CurrentMachine().Installer().EnumComponent(index, component) != kErrorSuccess) return kSuccess;
        if (const ResultCode rc = Add(component); Failed(rc)) return Pass(rc);
    }
}

ResultCode CInstalledComponents::ReadCache(const char16_t* path) {
    std::vector<std::byte> bytes;
    if (const ResultCode rc = ReadCacheFile(path, m_cacheLock, bytes); Failed(rc)) return Pass(rc);
    CacheReader reader(bytes);
    if (const ResultCode rc = reader.Header(kComponentsMagic); Failed(rc)) return Pass(rc);
    while (reader.More()) {
        std::u16string_view component;
        if (const ResultCode rc = reader.Text(m_texts, component); Failed(rc)) return Pass(rc);
        m_components.push_back(component);
        m_index.insert(component);
    }
    return reader.End();
}

ResultCode CInstalledComponents::WriteCache(const char16_t* path) {
    CacheWriter writer(kComponentsMagic);
    for (const std::u16string_view component : m_components) {
        if (!component.empty()) writer.Text(component);
    }
    std::span<const std::byte> bytes;
    if (const ResultCode rc = writer.Finish(bytes); Failed(rc)) return Pass(rc);
    return WriteCacheFile(path, m_cacheLock, bytes);
}

ResultCode CInstalledComponents::Add(std::u16string_view componentId) {
    char16_t* const room = m_texts.Room(componentId.size());
    if (room == nullptr) return Fail(SmallCode::ObjectAllocation);
    componentId.copy(room, componentId.size());
    m_components.push_back(m_texts.Keep(componentId.size()));
    m_index.insert(m_components.back());
    return kSuccess;
}

void CInstalledComponents::Sort() noexcept {
    std::sort(m_components.begin(), m_components.end());
    m_components.erase(std::unique(m_components.begin(), m_components.end()), m_components.end());
}

const CInstalledComponents& GetInstalledComponents() { return ProcessWide<CInstalledComponents>(); }

}  // namespace roundup
