// The COM classes, type libraries and interfaces of the machine, and what links them.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "appcenter/appreggather/multimap.h"
#include "appcenter/appreggather/textindex.h"
#include "utility/textarena.h"

namespace roundup {

class CApp;
class SubKeyReader;
struct RegGatherResults;

// A record holds the numbers of what it is linked by; TextIndex::kNone for what it does not have. Its own id is the
// text of the number in the index of its kind.
struct CCSLIDInfo {
    std::uint32_t classId = TextIndex::kNone;
    std::uint32_t typeLibrary = TextIndex::kNone;
    std::uint32_t serverPath = TextIndex::kNone;
    std::u16string_view progId;
};
struct CTypelibInfo {
    std::uint32_t id = TextIndex::kNone;
    std::uint32_t path = TextIndex::kNone;
};
struct CInterfaceInfo {
    std::uint32_t id = TextIndex::kNone;
    std::uint32_t typeLibrary = TextIndex::kNone;
    std::uint32_t proxyClass = TextIndex::kNone;
    std::uint32_t proxyClass32 = TextIndex::kNone;
};

// ProcessWide<CComCache>() is the one of the machine: read once by its constructor, only asked from then on. A key
// that cannot be opened adds nothing; the want of memory ends the scan that it happens in.
class CComCache {
  public:
    CComCache();
    CComCache(const CComCache&) = delete;
    CComCache& operator=(const CComCache&) = delete;

    // Adds what the files of the application serve, with all that is linked to it however far away. Costs what it
    // finds, beside the smaller of the two sets of files.
    void FindComItems(const CApp& app, RegGatherResults& results) const;

  private:
    class Closure;

    // The ids and paths that records meet at, with the records that meet there.
    struct PathNode {
        NumberLists::List classes;
        NumberLists::List libraries;
    };
    struct RawPath {
        std::uint32_t path = TextIndex::kNone;  // its number in m_paths
    };
    struct LibraryNode {
        std::uint32_t library = TextIndex::kNone;
        NumberLists::List classes;
        NumberLists::List interfaces;
    };
    struct ClassNode {
        std::uint32_t record = TextIndex::kNone;
        NumberLists::List interfaces;  // those whose proxy it is
    };

    void ScanClasses(bool view64);
    void ScanTypeLibraries(bool view64);
    void ScanInterfaces(bool view64);
    // Numbers paths as those that they are after their expansion; kNone for what is empty then.
    void NumberPaths(TextColumn& paths);

    std::vector<CCSLIDInfo> m_classes;
    std::vector<CTypelibInfo> m_libraries;
    std::vector<CInterfaceInfo> m_interfaces;
    TextTable<PathNode> m_paths;          // all server and type library paths
    TextTable<LibraryNode> m_libraryIds;  // also those that only classes and interfaces name
    TextTable<ClassNode> m_classIds;      // also those that only interfaces name
    TextIndex m_interfaceIds;
    NumberLists m_links;
    TextArena m_progIds;
    // While the machine is read: paths as the registry has them, since many classes share one server.
    TextTable<RawPath> m_rawPaths;
};

}  // namespace roundup
