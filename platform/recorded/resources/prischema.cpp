#include <cstring>

#include "platform/recorded/resources/bytecursor.h"
#include "platform/recorded/resources/pritables.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::string_view kExtendedNames = "[def_hnamesx]  ";
constexpr std::uint64_t kNameEntry = 12;
constexpr std::uint64_t kScopeEntry = 8;
constexpr std::uint64_t kItemEntry = 2;
constexpr std::uint8_t kHighOffset = 0x0F;
constexpr std::uint8_t kIsScope = 0x10;
constexpr std::uint8_t kIsAscii = 0x20;

// The names of scopes and items, each with the entry of the scope that it lies in. Scopes and items are counted apart.
class Names {
  public:
    bool Open(ByteView schema, bool extended) {
        ByteCursor cursor(schema);
        (void)cursor.Take<std::uint16_t>();  // 1
        const auto uniqueName = cursor.Take<std::uint16_t>();
        const auto name = cursor.Take<std::uint16_t>();
        (void)cursor.Take<std::uint16_t>();
        bool longHeader = false;
        if (extended) {
            const ByteView kind = cursor.TakeBytes(16);
            longHeader =
                kind.Size() != 0 && std::memcmp(kind.Data(), kExtendedNames.data(), kExtendedNames.size()) == 0;
        }
        (void)cursor.TakeBytes(4 + 4 + 4);  // version, 0, checksum
        const auto scopes = cursor.Take<std::uint32_t>();
        const auto items = cursor.Take<std::uint32_t>();
        (void)cursor.TakeBytes((std::uint64_t{uniqueName} + name) * sizeof(char16_t));
        (void)cursor.TakeBytes(2 + 2 + 2 + 4 + 4 + 4);  // 0, longest path, 0, the three counts once more
        const auto wideCharacters = cursor.Take<std::uint32_t>();
        (void)cursor.TakeBytes(longHeader ? 8 : 4);
        m_count = std::uint64_t{scopes} + items;
        m_entries = cursor.TakeBytes(m_count * kNameEntry);
        (void)cursor.TakeBytes(scopes * kScopeEntry + items * kItemEntry);
        m_wide = cursor.TakeBytes(std::uint64_t{wideCharacters} * sizeof(char16_t));
        m_ascii = cursor.Rest();
        return !cursor.Failed();
    }

    std::optional<std::uint32_t> FindItem(std::u16string_view path) const {
        for (std::uint64_t i = 0; i < m_count; ++i) {
            if ((Flags(i) & kIsScope) == 0 && HasPath(i, path)) return m_entries.At<std::uint16_t>(i * kNameEntry + 10);
        }
        return std::nullopt;
    }

  private:
    std::uint8_t Flags(std::uint64_t entry) const {
        return m_entries.At<std::uint8_t>(entry * kNameEntry + 7).value_or(0);
    }
    // The root has an empty path.
    bool IsRoot(std::uint64_t entry) const { return m_entries.At<std::uint16_t>(entry * kNameEntry + 2) == 0; }

    // From the last name up. Goes no further than the path has names.
    bool HasPath(std::uint64_t entry, std::u16string_view path) const {
        for (;;) {
            const std::size_t separator = path.rfind(u'/');
            const bool first = separator == std::u16string_view::npos;
            if (entry >= m_count || !HasName(entry, first ? path : path.substr(separator + 1))) return false;
            entry = m_entries.At<std::uint16_t>(entry * kNameEntry).value_or(0);
            if (first) return entry >= m_count || IsRoot(entry);
            path = path.substr(0, separator);
        }
    }

    bool HasName(std::uint64_t entry, std::u16string_view name) const {
        const std::uint64_t high = Flags(entry) & kHighOffset;
        const std::uint64_t place = m_entries.At<std::uint16_t>(entry * kNameEntry + 8).value_or(0) | (high << 16U);
        const bool ascii = (Flags(entry) & kIsAscii) != 0;
        for (std::size_t i = 0; i <= name.size(); ++i) {
            const auto c = ascii ? Widen(m_ascii.At<std::uint8_t>(place + i)) : m_wide.At<char16_t>((place + i) * 2);
            const char16_t wanted = i < name.size() ? name[i] : u'\0';
            if (!c || ToLower(*c) != ToLower(wanted)) return false;
        }
        return true;
    }
    static std::optional<char16_t> Widen(std::optional<std::uint8_t> byte) {
        return byte ? std::optional<char16_t>(*byte) : std::nullopt;
    }

    std::uint64_t m_count = 0;
    ByteView m_entries;
    ByteView m_wide;
    ByteView m_ascii;
};

}  // namespace

std::optional<std::uint32_t> FindPriItem(ByteView schema, bool extended, std::u16string_view path) {
    Names names;
    return names.Open(schema, extended) && !path.empty() ? names.FindItem(path) : std::nullopt;
}

}  // namespace roundup
