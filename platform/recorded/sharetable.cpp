#include "platform/recorded/sharetable.h"

#include <algorithm>

#include "platform/filesystem.h"

namespace roundup {

namespace {

bool Allows(std::uint32_t share, std::uint32_t access) noexcept {
    return ((access & kGenericRead) == 0 || (share & kShareRead) != 0) &&
           ((access & kGenericWrite) == 0 || (share & kShareWrite) != 0);
}

}  // namespace

bool ShareTable::Enter(const std::u16string& file, std::uint32_t access, std::uint32_t share) {
    const std::lock_guard guard(m_lock);
    std::vector<Opening>& openings = m_files[file];
    const bool refused = std::any_of(openings.begin(), openings.end(), [&](const Opening& other) {
        return !Allows(other.share, access) || !Allows(share, other.access);
    });
    if (!refused) openings.push_back({access, share});
    return !refused;
}

void ShareTable::Leave(const std::u16string& file, std::uint32_t access, std::uint32_t share) {
    const std::lock_guard guard(m_lock);
    const auto found = m_files.find(file);
    if (found == m_files.end()) return;
    std::vector<Opening>& openings = found->second;
    const auto opening = std::find_if(openings.begin(), openings.end(),
                                      [&](const Opening& one) { return one.access == access && one.share == share; });
    if (opening != openings.end()) openings.erase(opening);
    if (openings.empty()) m_files.erase(found);
}

bool ShareTable::IsOpen(const std::u16string& file) {
    const std::lock_guard guard(m_lock);
    return m_files.contains(file);
}

}  // namespace roundup
