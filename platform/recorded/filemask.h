// The masks of FindFirstFileW.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace roundup {

// A mask made ready: the platform first turns some "*", "?" and "." into wildcards of the file system that know
// where a name's extension begins. Source: FsRtlIsNameInExpression (ntifs.h) for the wildcards; FindFirstFileW for
// the turning: "*.*" is "*"; "?" becomes DOS_QM; a "." in front of a wildcard DOS_DOT; a "*" in front of a "."
// DOS_STAR.
class FileMask {
  public:
    explicit FileMask(std::u16string_view mask);

    // Ignores case.
    bool Matches(std::u16string_view name) const;
    // False for a mask that is a plain name.
    bool HasWildcards() const noexcept { return m_wild; }
    bool MatchesAll() const noexcept { return m_mask == u"*"; }

  private:
    std::u16string m_mask;  // upper-cased
    bool m_wild = false;
    std::size_t m_literal = 0;  // characters in front of the first wildcard
};

}  // namespace roundup
