#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "appcenter/appeunm/suitegroup.h"

namespace roundup {
namespace {

constexpr std::uint32_t kLeastBuffer = 0x100000;

// The stored form knows nothing of where applications were found and why they hang where they do. Both trees have the
// same shape.
void CopyOrigins(const CApp& source, CApp& copy) {
    std::vector<std::pair<const CApp*, CApp*>> open{{&source, &copy}};
    while (!open.empty()) {
        const auto [from, to] = open.back();
        open.pop_back();
        to->dwOrigins = from->dwOrigins;
        to->eLinkReason = from->eLinkReason;
        for (std::size_t i = 0; i < std::min(from->SubApps.size(), to->SubApps.size()); ++i) {
            const auto* const subFrom = dynamic_cast<const CApp*>(from->SubApps[i].Get());
            auto* const subTo = dynamic_cast<CApp*>(to->SubApps[i].Get());
            if (subFrom != nullptr && subTo != nullptr) open.emplace_back(subFrom, subTo);
        }
    }
}

ResultCode Copy(const CApp& source, CApp& copy) {
    const std::uint32_t needed = source.GetSize();
    if (needed == 0) return Fail(SmallCode::GeneralFailure);
    const std::uint32_t size = std::max(needed, kLeastBuffer);
    const std::unique_ptr<std::byte[]> buffer(new (std::nothrow) std::byte[size]);
    if (buffer == nullptr) return Fail(SmallCode::BufferAllocation);
    std::uint32_t done = 0;
    if (auto rc = source.Serialize(buffer.get(), size, done); Failed(rc)) return Pass(rc);
    if (auto rc = copy.ReSerialize(buffer.get(), size, done); Failed(rc)) return Pass(rc);
    return kSuccess;
}

}  // namespace

RefPtr<CApp> CloneApp(const CApp& source) {
    auto copy = RefPtr<CApp>::Adopt(new (std::nothrow) CApp);
    if (!copy) return Ignore(Fail(SmallCode::ObjectAllocation), u"the copy is left out"), nullptr;
    if (Failed(Copy(source, *copy))) return nullptr;
    if (copy->pwszMsiPath.IsEmpty() && !source.pwszMsiPath.IsEmpty()) {
        AssignString(copy->pwszMsiPath, source.pwszMsiPath);
    }
    CopyOrigins(source, *copy);
    return copy;
}

}  // namespace roundup
