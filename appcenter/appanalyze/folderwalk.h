// A walk through folders, breadth first, so that their depth costs heap and no stack.
#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>

#include "utility/casemap.h"
#include "utility/filesearch.h"
#include "utility/ownedstring.h"

namespace roundup {

// True when the directories are equal or one lies in the other, ignoring case.
bool IsRelated(std::u16string_view a, std::u16string_view b) noexcept;

// A path that no application can have to itself, an empty one included.
bool IsSystemPath(const OwnedString& path);

// Used by one thread. What the standard library throws for want of memory goes through.
class FolderWalk {
  public:
    // Longer paths are not walked by those that have the limit.
    static constexpr std::size_t kLongestWalked = 517;

    bool IsRelatedToQueued(std::u16string_view path) const noexcept;
    // True when the directory was not met before by this walk; it is then.
    bool Enter(std::u16string_view path);
    // Queues the directory that the last Enter took in.
    void Queue(std::u16string_view path);

    // Goes through the queue. onFile(path, size) hears of each file and answers false to end the walk; the path is
    // zero-terminated and changes afterwards. enters(path) says whether a directory below is walked too. Folders that
    // lead elsewhere are not followed, and what cannot be listed is passed over.
    template <class OnFile, class Enters>
    void Run(std::size_t longest, OnFile onFile, Enters enters) {
        for (; m_next < m_queue.size(); ++m_next) {
            std::u16string_view folder = m_queue[m_next];
            if (folder.size() > longest) continue;
            if (!folder.empty() && (folder.back() == u'\\' || folder.back() == u'/')) folder.remove_suffix(1);
            m_path.assign(folder).append(u"\\*");
            const std::size_t length = folder.size() + 1;
            for (FileSearch search(m_path.c_str()); search.Next();) {
                m_path.resize(length);
                m_path.append(search.Name());
                if (!search.IsFolder()) {
                    if (!onFile(m_path.c_str(), search.Entry().size)) return;
                } else if (!search.IsReparseFolder() && enters(m_path.c_str()) && Enter(m_path)) {
                    Queue(m_path);
                }
            }
        }
    }

  private:
    std::deque<std::u16string> m_met;  // elements stay where they are
    std::unordered_set<std::u16string_view, NoCaseHash, NoCaseEqual> m_index;
    std::deque<std::u16string_view> m_queue;  // of m_met
    std::size_t m_next = 0;
    std::u16string m_path;
};

}  // namespace roundup
