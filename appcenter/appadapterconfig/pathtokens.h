// The path tokens of rule files: names of special folders in square brackets.
#pragma once

#include <string>
#include <string_view>

namespace roundup {

// The folder of the token with which text begins, ignoring case; the token is taken off. Null, and text untouched,
// when there is none or its folder is not known. The folder is good until the machine's scope ends.
const char16_t* TakePathToken(std::u16string_view& text);

// The text of an ACTION line with the first of these replaced, once, comparing exactly: "[App]" by the location,
// "[WFY]" by the host's folder with a backslash at its end, the first path token whose folder is known. Empty when
// the line says nothing: the text is empty, or it holds one of the first two and that is not known.
std::u16string ExpandAction(std::u16string_view text, std::u16string_view location);

}  // namespace roundup
