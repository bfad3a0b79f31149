#include "appcenter/appeunm/entryvalues.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <span>

#include "utility/casemap.h"

namespace roundup {
namespace {

// A slot is a text, or a word behind the texts.
constexpr std::uint8_t kFirstWord = static_cast<std::uint8_t>(EntryText::Count);
constexpr std::uint8_t kNoSlot = 0xFF;

constexpr std::uint8_t Slot(EntryText text) { return static_cast<std::uint8_t>(text); }
constexpr std::uint8_t Slot(EntryWord word) { return static_cast<std::uint8_t>(kFirstWord + static_cast<int>(word)); }

struct NamedSlot {
    std::u16string_view name;
    std::uint8_t slot;
};

// In ascending length, by which a name finds the few that it may be.
constexpr NamedSlot kNames[] = {
    {u"Publisher", Slot(EntryText::Publisher)},
    {u"DisplayName", Slot(EntryText::DisplayName)},
    {u"DisplayIcon", Slot(EntryText::DisplayIcon)},
    {u"InstallDate", Slot(EntryText::InstallDate)},
    {u"ReleaseType", Slot(EntryText::ReleaseType)},
    {u"LocalPackage", Slot(EntryText::LocalPackage)},
    {u"ProductCodes", Slot(EntryText::ProductCodes)},
    {u"LocationRoot", Slot(EntryText::LocationRoot)},
    {u"EstimatedSize", Slot(EntryWord::EstimatedSize)},
    {u"ParentKeyName", Slot(EntryText::ParentKeyName)},
    {u"DisplayVersion", Slot(EntryText::DisplayVersion)},
    {u"IsMinorUpgrade", Slot(EntryWord::IsMinorUpgrade)},
    {u"InstallLocation", Slot(EntryText::InstallLocation)},
    {u"UninstallString", Slot(EntryText::UninstallString)},
    {u"SystemComponent", Slot(EntryWord::SystemComponent)},
    {u"WindowsInstaller", Slot(EntryWord::WindowsInstaller)},
    {u"RegistryLocation", Slot(EntryText::RegistryLocation)},
    {u"ParentDisplayName", Slot(EntryText::ParentDisplayName)},
    {u"Inno Setup: App Path", Slot(EntryText::InnoAppPath)},
};
static_assert(std::ranges::is_sorted(kNames, {}, [](const NamedSlot& entry) { return entry.name.size(); }));

// Where the names of each length begin in the table: those of length n are kFirst[n] to kFirst[n + 1].
constexpr std::size_t kLongestName = std::end(kNames)[-1].name.size();
constexpr auto kFirst = [] {
    std::array<std::uint8_t, kLongestName + 2> first{};
    for (const NamedSlot& entry : kNames) {
        for (std::size_t length = entry.name.size() + 1; length < first.size(); ++length) ++first[length];
    }
    return first;
}();

std::uint8_t FindSlot(std::u16string_view name) noexcept {
    if (name.empty() || name.size() > kLongestName) return kNoSlot;
    for (std::size_t i = kFirst[name.size()]; i < kFirst[name.size() + 1]; ++i) {
        // All names begin with a letter of ASCII, so one bit folds it.
        if (((name.front() ^ kNames[i].name.front()) & ~0x20) != 0) continue;
        if (EqualsNoCase(name, kNames[i].name)) return kNames[i].slot;
    }
    return kNoSlot;
}

}  // namespace

void EntryValues::Read(CWFYRegKey& key) {
    for (OwnedString& text : m_kept) text.Reset();
    for (std::u16string& text : m_seen) text.clear();
    m_words.fill(0);
    m_estimatedQword = 0;

    RegValueView value;
    for (;;) {
        const ResultCode rc = key.EnumValueView(value);
        if (Small(rc) == SmallCode::NoMoreItems) break;
        if (Succeeded(rc)) Note(value);
    }
}

void EntryValues::NoteText(std::size_t slot, std::u16string_view text) {
    if (slot < kKept) {
        AssignString(m_kept[slot], text);
    } else {
        m_seen[slot - kKept].assign(text);
    }
}

void EntryValues::Note(const RegValueView& value) {
    const std::uint8_t slot = FindSlot(value.Name());
    if (slot == kNoSlot) return;
    if (slot < kFirstWord) {
        NoteText(slot, slot == Slot(EntryText::ProductCodes) ? value.TextList() : value.Text());
        return;
    }
    const std::span<const std::byte> data = value.Data();
    if (data.empty()) return;
    if (data.size() <= sizeof(std::uint32_t)) std::memcpy(&m_words[slot - kFirstWord], data.data(), data.size());
    if (slot == Slot(EntryWord::EstimatedSize) && data.size() <= sizeof(std::uint64_t)) {
        std::memcpy(&m_estimatedQword, data.data(), data.size());
    }
}

std::int64_t EntryValues::EstimatedBytes() const noexcept {
    const std::uint32_t kilobytes = Word(EntryWord::EstimatedSize);
    return kilobytes != 0 ? std::int64_t{kilobytes} << 10 : static_cast<std::int64_t>(m_estimatedQword);
}

bool EntryValues::IsSubordinate() const noexcept {
    if (Has(EntryText::ParentKeyName) || Has(EntryText::ParentDisplayName)) return true;
    if (Word(EntryWord::SystemComponent) == 1) return true;
    if (Has(EntryText::ReleaseType)) {
        const std::u16string_view release = Text(EntryText::ReleaseType);
        for (const std::u16string_view kind : {u"Hotfix", u"Service Pack", u"Update Rollup"}) {
            if (EqualsNoCase(release, kind)) return true;
        }
    }
    return Word(EntryWord::IsMinorUpgrade) == 1;
}

}  // namespace roundup
