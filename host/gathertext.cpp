// The summary: folders with what lies in them, counts by kind, and the records of the store, grouped.
#include <algorithm>
#include <map>
#include <set>

#include "appcenter/app/app.h"
#include "host/gather.h"
#include "host/storereader.h"
#include "host/textout.h"
#include "msianalyzer/itemcallback.h"
#include "utility/stringcontainers.h"

namespace roundup::host {

namespace {

// Of one group; those behind are counted alone.
constexpr std::size_t kMostLines = 40;

class Group {
  public:
    explicit Group(std::string head) : m_head(std::move(head)) {}
    // Once each: several sources may tell of the same thing.
    void Add(std::string line) {
        const auto [place, isNew] = m_seen.insert(std::move(line));
        if (isNew && m_lines.size() < kMostLines) m_lines.push_back(&*place);
    }
    std::string Text() const {
        if (m_seen.empty()) return {};
        std::string text = "\n" + m_head + " (" + std::to_string(m_seen.size()) + ")\n";
        for (const std::string* line : m_lines) text += "  " + *line + "\n";
        const std::size_t left = m_seen.size() - m_lines.size();
        if (left != 0) text += "  and " + std::to_string(left) + " more\n";
        return text;
    }

  private:
    const std::string m_head;
    std::set<std::string> m_seen;
    std::vector<const std::string*> m_lines;  // in m_seen, as they came
};

std::string Counted(std::size_t count, const char* one) {
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

constexpr std::string_view kOpenedKey = "...\\";  // one that the analysis had open

std::string_view RootName(std::uint64_t root) {
    switch (static_cast<std::uint32_t>(root)) {
        case 0x80000000U:
            return "HKCR\\";
        case 0x80000001U:
            return "HKCU\\";
        case 0x80000002U:
            return "HKLM\\";
        case 0x80000003U:
            return "HKU\\";
        case 0x80000005U:
            return "HKCC\\";
        default:
            return kOpenedKey;
    }
}

std::string ItemLine(std::uint32_t type, const StoreItem& item) {
    if (IsRegistryType(type)) {
        std::string root(RootName(item.root));
        // These records name what stands below the Uninstall key, with its root or with a handle of it.
        if (type == ItemType::kUninstallRegistry) root += root == kOpenedKey ? "Uninstall\\" : "...\\Uninstall\\";
        return root + Printable(item.key) + ((item.flags & 1) != 0 ? "  (64-bit view)" : "");
    }
    const std::vector<std::u16string>& texts = item.texts;
    switch (type) {
        case ItemType::kShortcut:
            // The package's writer ends the folder in a backslash, the store's own does not.
            return Printable(texts[0] + (texts[0].ends_with(u'\\') ? u"" : u"\\") + texts[1]) + " -> " +
                   Printable(texts[2]);
        case ItemType::kService:
            return Printable(texts[0]) + (texts[1].empty() ? "" : " (" + Printable(texts[1]) + ")");
        case ItemType::kIni:
            return Printable(texts[0]) + " [" + Printable(texts[1]) + "] " + Printable(texts[2]) + "=" +
                   Printable(texts[3]);
        default: {
            std::string line;
            for (const std::u16string& text : texts) {
                if (!text.empty()) line += (line.empty() ? "" : "  ") + Printable(text);
            }
            return line;
        }
    }
}

// Keys once each, with the number of their values; the values of one key follow each other.
void AddRegistry(Group& group, std::uint32_t type, const std::vector<StoreItem>& items) {
    for (std::size_t i = 0; i < items.size();) {
        std::size_t end = i;
        std::size_t values = 0;
        while (end < items.size() && items[end].key == items[i].key && items[end].root == items[i].root &&
               (items[end].flags & 1) == (items[i].flags & 1)) {
            values += items[end].name.empty() && items[end].valueType == 0 ? 0U : 1U;
            ++end;
        }
        group.Add(ItemLine(type, items[i]) + (values != 0 ? "  " + Counted(values, "value") : ""));
        i = end;
    }
}

void AddRecords(std::map<std::uint32_t, Group>& groups, const CApp& app) {
    StorePair pair;
    if (!ReadStorePair(app, pair)) return;
    for (const StoreEntry& entry : pair.entries) {
        Group& group = groups.try_emplace(entry.type, StoreTypeName(entry.type)).first->second;
        std::vector<StoreItem> items;
        const std::span<const std::byte> record = pair.Record(entry);
        const bool whole = record.size() == entry.size && ReadStoreRecord(entry.type, record, items);
        if (IsRegistryType(entry.type)) {
            AddRegistry(group, entry.type, items);
        } else {
            for (const StoreItem& item : items) group.Add(ItemLine(entry.type, item));
        }
        if (!whole) group.Add("a record that cannot be read");
    }
}

struct FolderSum {
    std::uint64_t size = 0;
    std::size_t files = 0;
};

struct Summary {
    std::map<std::string, FolderSum> folders;  // of each file, by path
    FolderSum all;
    std::size_t images64 = 0;
    std::size_t images32 = 0;

    void Add(const IWFYFile& file) {
        if (file.GetType() == FileType::kIndex || file.GetType() == FileType::kConfig) return;
        const std::u16string_view path = file.GetPath() != nullptr ? file.GetPath() : u"";
        const std::size_t slash = path.rfind(u'\\');
        FolderSum& folder = folders[Printable(path.substr(0, slash == std::u16string_view::npos ? 0 : slash + 1))];
        const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(file.GetSize(), 0));
        for (FolderSum* sum : {&folder, &all}) {
            sum->size += size;
            ++sum->files;
        }
        images64 += (file.GetFlags() & FileFlags::k64BitImage) != 0 ? 1U : 0U;
        images32 += (file.GetFlags() & FileFlags::k32BitImage) != 0 ? 1U : 0U;
    }

    std::string Text() const {
        std::string text = Counted(all.files, "file") + ", " + ReadableSize(all.size);
        if (images64 != 0) text += ", " + Counted(images64, "64-bit image");
        if (images32 != 0) text += ", " + Counted(images32, "32-bit image");
        Group group("folders");
        for (const auto& [path, sum] : folders) {
            group.Add(Fit(ReadableSize(sum.size), 8, true) + Fit(std::to_string(sum.files), 6, true) +
                      (sum.files == 1 ? " file   " : " files  ") + path);
        }
        return text + "\n" + group.Text();
    }
};

}  // namespace

std::string GatherText(IApp& app) {
    Summary summary;
    std::map<std::uint32_t, Group> groups;
    Group directories("directories that are its own");
    std::vector<IApp*> waiting{&app};
    std::vector<IApp*> below;
    while (!waiting.empty()) {
        IApp& next = *waiting.back();
        waiting.pop_back();
        std::vector<IWFYFile*> files;
        CStringVec folders;
        next.GetFilesAndDirectories(files, folders);
        for (const IWFYFile* file : files) summary.Add(*file);
        for (const OwnedString& folder : folders) directories.Add(Printable(folder));
        if (const auto* entry = dynamic_cast<const CApp*>(&next)) AddRecords(groups, *entry);
        below.clear();
        next.GetSubApps(below);
        waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
    std::string text = Printable(app.GetName() != nullptr ? app.GetName() : u"") + "\n" + summary.Text();
    text += directories.Text();
    for (const auto& [type, group] : groups) text += group.Text();
    return text;
}

}  // namespace roundup::host
