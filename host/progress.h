// Progress on standard error.
#pragma once

#include <cstdint>

#include "host/options.h"

namespace roundup::host {

class ProgressMeter {
  public:
    explicit ProgressMeter(ProgressStyle style);
    // Takes the bar off the terminal.
    ~ProgressMeter();
    ProgressMeter(const ProgressMeter&) = delete;
    ProgressMeter& operator=(const ProgressMeter&) = delete;

    void Show(std::uint32_t percent);

  private:
    void DrawBar(std::uint32_t percent);

    ProgressStyle m_style;
    bool m_drawn = false;
};

}  // namespace roundup::host
