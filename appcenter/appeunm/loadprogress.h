// Tells the host how far a load is, and hears whether it shall go on.
#pragma once

#include <cstdint>

#include "appcenter/appeunm/iappmanager.h"

namespace roundup {

class LoadProgress {
  public:
    LoadProgress(ProgressCallback callback, void* context) noexcept : m_callback(callback), m_context(context) {}

    // Cancelled when the host said stop.
    ResultCode Report(std::uint32_t percent) const {
        return m_callback(percent, m_context) != 0 ? kSuccess : Fail(SmallCode::Cancelled);
    }

  private:
    const ProgressCallback m_callback;
    void* const m_context;
};

}  // namespace roundup
