// The file classes and extensions of the machine, by the programs and COM classes that serve them.
#pragma once

#include "appcenter/appreggather/multimap.h"
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
    void ScanClasses(KeyHandle root, bool view64);
    void ScanExtension(SubKeyReader& reader, const OwnedString& name);
    void ScanClass(SubKeyReader& reader, const OwnedString& name);
    void ScanHandlers(SubKeyReader& reader, const OwnedString& name, bool view64);
    // Enters the name among those that no later hive is read for, and the pair in the map.
    void Enter(CMultiMap& map, OwnedString key, std::u16string_view name);

    CMultiMap m_classesByCommand;
    CMultiMap m_classesById;  // and shell extension handlers
    CMultiMap m_extensionsByProgId;
    CMultiMap m_extensionsByHandler;
    TextIndex m_handled;  // owns the values of the four maps
};

}  // namespace roundup
