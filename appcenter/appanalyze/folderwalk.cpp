#include "appcenter/appanalyze/folderwalk.h"

#include <algorithm>

#include "utility/specialfolders.h"

namespace roundup {

bool IsRelated(std::u16string_view a, std::u16string_view b) noexcept {
    if (a.size() < b.size()) std::swap(a, b);
    if (!StartsWithNoCase(a, b)) return false;
    return a.size() == b.size() || a[b.size()] == u'\\';
}

bool IsSystemPath(const OwnedString& path) { return path.IsEmpty() || IsSystemRoot(path); }

bool FolderWalk::IsRelatedToQueued(std::u16string_view path) const noexcept {
    return std::any_of(m_queue.begin(), m_queue.end(),
                       [path](std::u16string_view queued) { return IsRelated(path, queued); });
}

bool FolderWalk::Enter(std::u16string_view path) {
    if (m_index.contains(path)) return false;
    m_index.insert(m_met.emplace_back(path));
    return true;
}

void FolderWalk::Queue(std::u16string_view path) { m_queue.push_back(*m_index.find(path)); }

}  // namespace roundup
