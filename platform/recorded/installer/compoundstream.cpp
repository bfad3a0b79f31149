#include <algorithm>

#include "platform/recorded/installer/compoundfile.h"

namespace roundup {

namespace {

constexpr std::uint32_t kMiniShift = 6;

}  // namespace

bool CompoundStream::Read(std::uint64_t offset, std::span<std::byte> target) {
    if (offset > m_size || target.size() > m_size - offset) return false;
    return ReadRuns(m_runs, m_size, m_mini ? kMiniShift : m_file->m_shift, offset, target, m_mini);
}

// size: bytes of the stream that the runs carry. Mini sectors are places in another stream, which is read in the same
// way; that one's runs are set before the first mini stream opens and never change.
bool CompoundStream::ReadRuns(const Runs& runs, std::uint64_t size, std::uint32_t shift, std::uint64_t offset,
                              std::span<std::byte> target, bool mini) {
    auto run = std::upper_bound(runs.begin(), runs.end(), offset >> shift,
                                [](std::uint64_t unit, const CompoundFile::Run& other) { return unit < other.from; });
    while (!target.empty()) {
        if (run == runs.begin()) return false;
        const CompoundFile::Run& current = *(run - 1);
        const std::uint64_t end = run != runs.end() ? run->from << shift : size;
        if (offset >= end) return false;
        const std::size_t part = static_cast<std::size_t>(std::min<std::uint64_t>(target.size(), end - offset));
        const std::uint64_t within = offset - (current.from << shift);
        const std::span<std::byte> piece = target.first(part);
        const CompoundFile::Entry& root = m_file->m_root;
        const std::uint64_t place = (std::uint64_t{current.first} << shift) + within;
        const bool done = mini ? place + part <= root.size &&
                                     ReadRuns(m_file->m_miniRuns, root.size, m_file->m_shift, place, piece, false)
                               : m_file->m_file->Read(m_file->PlaceOf(current.first) + within, piece);
        if (!done) return false;
        target = target.subspan(part);
        offset += part;
        if (run == runs.end()) break;
        ++run;
    }
    return target.empty();
}

}  // namespace roundup
