#include "utility/filesearch.h"

#include "platform/machine.h"

namespace roundup {

FileSearch::FileSearch(const char16_t* pattern)
    : m_files(CurrentMachine().Files()),
      m_error(m_files.FindFirst(pattern, m_find, m_entry)),
      m_pending(m_error == kErrorSuccess) {}

FileSearch::~FileSearch() {
    if (m_error == kErrorSuccess) m_files.FindClose(m_find);
}

bool FileSearch::Next() {
    if (m_error != kErrorSuccess) return false;
    for (;;) {
        if (m_pending) {
            m_pending = false;
        } else if (m_files.FindNext(m_find, m_entry) != kErrorSuccess) {
            return false;
        }
        if (Name() != u"." && Name() != u"..") return true;
    }
}

}  // namespace roundup
