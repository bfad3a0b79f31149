// What a thread remembers of the last path that it asked for.
//
// Questions come in groups: for a program, its long form, its folder, and again. Each starts where it parts from the
// one before, so most of them look up one name or none.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace roundup {

class FileTree;
struct FileEntry;

// The entries of the parts of one path. Parts stay behind those that were asked for: the next path may have them too.
struct PathTrail {
    static constexpr std::size_t kLongest = 320;  // characters of a path that is remembered
    static constexpr std::size_t kMostParts = 32;

    struct Part {
        std::size_t end;  // in text, of its last character
        FileEntry* entry;
    };

    const FileTree* tree = nullptr;
    std::uint64_t version = 0;  // of the names of all trees, when the parts were found
    std::size_t count = 0;
    std::size_t asked = 0;  // of the parts: those of the path that was asked for
    char16_t text[kLongest] = {};
    Part parts[kMostParts] = {};

    std::span<const Part> Asked() const noexcept { return {parts, asked}; }
    const Part& Last() const noexcept { return parts[asked - 1]; }
    std::size_t Length() const noexcept { return count != 0 ? parts[count - 1].end : 0; }
    // How many parts path has in common with this one; end: where the last of them ends.
    std::size_t Common(const char16_t* path, std::size_t& end) const noexcept;
    // Adds a part that stands behind the others and a separator.
    void Push(std::u16string_view path, FileEntry& entry) noexcept;
};

// Takes the part off path that begins at start, and nothing when the part is empty or means another name than is
// written: ends in a period or a blank, has "/" or another character that no name can hold.
std::u16string_view PlainPart(const char16_t* path, std::size_t start) noexcept;

}  // namespace roundup
