// Which classes and interfaces point at a type library: the registry has the link in the other direction alone.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "utility/locks.h"
#include "utility/result.h"
#include "utility/textarena.h"

namespace roundup {

class CacheReader;

// A class or an interface that points at a library.
class CTypeLibInfo {
  public:
    CTypeLibInfo(std::u16string_view libraryVersion, std::u16string_view keyPath) noexcept
        : version(libraryVersion), path(keyPath) {}
    virtual ~CTypeLibInfo() = default;
    CTypeLibInfo(const CTypeLibInfo&) = default;
    CTypeLibInfo& operator=(const CTypeLibInfo&) = default;

    std::u16string_view version;  // of the library, such as u"1.0"
    std::u16string_view path;     // below HKEY_CLASSES_ROOT, such as u"Interface\\{...}"
};

// The referrers of all libraries, from the keys below "CLSID" or "Interface", in both views. Kept in the file
// 0TypeLib.ini or 1TypeLib.ini of the cache folder, which is binary: magic 0x00606002, length of the file, kind, bits,
// then for each library of each view: view, library, number of referrers, version and path of each; a text is its
// bytes with the terminator (32 bits) and the text. A file that is there is believed. Made once for the process, from
// then on only read: any thread.
class CTypeLibInformation {
  public:
    enum class Kind : std::uint32_t { Classes = 0, Interfaces = 1 };
    using Identifiers = std::set<std::u16string, std::less<>>;
    using Referrer = std::pair<std::u16string_view, CTypeLibInfo>;  // by library, ascending

    explicit CTypeLibInformation(Kind kind);
    CTypeLibInformation(const CTypeLibInformation&) = delete;
    CTypeLibInformation& operator=(const CTypeLibInformation&) = delete;

    // Adds the identifiers of those that point at that version of the library; u"0.0" stands for every version.
    void AddReferrers(Identifiers& ids, std::u16string_view libId, std::u16string_view version, bool view64) const;
    std::span<const Referrer> Entries(bool view64) const noexcept { return m_entries[view64 ? 1 : 0]; }

  private:
    ResultCode Load();
    ResultCode ReadReferrers(bool view64);
    ResultCode ReadReferrer(std::u16string& path, bool view64);
    ResultCode ReadCache(const char16_t* path);
    ResultCode ReadGroup(CacheReader& reader);
    ResultCode WriteCache(const char16_t* path);
    ResultCode Keep(std::u16string_view text, std::u16string_view& kept);
    void Sort() noexcept;

    std::uint32_t m_kind;  // as the file has it
    std::uint32_t m_bits = 0;
    TextArena m_texts;
    std::vector<Referrer> m_entries[2];  // by view
    MutexLock m_cacheLock;
};

// From the objects of the process on this machine, which are made at the first call. Any thread.
void GetClassesOfTypeLib(CTypeLibInformation::Identifiers& ids, std::u16string_view libId, std::u16string_view version,
                         bool view64);
void GetInterfacesOfTypeLib(CTypeLibInformation::Identifiers& ids, std::u16string_view libId,
                            std::u16string_view version, bool view64);

}  // namespace roundup
