#include "appcenter/appeunm/appmatch.h"

#include "appcenter/app/app.h"
#include "utility/casemap.h"

namespace roundup {

bool IsKeyAndNameMatch(std::u16string_view key, std::u16string_view name, const CApp& app) noexcept {
    if (key.empty() || !EqualsNoCase(key, app.pwszKeyString)) return false;
    return name.empty() || app.pwszName.IsEmpty() || EqualsNoCase(name, app.pwszName);
}

}  // namespace roundup
