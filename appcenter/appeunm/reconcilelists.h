// The working lists of a reconciliation.
#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "appcenter/app/app.h"
#include "utility/kvobject.h"

namespace roundup {

// Applications of the registry and of the installer's books. While a pass runs, an application that has left the list
// leaves null in its place, so that the positions by which indexes find their way stay.
using CAppList = std::vector<RefPtr<CApp>>;

inline constexpr std::size_t kNoPosition = std::numeric_limits<std::size_t>::max();

// Closes the gaps of a list on every way out of a pass, also when memory ran short.
class GapCloser {
  public:
    explicit GapCloser(CAppList& list) noexcept : m_list(list) {}
    GapCloser(const GapCloser&) = delete;
    GapCloser& operator=(const GapCloser&) = delete;
    ~GapCloser() {
        std::erase_if(m_list, [](const RefPtr<CApp>& app) { return !app; });
    }

  private:
    CAppList& m_list;
};

}  // namespace roundup
