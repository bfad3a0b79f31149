// Reading one file of a source whole.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/recorded/sourceerror.h"

namespace roundup {

struct SourceBytes {
    std::unique_ptr<std::byte[]> data;
    std::size_t size = 0;

    std::span<const std::byte> View() const noexcept { return {data.get(), size}; }
};

// Reads an ordinary file of at most 2 GiB in one go. Throws std::bad_alloc.
SourceStatus ReadSourceFile(const std::string& file, SourceBytes& bytes);

// A fault unless the file, symbolic links followed, lies below the folder: what a source names must be its own.
SourceStatus CheckInside(const std::string& folder, const std::string& file);

// The names in the folder with that ending, in the order in which Windows lists a folder. Throws std::bad_alloc.
SourceStatus ListSourceFolder(const std::string& folder, std::u16string_view ending, std::vector<std::string>& names);
bool SourceFileExists(const std::string& file) noexcept;

SourceError OutOfMemoryFault(const std::string& file);
// The fault at a place of a text of bytes or of UTF-16; lines end in \n.
SourceError FaultAt(const std::string& file, std::string_view text, std::size_t position, std::string what);
SourceError FaultAt(const std::string& file, std::u16string_view text, std::size_t position, std::string what);

}  // namespace roundup
