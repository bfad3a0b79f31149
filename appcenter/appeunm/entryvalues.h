// The values that an application has in the registry: those of an Uninstall entry, or of an installer product, which
// uses the same names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "utility/ownedstring.h"
#include "utility/reg.h"

namespace roundup {

enum class EntryText : std::uint8_t {
    // What an application keeps.
    DisplayName,
    LocalPackage,
    DisplayVersion,
    Publisher,
    ParentDisplayName,
    ParentKeyName,
    InstallDate,
    InstallLocation,
    InnoAppPath,
    LocationRoot,
    // What is only looked at.
    ProductCodes,  // keeps its inner zeros when it is a list of texts
    RegistryLocation,
    UninstallString,
    DisplayIcon,
    ReleaseType,
    Count
};

enum class EntryWord : std::uint8_t { WindowsInstaller, SystemComponent, IsMinorUpgrade, EstimatedSize, Count };

// One pass over the values of a key picks out the known names, whatever their order: cheaper than asking for two dozen
// names, most of which an entry does not have. What is found is what asking by name would have found: names compare
// without case, a text ends at its first zero whatever the value's type, and a word is a value of at most four bytes.
//
// Used by one thread, for one key after the other.
class EntryValues {
  public:
    // Forgets the former key and reads the values of this one. A value that cannot be read counts as absent.
    void Read(CWFYRegKey& key);

    // Good until the next Read or Take.
    std::u16string_view Text(EntryText text) const noexcept {
        const auto slot = static_cast<std::size_t>(text);
        return slot < kKept ? m_kept[slot].View() : std::u16string_view(m_seen[slot - kKept]);
    }
    bool Has(EntryText text) const noexcept { return !Text(text).empty(); }
    // The text of one that an application keeps; it is absent from then on.
    OwnedString Take(EntryText text) noexcept { return std::move(m_kept[static_cast<std::size_t>(text)]); }
    // 0 when absent.
    std::uint32_t Word(EntryWord word) const noexcept { return m_words[static_cast<std::size_t>(word)]; }

    // Bytes. The registry has kilobytes in a word, or bytes in a value of up to eight bytes whose word reads as 0.
    std::int64_t EstimatedBytes() const noexcept;
    // The entry belongs to a product of Windows Installer.
    bool IsInstallerProduct() const noexcept { return Word(EntryWord::WindowsInstaller) == 1; }
    // An update, a part or something hidden: no application of its own. Asks for the texts before they are moved away.
    bool IsSubordinate() const noexcept;

  private:
    static constexpr auto kKept = static_cast<std::size_t>(EntryText::ProductCodes);

    void Note(const RegValueView& value);
    void NoteText(std::size_t slot, std::u16string_view text);

    std::array<OwnedString, kKept> m_kept;
    // Written over for each key, without a new block each time.
    std::array<std::u16string, static_cast<std::size_t>(EntryText::Count) - kKept> m_seen;
    std::array<std::uint32_t, static_cast<std::size_t>(EntryWord::Count)> m_words{};
    std::uint64_t m_estimatedQword = 0;
};

}  // namespace roundup
