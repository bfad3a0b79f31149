#include "appcenter/appreggather/servicecache.h"

#include "appcenter/app/app.h"
#include "appcenter/appreggather/reggatherresults.h"
#include "appcenter/appreggather/scankeys.h"
#include "utility/boundary.h"
#include "utility/pathtext.h"
#include "utility/specialfolders.h"

namespace roundup {

CServiceCache::CServiceCache() {
    AtBoundary([this] { Scan(); }, [] {});
}

void CServiceCache::Scan() {
    CWFYRegKey key;
    if (Failed(key.Open(kHkeyLocalMachine, u"SYSTEM\\CurrentControlSet\\services", false, false))) return;
    SubKeyReader reader(key, false);
    ForEachSubKey(key, [&](std::u16string_view name) {
        std::u16string_view value;
        (void)reader.Read(name, {}, value, u"ImagePath");
        OwnedString file(value);
        if (!file.IsEmpty()) ExpandPath(file);
        if (file.IsEmpty() || IsUnderSystem(file, true) || IsUnderSystemX86(file, true)) return true;
        const bool isDriver = EndsWithNoCase(file, u".sys");
        const auto service = static_cast<std::uint32_t>(m_services.size());
        m_services.push_back({OwnedString(name), isDriver});
        m_links.Add(m_files[m_files.Add(file).first], service);
        return true;
    });
}

void CServiceCache::FindServices(const CApp& app, RegGatherResults& results, bool bWithDrivers) const {
    ForEachInBoth(app.Gathered().FilePaths, m_files, [&](std::uint32_t file) {
        m_links.ForEach(m_files[file], [&](std::uint32_t number) {
            const Service& service = m_services[number];
            if (bWithDrivers || !service.isDriver) results.ServiceNames.Add(service.name);
        });
    });
}

}  // namespace roundup
