// The values that an application has in the registry: those of an Uninstall entry, or of an installer product, which
// uses the same names.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "utility/ownedstring.h"
#include "utility/reg.h"

namespace roundup {

enum class EntryText : std::uint8_t {
    DisplayName,
    LocalPackage,
    DisplayVersion,
    Publisher,
    ProductCodes,  // keeps its inner zeros when it is a list of texts
    ParentDisplayName,
    ParentKeyName,
    InstallDate,
    RegistryLocation,
    InstallLocation,
    InnoAppPath,
    LocationRoot,
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

    // The caller may move the text away.
    OwnedString& Text(EntryText text) noexcept { return m_texts[static_cast<std::size_t>(text)]; }
    bool Has(EntryText text) const noexcept { return !m_texts[static_cast<std::size_t>(text)].IsEmpty(); }
    // 0 when absent.
    std::uint32_t Word(EntryWord word) const noexcept { return m_words[static_cast<std::size_t>(word)]; }

    // Bytes. The registry has kilobytes in a word, or bytes in a value of up to eight bytes whose word reads as 0.
    std::int64_t EstimatedBytes() const noexcept;
    // The entry belongs to a product of Windows Installer.
    bool IsInstallerProduct() const noexcept { return Word(EntryWord::WindowsInstaller) == 1; }
    // An update, a part or something hidden: no application of its own. Asks for the texts before they are moved away.
    bool IsSubordinate() const noexcept;

  private:
    void Take(const RegValueView& value);

    std::array<OwnedString, static_cast<std::size_t>(EntryText::Count)> m_texts;
    std::array<std::uint32_t, static_cast<std::size_t>(EntryWord::Count)> m_words{};
    std::uint64_t m_estimatedQword = 0;
};

}  // namespace roundup
