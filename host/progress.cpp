#include "host/progress.h"

#include <algorithm>
#include <cstdio>
#include <string>

#include "host/terminal.h"

namespace roundup::host {

namespace {

constexpr std::size_t kWidestBar = 50;

ProgressStyle Resolve(ProgressStyle style) {
    if (style != ProgressStyle::Auto) return style;
    return IsTerminal(Stream::Error) ? ProgressStyle::Bar : ProgressStyle::None;
}

}  // namespace

ProgressMeter::ProgressMeter(ProgressStyle style) : m_style(Resolve(style)) {}

ProgressMeter::~ProgressMeter() {
    if (m_drawn) std::fputs("\r\x1b[K", stderr);
}

void ProgressMeter::Show(std::uint32_t percent) {
    if (m_style == ProgressStyle::Plain) std::fprintf(stderr, "%u\n", percent);
    if (m_style == ProgressStyle::Bar) DrawBar(percent);
}

void ProgressMeter::DrawBar(std::uint32_t percent) {
    // Two brackets, a blank, "100%" and one column that stays free, so that no terminal wraps.
    constexpr std::size_t kFrame = 8;
    const std::size_t width = TerminalWidth(Stream::Error).value_or(80);
    if (width <= kFrame) return;
    const std::size_t bar = std::min(kWidestBar, width - kFrame);
    const std::size_t filled = bar * std::min<std::uint32_t>(percent, 100) / 100;
    const std::string line = "[" + std::string(filled, '#') + std::string(bar - filled, '.') + "]";
    std::fprintf(stderr, "\r%s %3u%%", line.c_str(), percent);
    std::fflush(stderr);
    m_drawn = true;
}

}  // namespace roundup::host
