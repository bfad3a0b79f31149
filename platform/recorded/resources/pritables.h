// The sections of a resource index, each a block without its section header. Nothing is kept but views: tables are read
// where they stand, and what lies outside of the block is not there.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "utility/byteview.h"

namespace roundup {

// The number of the item with that path, ignoring case. extended: a section of the longer form, which says itself how
// its names are kept.
std::optional<std::uint32_t> FindPriItem(ByteView schema, bool extended, std::u16string_view path);

// The places of a decision's candidates, the best for the language first; at most 1024. Throws std::bad_alloc.
std::vector<std::uint32_t> RankPriCandidates(ByteView decisions, std::uint32_t decision, std::u16string_view language);

// How a candidate's bytes are to be read.
enum class PriValueType : std::uint32_t {
    String = 0,
    Path = 1,
    EmbeddedData = 2,
    AsciiString = 3,
    Utf8String = 4,
    AsciiPath = 5,
    Utf8Path = 6,
};

struct PriItemInfo {
    std::uint32_t decision = 0;
    std::uint32_t firstCandidate = 0;
};

struct PriCandidate {
    PriValueType type = PriValueType::EmbeddedData;
    std::optional<ByteView> bytes;  // when they stand in the map itself
    // Else where they stand.
    std::uint32_t sourceFile = 0;  // 0 is this file
    std::uint32_t dataItem = 0;
    std::uint32_t dataSection = 0;
};

class PriMap {
  public:
    bool Open(ByteView section);

    std::uint32_t SchemaSection() const noexcept { return m_schemaSection; }
    std::uint32_t DecisionSection() const noexcept { return m_decisionSection; }
    std::optional<PriItemInfo> FindInfo(std::uint32_t item) const;
    std::optional<PriCandidate> Candidate(std::uint64_t index) const;

  private:
    // A table of pairs: the first part has 16-bit numbers, the second, for large maps, 32-bit ones.
    struct Pairs {
        ByteView narrow;
        ByteView wide;
        std::uint64_t Count() const noexcept { return narrow.Size() / 4 + wide.Size() / 8; }
        std::optional<std::pair<std::uint32_t, std::uint32_t>> At(std::uint64_t index) const noexcept;
    };

    Pairs m_itemGroups;  // first item, group
    Pairs m_groups;      // size, first info
    Pairs m_infos;       // decision, first candidate
    ByteView m_types;
    ByteView m_candidates;
    ByteView m_data;
    std::uint32_t m_schemaSection = 0;
    std::uint32_t m_decisionSection = 0;
};

}  // namespace roundup
