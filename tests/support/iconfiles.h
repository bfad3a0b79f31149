// Makes icon images, .ico files and programs that hold icons, byte by byte.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace roundup {

struct IconPart {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint16_t bits = 0;  // as the directory says
    std::string bytes;
};

struct BitmapForm {
    std::uint32_t width = 32;
    std::uint32_t height = 32;
    std::uint16_t bits = 24;
    bool core = false;                      // with the header of 12 bytes
    bool masked = true;                     // has a mask
    std::vector<std::uint32_t> palette{};   // 0xRRGGBB
    std::vector<std::uint32_t> channels{};  // three masks: the bitmap is BI_BITFIELDS
};

// pixel tells the value that the bitmap stores (a palette index, or bits of the depth) at a column and a row, from the
// top; transparent tells its mask.
IconPart MakeBitmap(const BitmapForm& form, const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& pixel,
                    const std::function<bool(std::uint32_t, std::uint32_t)>& transparent);

std::string MakeIconFile(const std::vector<IconPart>& parts);

struct IconGroup {
    std::uint16_t number = 0;
    std::u16string name;  // instead of the number
    std::vector<IconPart> parts;
};

// Where the parts of a program are, for those who break them.
struct ProgramLayout {
    std::size_t resources = 0;  // the directory's root, which has two entries: icons, then groups
    std::size_t optional = 0;   // the optional header
    std::size_t section = 0;    // the section's header
};

// A program of 32 or 64 bits with one section. Named groups must come before numbered ones, which ascend.
std::string MakeProgram(const std::vector<IconGroup>& groups, bool wide, ProgramLayout* layout = nullptr);

// Overwrites a little-endian number.
void Put16(std::string& bytes, std::size_t at, std::uint32_t value);
void Put32(std::string& bytes, std::size_t at, std::uint32_t value);

}  // namespace roundup
