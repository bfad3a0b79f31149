#include "appcenter/appreggather/apppathcache.h"

#include "appcenter/app/app.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"

namespace roundup {

CAppPathCache::CAppPathCache() {
    ForEachHive([this](KeyHandle root, bool view64) { AtBoundary([&] { Scan(root, view64); }, [] {}); });
}

void CAppPathCache::Scan(KeyHandle root, bool view64) {
    CWFYRegKey key;
    constexpr const char16_t* kAppPaths = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\App Paths";
    if (Failed(key.Open(root, kAppPaths, view64, false))) return;
    SubKeyReader reader(key, view64);
    ForEachSubKey(key, [&](std::u16string_view name) {
        std::u16string_view value;
        (void)reader.Read(name, {}, value);
        OwnedString file(value);
        if (!file.IsEmpty()) ExpandPath(file);
        if (file.IsEmpty()) return true;
        const auto [number, isNew] = m_files.Add(file);
        if (isNew) m_files[number] = OwnedString(name);
        return true;
    });
}

void CAppPathCache::FindAppPaths(const CApp& app, RegGatherResults& results) const {
    ForEachInBoth(app.Gathered().FilePaths, m_files,
                  [&](std::uint32_t file) { results.AppPathNames.Add(m_files[file]); });
}

}  // namespace roundup
