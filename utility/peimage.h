// Whether a file is a 32-bit or a 64-bit program image.
#pragma once

namespace roundup {

// True for an image file (.dll, .exe, .sys, .ocx, .com) whose optional header has the magic of 32-bit (267) or 64-bit
// (523) images, and for whatever exists in the 32-bit or the native system folder. A 32-bit system has 32-bit images
// alone. Format: "PE Format" of the Microsoft documentation.
bool IsPe32(const char16_t* path);
bool IsPe32Plus(const char16_t* path);

// Both answers, for one opening of the file.
struct ImageBits {
    bool is32;
    bool is64;
};
ImageBits ImageBitsOf(const char16_t* path);

}  // namespace roundup
