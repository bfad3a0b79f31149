// Ini files of the machine, with the rules of the platform's profile functions.
#pragma once

#include <cstdint>

namespace roundup {

class IProfile {
  public:
    IProfile() = default;
    IProfile(const IProfile&) = delete;
    IProfile& operator=(const IProfile&) = delete;
    virtual ~IProfile() = default;

    // GetPrivateProfileStringW. section null: all section names, key null: all key names of the section, each
    // zero-terminated, with one more zero behind the last. fallback may be null, which counts as empty. The result is
    // the characters written without the terminator; a text that does not fit is cut to size - 1, a list to size - 2
    // with two zeros at its end. A file that is absent or unreadable gives the fallback.
    virtual std::uint32_t GetString(const char16_t* section, const char16_t* key, const char16_t* fallback,
                                    char16_t* buffer, std::uint32_t size, const char16_t* path) = 0;

    // WritePrivateProfileStringW. value null removes the key, key null the section. Makes the file when it is absent,
    // never its folder. False when nothing could be written.
    virtual bool WriteString(const char16_t* section, const char16_t* key, const char16_t* value,
                             const char16_t* path) = 0;
};

}  // namespace roundup
