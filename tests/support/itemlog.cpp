#include "tests/support/itemlog.h"

#include <cstring>
#include <string_view>

#include "msianalyzer/itemcallback.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/utf.h"

namespace roundup {

namespace {

// The fields of a record behind one another: s a text, d a number of 32 bits.
const char* PlainFields(std::uint32_t type) {
    switch (type) {
        case ItemType::kShortcut:
            return "ssssssd";
        case ItemType::kService:
            return "ssdddsssssss";
        case ItemType::kSelfRegistration:
            return "ss";
        case ItemType::kIni:
            return "ssss";
        case ItemType::kDriver:
        case ItemType::kHelpNamespace:
            return "sss";
        default:
            return nullptr;
    }
}

std::string RootName(std::uint64_t root) {
    static constexpr const char* kNames[] = {"HKCR", "HKCU", "HKLM", "HKU", "?", "HKCC"};
    const std::uint64_t number = root - 0xFFFFFFFF80000000U;
    return number < std::size(kNames) ? kNames[number] : "open";
}

class Fields {
  public:
    explicit Fields(std::string_view bytes) : m_bytes(bytes) {}

    template <class T>
    T Number() {
        T number{};
        if (m_bytes.size() < sizeof number) return m_broken = true, number;
        std::memcpy(&number, m_bytes.data(), sizeof number);
        m_bytes.remove_prefix(sizeof number);
        return number;
    }
    std::string_view Bytes(std::size_t size) {
        if (size > m_bytes.size()) m_broken = true;
        const std::string_view bytes = m_bytes.substr(0, size);
        m_bytes.remove_prefix(bytes.size());
        return bytes;
    }
    std::string Text() { return ToText(Bytes(Number<std::uint32_t>())); }
    static std::string ToText(std::string_view bytes) {
        std::u16string text(bytes.size() / 2, u'\0');
        std::memcpy(text.data(), bytes.data(), text.size() * 2);
        while (!text.empty() && text.back() == u'\0') text.pop_back();
        return ToUtf8(text);
    }
    bool IsAtEnd() const { return m_bytes.empty(); }
    bool IsBroken() const { return m_broken; }
    template <class T>
    bool SkipMark() {
        const bool atMark = m_bytes.size() == sizeof(T) && m_bytes.find_first_not_of('\xFF') == std::string_view::npos;
        if (atMark) m_bytes = {};
        return atMark;
    }

  private:
    std::string_view m_bytes;
    bool m_broken = false;
};

std::string PlainRecord(Fields& fields, const char* form) {
    std::string line;
    for (const char* field = form; *field != '\0'; ++field) {
        if (field != form) line += '|';
        line +=
            *field == 's' ? fields.Text() : std::to_string(static_cast<std::int32_t>(fields.Number<std::uint32_t>()));
    }
    return line;
}

std::string RegistryRecord(Fields& fields) {
    std::string line = RootName(fields.Number<std::uint64_t>());
    line += "|" + fields.Text();
    line += "|" + fields.Text();
    const auto type = fields.Number<std::uint32_t>();
    const std::string_view data = fields.Bytes(fields.Number<std::uint32_t>());
    line += "|" + std::to_string(type) + "|";
    if (type == 1 || type == 2) {
        line += Fields::ToText(data);
    } else {
        for (const char byte : data) {
            const auto value = static_cast<unsigned char>(byte);
            line += {"0123456789ABCDEF"[value >> 4U], "0123456789ABCDEF"[value & 15U]};
        }
    }
    return line + "|" + std::to_string(fields.Number<std::uint32_t>());
}

}  // namespace

ResultCode ItemLog::OnItem(void* log, const char16_t* item, std::uint64_t value, std::uint32_t type) {
    auto& self = *static_cast<ItemLog*>(log);
    if (type == ItemType::kFile || type == ItemType::kFolder) {
        const std::string kind = type == ItemType::kFile ? "file " : "folder ";
        self.lines.push_back(kind + ToUtf8(item) + " " + std::to_string(value));
        return kSuccess;
    }
    std::string bytes(static_cast<std::size_t>(value), '\0');
    FileHandle file = kInvalidFile;
    std::uint32_t done = 0;
    IFileSystem& files = CurrentMachine().Files();
    if (GetFileSize64(item) != value ||
        files.Open(item, kGenericRead, kShareRead, kOpenExisting, file) != kErrorSuccess ||
        files.Read(file, bytes.data(), static_cast<std::uint32_t>(value), done) != kErrorSuccess) {
        self.lines.push_back(std::to_string(type) + " unreadable");
    } else {
        self.AddRecords(bytes, type);
    }
    if (file != kInvalidFile) files.Close(file);
    (void)files.Delete(item);
    return kSuccess;
}

void ItemLog::AddRecords(const std::string& bytes, std::uint32_t type) {
    const std::string number = std::to_string(type) + " ";
    const char* const form = PlainFields(type);
    Fields fields(bytes);
    while (!fields.IsAtEnd() && !fields.IsBroken()) {
        if (form != nullptr ? fields.SkipMark<std::uint32_t>() : fields.SkipMark<std::uint64_t>()) {
            lines.push_back(number + "end");
            return;
        }
        lines.push_back(number + (form != nullptr ? PlainRecord(fields, form) : RegistryRecord(fields)));
    }
    lines.push_back(number + "broken");
}

}  // namespace roundup
