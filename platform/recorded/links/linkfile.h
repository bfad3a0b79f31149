// Shell link files (MS-SHLLINK, "Shell Link (.LNK) Binary File Format", published by Microsoft).
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/filesystem.h"
#include "utility/byteview.h"

namespace roundup {

// What a link file says, nothing looked up or expanded. What it does not say is empty. At most 32767 characters each.
struct LinkFile {
    std::u16string idListPath;       // from the shell's item list: a path on a drive, or a share
    std::u16string localPath;        // from the location: path on a volume of the machine it was made on
    std::u16string networkPath;      // from the location: path on a share
    std::u16string environmentPath;  // with environment variables
    std::u16string description;
    std::u16string workingDirectory;
    std::u16string arguments;
    std::u16string iconPath;
    std::u16string environmentIcon;  // with environment variables; stands before iconPath
    std::u16string descriptor;       // of an advertised link: product, feature and component, packed
    std::int32_t iconIndex = 0;
    std::uint16_t hotkey = 0;
    std::int32_t showCommand = 1;
    bool prefersEnvironment = false;  // environmentPath goes before all others
};

// Files of more bytes are no links.
inline constexpr std::uint32_t kLargestLinkFile = 1U << 20U;

// False when the bytes are no link or end within what each link must have: header, item list, location, texts. The
// blocks behind these are read as far as they are whole. Texts that are not UTF-16 are those of page 1252. Throws
// std::bad_alloc.
bool ParseLinkFile(ByteView bytes, LinkFile& link);
// The same with a file of the machine.
bool LoadLinkFile(IFileSystem& files, const char16_t* path, LinkFile& link);

// The parts of an advertised link's descriptor: the two codes in braces; feature and component may be empty. False
// when it is none.
bool ParseDescriptor(std::u16string_view descriptor, std::u16string& product, std::u16string& feature,
                     std::u16string& component);

}  // namespace roundup
