// The words of an application's name, by which its keys and folders are looked for.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "utility/ownedstring.h"

namespace roundup {

class CApp;

struct NameToken {
    NameToken() = default;
    explicit NameToken(std::u16string_view text)
        : pwszText(text), dwLength(static_cast<std::uint32_t>(pwszText.Length())) {}

    OwnedString pwszText;
    std::uint32_t dwLength = 0;  // characters
};

// Ceilings for one application, far above what a name of 259 characters in some fifty words needs. Beyond them no more
// parts of a text are made; those that there are stay.
inline constexpr std::uint64_t kMostTokenWork = 16U << 20;  // characters of parts looked at
inline constexpr std::uint64_t kMostTokenText = 1U << 20;   // characters of parts kept

// Expands name, key and publisher into every run of whole words that they have, without the words that say nothing,
// and into the same with a "." in front, noise or not. bMicrosoft is set when one of the runs begins with the name of
// the platform's maker, and never cleared.
void TokeniseApp(const CApp& app, std::vector<NameToken>& tokens, std::uint32_t& bMicrosoft);

// True for what begins with the name of the platform's maker.
bool BeginsWithPlatformMaker(std::u16string_view text) noexcept;

}  // namespace roundup
