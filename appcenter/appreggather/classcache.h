// The file classes and extensions of the machine, by the programs and COM classes that serve them.
#pragma once

#include <string_view>

#include "appcenter/appreggather/multimap.h"
#include "appcenter/appreggather/textindex.h"
#include "platform/registry.h"

namespace roundup {

class CApp;

class SubKeyReader;
struct RegGatherResults;

// ProcessWide<CClassCache>() is the one of the machine: read once by its constructor, only asked from then on.
class CClassCache {
  public:
    CClassCache();
    CClassCache(const CClassCache&) = delete;
    CClassCache& operator=(const CClassCache&) = delete;

    // Adds the classes that the application's files open and those of results.ClassIds, with their extensions. The
    // scan of COM has to have filled ClassIds.
    void FindClassItems(const CApp& app, RegGatherResults& results) const;

  private:
    struct Pairs;
    struct Hive;

    void ScanClasses(KeyHandle root, bool view64);
    static void ScanName(SubKeyReader& reader, std::u16string_view name, bool view64, Hive& hive);
    static void ScanExtension(SubKeyReader& reader, std::u16string_view name, Hive& hive);
    static void ScanClass(SubKeyReader& reader, std::u16string_view name, Hive& hive);
    static void ScanHandlers(SubKeyReader& reader, std::u16string_view name, bool view64, Hive& hive);
    // Enters the names among those that no later hive is read for, and the pairs in the map.
    void Enter(CMultiMap& map, Pairs& pairs);

    CMultiMap m_classesByCommand;
    CMultiMap m_classesById;  // and shell extension handlers
    CMultiMap m_extensionsByProgId;
    CMultiMap m_extensionsByHandler;
    TextIndex m_handled;  // owns the values of the four maps
};

}  // namespace roundup
