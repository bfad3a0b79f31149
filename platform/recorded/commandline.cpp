// Source: "CommandLineToArgvW" and "Parsing C command-line arguments" of the Windows documentation, and for runs of
// quotes the behaviour since Windows 8.
//
// The first argument is the program's name, in which a backslash means nothing but itself: it ends at the next quote
// when it begins with one, else at the next blank. In the others, 2n backslashes in front of a quote stand for n of
// them and the quote opens or closes a quoted piece; 2n + 1 stand for n and a quote that belongs to the argument;
// backslashes elsewhere stand for themselves. Quotes in a row are counted from the one that opened the piece: the
// third belongs to the argument and closes the piece, so that two inside of a quoted piece are one quote and its end:
// "a""b c" is the two arguments a"b and c. Blanks and tabs part arguments outside of quoted pieces.
#include "platform/recorded/commandline.h"

#include <algorithm>

namespace roundup {

namespace {

bool IsBlank(char16_t c) noexcept { return c == u' ' || c == u'\t'; }

void SkipBlanks(std::u16string_view& text) noexcept {
    while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
}

std::u16string TakeProgram(std::u16string_view& text) {
    std::size_t end = 0;
    if (text.front() == u'"') {
        text.remove_prefix(1);
        end = std::min(text.find(u'"'), text.size());
        std::u16string program(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        return program;
    }
    // Control characters end the name too.
    while (end < text.size() && text[end] > u' ') ++end;
    std::u16string program(text.substr(0, end));
    text.remove_prefix(end);
    return program;
}

// Takes the quotes that text begins with; answers whether a quoted piece is open behind them.
bool TakeQuotes(std::u16string_view& text, bool quoted, std::u16string& argument) {
    int count = quoted ? 1 : 0;
    while (!text.empty() && text.front() == u'"') {
        text.remove_prefix(1);
        if (++count == 3) {
            argument.push_back(u'"');
            count = 0;
        }
    }
    return count == 1;
}

std::u16string TakeArgument(std::u16string_view& text) {
    std::u16string argument;
    bool quoted = false;
    while (!text.empty() && (quoted || !IsBlank(text.front()))) {
        const std::size_t slashes = std::min(text.find_first_not_of(u'\\'), text.size());
        text.remove_prefix(slashes);
        const bool atQuote = !text.empty() && text.front() == u'"';
        argument.append(atQuote ? slashes / 2 : slashes, u'\\');
        if (!atQuote) {
            if (text.empty() || (!quoted && IsBlank(text.front()))) break;
            argument.push_back(text.front());
            text.remove_prefix(1);
            continue;
        }
        if (slashes % 2 != 0) {
            argument.push_back(u'"');
            text.remove_prefix(1);
        }
        quoted = TakeQuotes(text, quoted, argument);
    }
    return argument;
}

}  // namespace

std::vector<std::u16string> SplitArguments(std::u16string_view text) {
    std::vector<std::u16string> arguments;
    arguments.reserve(4);  // most lines have no more
    arguments.push_back(TakeProgram(text));
    for (SkipBlanks(text); !text.empty(); SkipBlanks(text)) arguments.push_back(TakeArgument(text));
    return arguments;
}

}  // namespace roundup
