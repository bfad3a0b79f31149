// Which shortcuts of the machine point at a file.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "utility/ownedstring.h"
#include "utility/stringcontainers.h"

namespace roundup {

// One shortcut file. A text that is not known is null.
struct ShortcutRecord {
    OwnedString targetPath;    // long path of the file that the shortcut opens
    OwnedString linkFolder;    // folder of the shortcut file
    OwnedString linkBaseName;  // its name without extension
    OwnedString description;
    OwnedString arguments;
    OwnedString workingDirectory;  // long path
    OwnedString iconPath;          // long path
    std::int32_t iconIndex = 0;
    std::uint16_t hotkey = 0;
    std::int32_t showCommand = 1;  // SW_SHOWNORMAL
    OwnedString linkPath;          // whole path of the shortcut file
};

// The shortcuts of the start menus, the desktops and the taskbar, read once for the machine: one made afterwards stays
// unseen. What cannot be read adds nothing. Once built, every thread may ask.
class ShortcutScanner {
  public:
    // Reads all shortcuts.
    ShortcutScanner();
    ShortcutScanner(const ShortcutScanner&) = delete;
    ShortcutScanner& operator=(const ShortcutScanner&) = delete;
    ~ShortcutScanner();

    // The scanner of the current machine, made at first use; who comes meanwhile waits.
    static const ShortcutScanner& Instance();

    // Appends the records of a target, ignoring case, in the order in which they were found; they stay the scanner's.
    // True when the list is not empty afterwards.
    bool FindByTarget(std::u16string_view target, std::vector<const ShortcutRecord*>& records) const;

    // Every target once.
    const CStringSet& Targets() const noexcept { return m_targets; }

    // Fills a record from one shortcut file, given by its long path. False when it opens no file that exists.
    static bool ReadShortcut(ShortcutRecord& record, const char16_t* path);

  private:
    void ScanAll();
    void ScanFolder(std::u16string_view folder, bool recursive);
    void AddShortcut(const char16_t* path);
    void CollectTargets();

    // Keys are texts of the records themselves.
    std::multimap<std::u16string_view, const ShortcutRecord*, CStringLess> m_byTarget;
    std::map<std::u16string_view, std::unique_ptr<ShortcutRecord>, CStringLess> m_byLink;
    CStringSet m_targets;
};

}  // namespace roundup
