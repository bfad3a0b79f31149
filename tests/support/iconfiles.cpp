#include "tests/support/iconfiles.h"

namespace roundup {

namespace {

constexpr std::uint32_t kAddress = 0x1000;  // of the section in the image
constexpr std::uint32_t kFileAlignment = 512;
constexpr std::uint32_t kTable = 0x80000000U;

void Add(std::string& bytes, std::uint32_t value, int size) {
    for (int i = 0; i < size; ++i) bytes.push_back(static_cast<char>(value >> (8 * i)));
}

// Directory entries of both forms end in a number: the image's place in the file, or that of its resource.
void AddEntry(std::string& bytes, const IconPart& part, std::uint32_t last, int lastSize) {
    Add(bytes, part.width, 1);
    Add(bytes, part.height, 1);
    Add(bytes, part.bits < 8 ? 1U << part.bits : 0, 2);
    Add(bytes, 1, 2);
    Add(bytes, part.bits, 2);
    Add(bytes, static_cast<std::uint32_t>(part.bytes.size()), 4);
    Add(bytes, last, lastSize);
}

void AddDirectory(std::string& bytes, std::size_t count) {
    Add(bytes, 0x10000, 4);
    Add(bytes, static_cast<std::uint32_t>(count), 2);
}

struct Resource {
    std::uint32_t number = 0;
    std::u16string name;
    std::string bytes;
};

// Tables of one type's resources from a place in the directory on: names, one language each, entry, bytes.
class ResourceTree {
  public:
    explicit ResourceTree(const std::vector<std::vector<Resource>>& types) {
        std::string root = Table(0, 2);
        std::uint32_t numbers[] = {3, 14};
        m_bytes.resize(root.size() + 16);
        for (std::size_t i = 0; i < types.size(); ++i) {
            Add(root, numbers[i], 4);
            Add(root, AddType(types[i]) | kTable, 4);
        }
        m_bytes.replace(0, root.size(), root);
    }
    const std::string& Bytes() const { return m_bytes; }

  private:
    static std::string Table(std::size_t named, std::size_t numbered) {
        std::string table(12, '\0');
        Add(table, static_cast<std::uint32_t>(named), 2);
        Add(table, static_cast<std::uint32_t>(numbered), 2);
        return table;
    }
    std::uint32_t Append(const std::string& part) {
        const auto at = static_cast<std::uint32_t>(m_bytes.size());
        m_bytes += part;
        m_bytes.resize((m_bytes.size() + 3) / 4 * 4);
        return at;
    }
    std::uint32_t AddType(const std::vector<Resource>& resources) {
        std::size_t named = 0;
        for (const Resource& resource : resources) named += resource.name.empty() ? 0 : 1;
        std::string table = Table(named, resources.size() - named);
        const std::uint32_t at = Append(std::string(table.size() + 8 * resources.size(), '\0'));
        for (const Resource& resource : resources) {
            std::uint32_t name = resource.number;
            if (!resource.name.empty()) {
                std::string text;
                Add(text, static_cast<std::uint32_t>(resource.name.size()), 2);
                for (const char16_t c : resource.name) Add(text, c, 2);
                name = Append(text) | kTable;
            }
            Add(table, name, 4);
            Add(table, AddLanguage(resource.bytes) | kTable, 4);
        }
        m_bytes.replace(at, table.size(), table);
        return at;
    }
    std::uint32_t AddLanguage(const std::string& bytes) {
        const std::uint32_t data = Append(bytes);
        std::string entry;
        Add(entry, kAddress + data, 4);
        Add(entry, static_cast<std::uint32_t>(bytes.size()), 4);
        entry.resize(16);
        std::string table = Table(0, 1);
        Add(table, 1033, 4);
        Add(table, Append(entry), 4);
        return Append(table);
    }

    std::string m_bytes;
};

}  // namespace

void Put16(std::string& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 2; ++i) bytes.at(at + i) = static_cast<char>(value >> (8 * i));
}

void Put32(std::string& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) bytes.at(at + i) = static_cast<char>(value >> (8 * i));
}

IconPart MakeBitmap(const BitmapForm& form, const std::function<std::uint32_t(std::uint32_t, std::uint32_t)>& pixel,
                    const std::function<bool(std::uint32_t, std::uint32_t)>& transparent) {
    std::string bytes;
    const int side = form.core ? 2 : 4;
    Add(bytes, form.core ? 12 : 40, 4);
    Add(bytes, form.width, side);
    Add(bytes, 2 * form.height, side);
    Add(bytes, 1, 2);
    Add(bytes, form.bits, 2);
    if (!form.core) {
        Add(bytes, form.channels.empty() ? 0 : 3, 4);
        bytes.resize(32);
        Add(bytes, static_cast<std::uint32_t>(form.palette.size()), 4);
        bytes.resize(40);
    }
    for (const std::uint32_t mask : form.channels) Add(bytes, mask, 4);
    for (const std::uint32_t color : form.palette) Add(bytes, color, form.core ? 3 : 4);
    const auto addLines = [&](std::uint32_t bits, const auto& value) {
        for (std::uint32_t y = form.height; y-- > 0;) {
            std::string line((form.width * bits + 31) / 32 * 4, '\0');
            for (std::uint32_t x = 0; x < form.width; ++x) {
                const std::uint32_t stored = value(x, y);
                for (std::uint32_t bit = 0; bit < bits; ++bit) {
                    // Pixels below a byte stand from the high bits down, those of bytes from the low byte up.
                    const std::uint32_t at = bits < 8 ? x * bits + bits - 1 - bit : x * bits + (bit ^ 7U);
                    if ((stored >> bit & 1) != 0) line[at / 8] = static_cast<char>(line[at / 8] | 0x80 >> at % 8);
                }
            }
            bytes += line;
        }
    };
    addLines(form.bits, pixel);
    if (form.masked) addLines(1, [&](std::uint32_t x, std::uint32_t y) { return transparent(x, y) ? 1U : 0U; });
    return {form.width, form.height, form.bits, bytes};
}

std::string MakeIconFile(const std::vector<IconPart>& parts) {
    std::string file;
    std::string images;
    AddDirectory(file, parts.size());
    for (const IconPart& part : parts) {
        AddEntry(file, part, static_cast<std::uint32_t>(6 + 16 * parts.size() + images.size()), 4);
        images += part.bytes;
    }
    return file + images;
}

std::string MakeProgram(const std::vector<IconGroup>& groups, bool wide, ProgramLayout* layout) {
    std::vector<std::vector<Resource>> types(2);
    for (const IconGroup& group : groups) {
        Resource directory{group.number, group.name, {}};
        AddDirectory(directory.bytes, group.parts.size());
        for (const IconPart& part : group.parts) {
            const auto number = static_cast<std::uint32_t>(types[0].size() + 1);
            types[0].push_back({number, {}, part.bytes});
            AddEntry(directory.bytes, part, number, 2);
        }
        types[1].push_back(directory);
    }
    const std::string resources = ResourceTree(types).Bytes();
    const auto size = static_cast<std::uint32_t>(resources.size());
    const std::size_t optional = 64 + 24;
    const std::size_t directories = optional + (wide ? 112 : 96);
    const std::size_t section = directories + 16 * 8;
    std::string file(kFileAlignment, '\0');
    file.replace(0, 2, "MZ");
    Put32(file, 60, 64);
    file.replace(64, 2, "PE");
    Put16(file, 64 + 4, wide ? 0x8664 : 0x14C);
    Put16(file, 64 + 6, 1);
    Put16(file, 64 + 20, static_cast<std::uint32_t>(section - optional));
    Put16(file, optional, wide ? 0x20B : 0x10B);
    Put32(file, directories - 4, 16);
    Put32(file, directories + 16, kAddress);
    Put32(file, directories + 20, size);
    file.replace(section, 5, ".rsrc");
    Put32(file, section + 8, size);
    Put32(file, section + 12, kAddress);
    Put32(file, section + 16, (size + kFileAlignment - 1) / kFileAlignment * kFileAlignment);
    Put32(file, section + 20, kFileAlignment);
    if (layout != nullptr) *layout = {file.size(), optional, section};
    file += resources;
    file.resize((file.size() + kFileAlignment - 1) / kFileAlignment * kFileAlignment);
    return file;
}

}  // namespace roundup
