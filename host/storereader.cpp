#include "host/storereader.h"

#include <cstring>
#include <string_view>

#include "appcenter/appconifgfile/appconfigstore.h"
#include "msianalyzer/itemcallback.h"
#include "utility/byteview.h"
#include "utility/wholefile.h"

namespace roundup::host {

namespace {

constexpr std::uint32_t kLargestStore = 0x40000000;
constexpr std::uint32_t kEndMark = 0xFFFFFFFFU;
constexpr std::uint64_t kWideEndMark = 0xFFFFFFFFFFFFFFFFU;

// How an item of a type looks: s is a text, d a number of 32 bits. Registry items have a layout of their own.
struct RecordLayout {
    std::uint32_t type;
    const char* name;
    const char* fields;  // null: registry items
};
constexpr RecordLayout kLayouts[] = {
    {ItemType::kRegistry, "registry", nullptr},
    {ItemType::kShortcut, "shortcuts", "ssssssd"},
    {ItemType::kService, "services", "ssdddsssssss"},
    {ItemType::kSelfRegistration, "self-registration", "ss"},
    {ItemType::kProductRegistry, "installer's keys of the product", nullptr},
    {ItemType::kUninstallRegistry, "uninstall keys", nullptr},
    {ItemType::kComponentRegistry, "installer's keys of components", nullptr},
    {ItemType::kPatchRegistry, "installer's keys of patches", nullptr},
    {ItemType::kIni, "ini entries", "ssss"},
    {ItemType::kDriver, "drivers", "sss"},
    {ItemType::kHelpNamespace, "help", "sss"},
    {ItemType::kSideBySide, "side by side", nullptr},
};

const RecordLayout* LayoutOf(std::uint32_t type) noexcept {
    for (const RecordLayout& layout : kLayouts) {
        if (layout.type == type) return &layout;
    }
    return nullptr;
}

// Goes through a record and never beyond it.
class Cursor {
  public:
    explicit Cursor(std::span<const std::byte> bytes) noexcept : m_bytes(bytes) {}

    std::size_t Left() const noexcept { return m_bytes.Size() - m_at; }
    template <class Number>
    bool Is(Number number) const noexcept {
        return Left() == sizeof number && m_bytes.At<Number>(m_at) == number;
    }
    template <class Number>
    bool Take(Number& number) noexcept {
        const auto found = m_bytes.At<Number>(m_at);
        if (!found) return false;
        number = *found;
        m_at += sizeof number;
        return true;
    }
    bool TakeBlock(std::span<const std::byte>& block) noexcept {
        std::uint32_t size = 0;
        if (!Take(size)) return false;
        const auto found = m_bytes.Slice(m_at, size);
        if (!found) return false;
        block = found->Bytes();
        m_at += size;
        return true;
    }
    // Texts may stand at odd places, behind the data of a value, so they are copied.
    bool TakeText(std::u16string& text) {
        std::span<const std::byte> block;
        if (!TakeBlock(block) || block.size() % sizeof(char16_t) != 0) return false;
        text.resize(block.size() / sizeof(char16_t));
        if (!block.empty()) std::memcpy(text.data(), block.data(), block.size());
        return true;
    }

  private:
    ByteView m_bytes;
    std::size_t m_at = 0;
};

// Two writers make records of registry items. The analysis of packages ends them with a mark of 64 bits; the store's
// own end with one of 32, in front of which stand flags, so that the end tells the two apart. The store's Uninstall
// record has roots of 32 bits.
bool ReadRegistryItems(std::uint32_t type, std::span<const std::byte> record, std::vector<StoreItem>& items) {
    const std::size_t size = record.size();
    const bool wideEnd = size >= sizeof kWideEndMark && ByteView(record).At<std::uint64_t>(size - 8) == kWideEndMark;
    const bool isOwn = !wideEnd && (type == ItemType::kRegistry || type == ItemType::kUninstallRegistry);
    const bool shortRoot = isOwn && type == ItemType::kUninstallRegistry;
    Cursor cursor(record);
    while (isOwn ? !cursor.Is(kEndMark) : !cursor.Is(kWideEndMark)) {
        StoreItem item;
        std::uint32_t root = 0;
        if (!(shortRoot ? cursor.Take(root) : cursor.Take(item.root))) return false;
        if (shortRoot) item.root = root;
        if (!cursor.TakeText(item.key) || !cursor.TakeText(item.name) || !cursor.Take(item.valueType)) return false;
        if (!cursor.TakeBlock(item.data) || !cursor.Take(item.flags)) return false;
        items.push_back(std::move(item));
    }
    return true;
}

bool ReadPlainItems(const char* fields, std::span<const std::byte> record, std::vector<StoreItem>& items) {
    Cursor cursor(record);
    while (!cursor.Is(kEndMark)) {
        StoreItem item;
        for (const char* field = fields; *field != '\0'; ++field) {
            const bool taken =
                *field == 's' ? cursor.TakeText(item.texts.emplace_back()) : cursor.Take(item.numbers.emplace_back());
            if (!taken) return false;
        }
        items.push_back(std::move(item));
    }
    return true;
}

}  // namespace

const char* StoreTypeName(std::uint32_t type) noexcept {
    const RecordLayout* layout = LayoutOf(type);
    return layout != nullptr ? layout->name : "unknown";
}

bool IsRegistryType(std::uint32_t type) noexcept {
    const RecordLayout* layout = LayoutOf(type);
    return layout != nullptr && layout->fields == nullptr;
}

bool ReadStoreIndex(std::span<const std::byte> index, std::vector<StoreEntry>& entries) {
    entries.clear();
    if (index.size() % sizeof(StoreIndexEntry) != 0) return false;
    for (std::size_t at = 0; at < index.size(); at += sizeof(StoreIndexEntry)) {
        const auto entry = ByteView(index).At<StoreIndexEntry>(at);
        if (!entry || entry->magic != StoreIndexEntry::kMagic) return false;
        entries.push_back({entry->type, entry->offset, entry->size});
    }
    return true;
}

bool ReadStoreRecord(std::uint32_t type, std::span<const std::byte> record, std::vector<StoreItem>& items) {
    const RecordLayout* layout = LayoutOf(type);
    if (layout == nullptr) return false;
    // A data file without a byte is a record too.
    if (record.empty()) return true;
    return layout->fields == nullptr ? ReadRegistryItems(type, record, items)
                                     : ReadPlainItems(layout->fields, record, items);
}

std::span<const std::byte> StorePair::Record(const StoreEntry& entry) const noexcept {
    const auto record = ByteView(data).Slice(entry.offset, entry.size);
    return record ? record->Bytes() : std::span<const std::byte>();
}

bool ReadStorePair(const CApp& app, StorePair& pair) {
    bool hasIndex = false;
    bool hasData = false;
    for (const std::unique_ptr<CWFYFile>& file : app.Gathered().Files) {
        if (file->dwType == FileType::kIndex) {
            hasIndex = ReadWholeFile(file->pwszPath.Text(), kLargestStore, pair.index);
        } else if (file->dwType == FileType::kConfig) {
            hasData = ReadWholeFile(file->pwszPath.Text(), kLargestStore, pair.data);
        }
    }
    return hasIndex && hasData && ReadStoreIndex(pair.index, pair.entries);
}

}  // namespace roundup::host
