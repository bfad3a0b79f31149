// The closure over the COM records.
//
// Records never name each other: a class names its file, its own id and its type library, and whatever else names the
// same text is linked to it. So the closure goes over these texts: each path, library id and class id that is reached
// is taken up once, adds all records that stand at it, and each new record leads on to the texts that it names. That
// costs what it finds, rings and a library that thousands of interfaces name included: taking each record's neighbours
// from the record would go through those thousands once for each of them.
#include <cstdint>
#include <utility>
#include <vector>

#include "appcenter/app/app.h"
#include "appcenter/appreggather/comcache.h"
#include "appcenter/appreggather/reggatherresults.h"

namespace roundup {

class CComCache::Closure {
  public:
    explicit Closure(const CComCache& cache)
        : m_cache(cache),
          m_paths(cache.m_paths.Count()),
          m_libraryIds(cache.m_libraryIds.Count()),
          m_classIds(cache.m_classIds.Count()),
          m_interfaces(cache.m_interfaces.size()) {}

    void ReachPath(std::uint32_t path) { Reach(m_paths, m_pathsToDo, path); }
    void Run(RegGatherResults& results);

  private:
    static void Reach(std::vector<bool>& reached, std::vector<std::uint32_t>& toDo, std::uint32_t number) {
        if (number == TextIndex::kNone || reached[number]) return;
        reached[number] = true;
        toDo.push_back(number);
    }
    static bool TakeOne(std::vector<std::uint32_t>& toDo, std::uint32_t& number) {
        if (toDo.empty()) return false;
        number = toDo.back();
        toDo.pop_back();
        return true;
    }
    // A class or a library is reached when its id is, so that the texts alone have to be marked.
    void ReachClass(std::uint32_t record) {
        if (record != TextIndex::kNone) Reach(m_classIds, m_classesToDo, m_cache.m_classes[record].classId);
    }
    void ReachLibrary(std::uint32_t record) {
        if (record != TextIndex::kNone) Reach(m_libraryIds, m_librariesToDo, m_cache.m_libraries[record].id);
    }
    void ReachInterface(std::uint32_t record) {
        if (m_interfaces[record]) return;
        m_interfaces[record] = true;
        const CInterfaceInfo& info = m_cache.m_interfaces[record];
        m_results->InterfaceIds.Add(m_cache.m_interfaceIds.Text(info.id));
        Reach(m_libraryIds, m_librariesToDo, info.typeLibrary);
        Reach(m_classIds, m_classesToDo, info.proxyClass);
        Reach(m_classIds, m_classesToDo, info.proxyClass32);
    }
    void DoPath(std::uint32_t path) {
        const PathNode& node = m_cache.m_paths[path];
        m_cache.m_links.ForEach(node.classes, [&](std::uint32_t record) { ReachClass(record); });
        m_cache.m_links.ForEach(node.libraries, [&](std::uint32_t record) { ReachLibrary(record); });
    }
    void DoClassId(std::uint32_t id) {
        const ClassNode& node = m_cache.m_classIds[id];
        m_cache.m_links.ForEach(node.interfaces, [&](std::uint32_t record) { ReachInterface(record); });
        if (node.record == TextIndex::kNone) return;
        const CCSLIDInfo& info = m_cache.m_classes[node.record];
        m_results->ClassIds.Add(m_cache.m_classIds.Text(id));
        if (!info.progId.empty()) m_results->ProgIds.Add(info.progId);
        ReachPath(info.serverPath);
        Reach(m_libraryIds, m_librariesToDo, info.typeLibrary);
    }
    void DoLibraryId(std::uint32_t id) {
        const LibraryNode& node = m_cache.m_libraryIds[id];
        m_cache.m_links.ForEach(node.classes, [&](std::uint32_t record) { ReachClass(record); });
        m_cache.m_links.ForEach(node.interfaces, [&](std::uint32_t record) { ReachInterface(record); });
        if (node.library == TextIndex::kNone) return;
        m_results->TypeLibIds.Add(m_cache.m_libraryIds.Text(id));
        ReachPath(m_cache.m_libraries[node.library].path);
    }

    const CComCache& m_cache;
    RegGatherResults* m_results = nullptr;
    std::vector<bool> m_paths;
    std::vector<bool> m_libraryIds;
    std::vector<bool> m_classIds;
    std::vector<bool> m_interfaces;
    std::vector<std::uint32_t> m_pathsToDo;
    std::vector<std::uint32_t> m_librariesToDo;
    std::vector<std::uint32_t> m_classesToDo;
};

void CComCache::Closure::Run(RegGatherResults& results) {
    m_results = &results;
    for (std::uint32_t number = 0;;) {
        if (TakeOne(m_pathsToDo, number)) {
            DoPath(number);
        } else if (TakeOne(m_classesToDo, number)) {
            DoClassId(number);
        } else if (TakeOne(m_librariesToDo, number)) {
            DoLibraryId(number);
        } else {
            return;
        }
    }
}

void CComCache::FindComItems(const CApp& app, RegGatherResults& results) const {
    std::vector<std::uint32_t> hits;
    ForEachInBoth(app.Gathered().FilePaths, m_paths, [&](std::uint32_t path) { hits.push_back(path); });
    if (hits.empty()) return;
    Closure closure(*this);
    for (const std::uint32_t path : hits) closure.ReachPath(path);
    closure.Run(results);
}

}  // namespace roundup
