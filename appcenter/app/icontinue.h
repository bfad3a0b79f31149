// The go-on query: what a long loop asks before each pass.
#pragma once

#include <cstdint>

namespace roundup {

// The low units know the manager by this alone.
class IContinue {
  public:
    // Non-zero as long as the work shall go on. Takes no lock and may be called from every thread.
    virtual std::uint8_t IsContinue() const noexcept = 0;

  protected:
    ~IContinue() = default;
};

}  // namespace roundup
