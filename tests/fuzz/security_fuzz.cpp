// Security descriptors and values of the SAM: whatever the bytes, the identifiers found lie in them.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>

#include "platform/recorded/registry/hivecells.h"
#include "platform/recorded/security/samvalues.h"
#include "platform/recorded/security/wellknownaccounts.h"

namespace {

void Check(const std::vector<roundup::Sid>& sids, std::size_t bytes) {
    std::size_t used = 0;
    for (const roundup::Sid& sid : sids) {
        used += sid.Size();
        (void)roundup::FindWellKnownAccount(sid);
        if (!sid.Text().starts_with(u"S-1-")) std::abort();
    }
    // None is told twice, so that they cannot take more room than there is.
    if (used > bytes) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
    const roundup::ByteView view(bytes);
    Check(roundup::ReadAccessList(view), size);
    Check(roundup::ReadAliasMembers(view), size);
    if (const auto sid = roundup::ReadDomainSid(view)) Check({*sid}, size);
    const roundup::HiveCells cells(bytes);
    for (std::size_t cell = 0; cell < size && cell < 256; cell += 8) {
        Check(roundup::ReadAccessList(roundup::ByteView(cells.ReadSecurity(cell))), size);
    }
    return 0;
}
