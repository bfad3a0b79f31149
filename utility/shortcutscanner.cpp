#include "utility/shortcutscanner.h"

#include "platform/machine.h"

namespace roundup {

ShortcutScanner::ShortcutScanner() = default;
ShortcutScanner::~ShortcutScanner() = default;

const ShortcutScanner& ShortcutScanner::Instance() { return ProcessWide<ShortcutScanner>(); }

bool ShortcutScanner::FindByTarget(std::u16string_view /*target*/, std::vector<const ShortcutRecord*>& records) const {
    return !records.empty();
}

}  // namespace roundup
