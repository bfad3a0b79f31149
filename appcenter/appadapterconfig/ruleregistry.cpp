#include "appcenter/appadapterconfig/ruleregistry.h"

#include <algorithm>
#include <optional>
#include <string>

#include "appcenter/appadapterconfig/ruletext.h"
#include "utility/reg.h"
#include "utility/sysinfo.h"
#include "utility/wildcard.h"

namespace roundup {
namespace {

constexpr std::u16string_view kUserData = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Installer\\UserData";
constexpr std::u16string_view kUninstall = u"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\";
// No name of a key is longer ("Registry element size limits").
constexpr std::ptrdiff_t kLongestKeyName = 255;

enum class RegForm : std::uint8_t { Product, Uninstall, Component };

constexpr RuleWord<RegForm> kForms[] = {
    {u"INST,", RegForm::Product},
    {u"UINS,", RegForm::Uninstall},
    {u"COMP,", RegForm::Component},
};
constexpr std::u16string_view kRedirection = u"REDIRECTION,";

constexpr KeyHandle HandleOf(std::uint32_t root) noexcept { return 0xFFFFFFFF00000000U | root; }

// Calls work with the flag of each view.
template <class Work>
void InBothViews(Work work) {
    work(false);
    if (Is64BitOS()) work(true);
}

bool Opens(const std::u16string& path, bool view64) {
    CWFYRegKey key;
    return Succeeded(key.Open(kHkeyLocalMachine, path.c_str(), view64, false));
}

// Calls work with the name of each subkey of an open key.
template <class Work>
void ForEachSubkey(CWFYRegKey& key, Work work) {
    OwnedString name;
    for (;;) {
        if (Failed(key.EnumKey(name))) return;
        if (!name.IsEmpty()) work(name.View());
    }
}

// The key of that name in the given folder ("\Products\", "\Components\") of each user of the installer's books.
void AddInstallerKeys(std::u16string_view folder, std::u16string_view name, bool view64, RuleRegItems& items) {
    CWFYRegKey users;
    const std::u16string base(kUserData);
    if (Failed(users.Open(kHkeyLocalMachine, base.c_str(), view64, false))) return;
    ForEachSubkey(users, [&](std::u16string_view user) {
        std::u16string path = base;
        path.append(u"\\").append(user).append(folder).append(name);
        if (Opens(path, view64)) items.Add(RuleRoot::kLocalMachine, path);
    });
}

void AddUninstallKey(std::u16string_view name, bool view64, RuleRegItems& items) {
    std::u16string path(kUninstall);
    path += name;
    if (Opens(path, view64)) items.Add(RuleRoot::kLocalMachine, path);
}

// Without a name these would take in every product of the machine.
void AddQuestion(RegForm form, std::u16string_view name, RuleRegItems& items) {
    if (name.empty()) return;
    if (form == RegForm::Component) return AddInstallerKeys(u"\\Components\\", name, Is64BitOS(), items);
    InBothViews([&](bool view64) {
        if (form == RegForm::Product) AddInstallerKeys(u"\\Products\\", name, view64, items);
        if (form == RegForm::Uninstall) AddUninstallKey(name, view64, items);
    });
}

}  // namespace

void AddRegRule(std::u16string_view value, RuleRegItems& items) {
    if (const RuleWord<RegForm>* form = TakeWord(value, kForms)) return AddQuestion(form->value, value, items);
    std::uint32_t redirection = 0;
    if (StartsWithNoCase(value, kRedirection)) {
        value.remove_prefix(kRedirection.size());
        redirection = 1;
    }
    if (const std::optional<std::uint32_t> root = TakeRegistryRoot(value)) items.Add(*root, value, redirection);
}

void AddRegPatternRule(std::u16string_view value, RuleRegItems& items) {
    const std::optional<std::uint32_t> root = TakeRegistryRoot(value);
    const std::size_t cut = value.find(u'\\');
    if (!root || cut == std::u16string_view::npos || cut == 0 || value.size() <= cut + 2) return;
    const std::u16string parent(value.substr(0, cut));
    std::u16string pattern(value.substr(cut + 2));
    // A row of stars says no more than one; and a pattern that asks for more characters than a name can have is not
    // tried on every key.
    const auto sameStar = [](char16_t a, char16_t b) { return a == u'*' && b == u'*'; };
    pattern.erase(std::unique(pattern.begin(), pattern.end(), sameStar), pattern.end());
    const auto isStar = [](char16_t c) { return c == u'*'; };
    if (std::ranges::count_if(pattern, std::not_fn(isStar)) > kLongestKeyName) return;
    InBothViews([&](bool view64) {
        CWFYRegKey key;
        if (Failed(key.Open(HandleOf(*root), parent.c_str(), view64, false))) return;
        ForEachSubkey(key, [&](std::u16string_view name) {
            if (WildMatch(name, pattern, false)) items.Add(*root, std::u16string(parent).append(u"\\").append(name));
        });
    });
}

void ReadRegDirectories(std::u16string_view value, const std::function<void(std::u16string_view)>& add) {
    const std::optional<std::uint32_t> root = TakeRegistryRoot(value);
    if (!root) return;
    const std::size_t cut = value.find(u"\\\\");
    const std::u16string path(value.substr(0, cut));
    const std::u16string name(cut != std::u16string_view::npos ? value.substr(cut + 2) : std::u16string_view());
    InBothViews([&](bool view64) {
        CWFYRegKey key;
        OwnedString text;
        if (Failed(key.Open(HandleOf(*root), path.c_str(), view64, false))) return;
        if (Failed(key.GetString(name.c_str(), text))) return;
        // A value of several texts has more of them behind the first.
        add(text.View().substr(0, text.View().find(u'\0')));
    });
}

}  // namespace roundup
