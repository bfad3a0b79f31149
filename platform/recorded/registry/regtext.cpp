// The format of the registry editor's exports, as the editor itself writes and reads it ("How to add, modify, or delete
// registry subkeys and values by using a .reg file" of the Windows documentation). A text may run over several lines:
// the editor writes line ends inside of texts as they are.
#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <vector>

#include "platform/recorded/hostpath.h"
#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registry/sourcefile.h"
#include "platform/recorded/registry/sourcetext.h"
#include "platform/recorded/registry/storedkeys.h"
#include "utility/casemap.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::u16string_view kHeader = u"Windows Registry Editor Version 5.00";

class RegTextParser {
  public:
    RegTextParser(RegistryStore& store, std::u16string_view text, const std::string& name)
        : m_store(store), m_tree(store.Tree()), m_keys(store), m_text(text), m_name(name) {}

    SourceStatus Run() {
        if (!ReadHeader()) return Take();
        while (SkipToContent()) {
            const bool good = Peek() == u'[' ? ReadKey() : ReadValue();
            if (!good) return Take();
        }
        return {};
    }

  private:
    // Every reader answers false after it has noted a fault.
    bool Fault(std::size_t position, const char* what) {
        m_fault = FaultAt(m_name, m_text, position, what);
        return false;
    }
    SourceStatus Take() { return std::move(m_fault); }

    bool AtEnd() const noexcept { return m_at == m_text.size(); }
    char16_t Peek() const noexcept { return AtEnd() ? u'\0' : m_text[m_at]; }
    bool AtLineEnd() const noexcept { return AtEnd() || IsLineEnd(m_text[m_at]); }
    void SkipBlanks() noexcept {
        while (!AtEnd() && IsBlank(m_text[m_at])) ++m_at;
    }
    void SkipLine() noexcept { m_at = std::min(m_text.find(u'\n', m_at), m_text.size()); }
    bool Skip(std::u16string_view word) noexcept {
        if (!StartsWithNoCase(m_text.substr(m_at), word)) return false;
        m_at += word.size();
        return true;
    }

    bool ReadHeader();
    bool SkipToContent() noexcept;
    bool ReadKey();
    bool CheckKeyPath(std::size_t position, std::u16string_view path);
    bool DeleteKey(std::size_t position, std::u16string_view path);
    bool ReadValue();
    bool ReadValueName();
    bool ReadQuoted(std::u16string& text);
    bool ReadData();
    bool ReadHexNumber(std::size_t mostDigits, std::uint32_t& number);
    bool ReadHexData();
    bool ReadHexByte();
    bool SkipContinuation();
    bool EndValue();

    RegistryStore& m_store;
    RegistryTree& m_tree;
    StoredKeys m_keys;
    const std::u16string_view m_text;
    const std::string& m_name;
    std::size_t m_at = 0;
    RegistryNode* m_key = nullptr;
    std::u16string m_valueName;  // buffers that all lines share
    std::u16string m_valueText;
    std::vector<std::byte> m_data;
    SourceStatus m_fault;
};

bool RegTextParser::ReadHeader() {
    SkipBlanks();
    if (m_text.substr(m_at).starts_with(u"REGEDIT4")) {
        return Fault(0, "is an export of the old version 4, not of version 5.00");
    }
    if (!m_text.substr(m_at).starts_with(kHeader)) {
        return Fault(0, "does not begin with \"Windows Registry Editor Version 5.00\"");
    }
    m_at += kHeader.size();
    SkipBlanks();
    return AtLineEnd() || Fault(m_at, "the first line goes on behind the version");
}

bool RegTextParser::SkipToContent() noexcept {
    while (!AtEnd()) {
        const char16_t c = m_text[m_at];
        if (c == u';') {
            SkipLine();
        } else if (IsBlank(c) || IsLineEnd(c)) {
            ++m_at;
        } else {
            return true;
        }
    }
    return false;
}

bool RegTextParser::ReadKey() {
    const std::size_t start = m_at;
    SkipLine();
    std::u16string_view line = m_text.substr(start, m_at - start);
    while (!line.empty() && (IsBlank(line.back()) || IsLineEnd(line.back()))) line.remove_suffix(1);
    if (line.size() < 2 || line.back() != u']') return Fault(start, "a key line without its closing bracket");
    std::u16string_view path = line.substr(1, line.size() - 2);
    const bool isDeletion = path.starts_with(u'-');
    if (isDeletion) path.remove_prefix(1);
    if (!CheckKeyPath(start, path)) return false;
    if (isDeletion) return DeleteKey(start, path);
    m_key = m_keys.Make(path);
    return true;
}

bool RegTextParser::CheckKeyPath(std::size_t position, std::u16string_view path) {
    if (!TakeRoot(path, false)) return Fault(position, "a key that does not begin with one of the root keys");
    const char* const wrong = WrongWithKeyPath(path);
    return wrong == nullptr || Fault(position, wrong);
}

bool RegTextParser::DeleteKey(std::size_t position, std::u16string_view path) {
    m_key = nullptr;
    RegistryNode* const node = m_keys.Find(path);
    if (node == nullptr) return true;
    if (node == &m_store.User()) {
        m_tree.Clear(*node);
        return true;
    }
    if (node->parent == nullptr) return Fault(position, "a root key cannot be deleted");
    m_tree.Delete(*node);
    return true;
}

bool RegTextParser::ReadValue() {
    const std::size_t start = m_at;
    if (Peek() != u'"' && Peek() != u'@') return Fault(start, "a line that is neither a key nor a value");
    if (m_key == nullptr) return Fault(start, "a value that belongs to no key");
    if (!ReadValueName()) return false;
    SkipBlanks();
    if (Peek() != u'=') return Fault(m_at, "a value name without \"=\" behind it");
    ++m_at;
    SkipBlanks();
    return ReadData() && EndValue();
}

bool RegTextParser::ReadValueName() {
    const std::size_t start = m_at;
    m_valueName.clear();
    if (Peek() == u'@') {
        ++m_at;
        return true;
    }
    if (!ReadQuoted(m_valueName)) return false;
    return m_valueName.size() <= kLongestValueName || Fault(start, "a value name of more than 16383 characters");
}

// Appends what stands between the quotes, in stretches between the escapes.
bool RegTextParser::ReadQuoted(std::u16string& text) {
    const std::size_t start = m_at++;
    for (;;) {
        std::size_t end = m_at;
        while (end < m_text.size() && m_text[end] != u'"' && m_text[end] != u'\\') ++end;
        text.append(m_text.substr(m_at, end - m_at));
        m_at = end;
        if (AtEnd()) return Fault(start, "a text without its closing quote");
        if (m_text[m_at] == u'"') {
            ++m_at;
            return true;
        }
        const char16_t escaped = m_at + 1 < m_text.size() ? m_text[m_at + 1] : u'\0';
        if (escaped != u'\\' && escaped != u'"') {
            return Fault(m_at, "a backslash in a text that is followed by neither a backslash nor a quote");
        }
        text.push_back(escaped);
        m_at += 2;
    }
}

bool RegTextParser::ReadData() {
    if (Peek() == u'"') {
        m_valueText.clear();
        if (!ReadQuoted(m_valueText)) return false;
        const std::size_t size = (m_valueText.size() + 1) * sizeof(char16_t);
        m_tree.SetValue(*m_key, m_tree.Fold(m_valueName), kRegSz, m_valueText.c_str(),
                        static_cast<std::uint32_t>(size));
        return true;
    }
    if (Peek() == u'-') {
        ++m_at;
        m_tree.DeleteValue(*m_key, m_tree.Fold(m_valueName));
        return true;
    }
    if (Skip(u"dword:")) {
        std::uint32_t number = 0;
        if (!ReadHexNumber(8, number)) return false;
        m_tree.SetValue(*m_key, m_tree.Fold(m_valueName), kRegDword, &number, sizeof(number));
        return true;
    }
    std::uint32_t type = kRegBinary;
    if (Skip(u"hex(")) {
        if (!ReadHexNumber(8, type)) return false;
        if (!Skip(u"):")) return Fault(m_at, "a value type without \"):\" behind it");
    } else if (!Skip(u"hex:")) {
        return Fault(m_at, "a value that is no text, dword:, hex: or hex(n):");
    }
    if (!ReadHexData()) return false;
    m_tree.SetValue(*m_key, m_tree.Fold(m_valueName), type, m_data.data(), static_cast<std::uint32_t>(m_data.size()));
    return true;
}

bool RegTextParser::ReadHexNumber(std::size_t mostDigits, std::uint32_t& number) {
    const std::size_t start = m_at;
    number = 0;
    for (; HexDigit(Peek()) != 0xFF; ++m_at) number = (number << 4) | HexDigit(Peek());
    if (m_at == start) return Fault(start, "a hexadecimal number without a digit");
    return m_at - start <= mostDigits || Fault(start, "a hexadecimal number of more than 8 digits");
}

bool RegTextParser::ReadHexData() {
    m_data.clear();
    if (!SkipContinuation()) return false;
    if (AtLineEnd() || Peek() == u';') return true;
    for (;;) {
        if (!ReadHexByte() || !SkipContinuation()) return false;
        if (Peek() != u',') return true;
        ++m_at;
        if (!SkipContinuation()) return false;
    }
}

bool RegTextParser::ReadHexByte() {
    const unsigned high = HexDigit(Peek());
    if (high == 0xFF) return Fault(m_at, "hexadecimal data with something else than bytes of two digits");
    ++m_at;
    const unsigned low = HexDigit(Peek());
    if (low != 0xFF) ++m_at;
    m_data.push_back(static_cast<std::byte>(low == 0xFF ? high : high * 16 + low));
    return true;
}

// Skips blanks, and line ends behind a backslash.
bool RegTextParser::SkipContinuation() {
    SkipBlanks();
    while (Peek() == u'\\') {
        ++m_at;
        SkipBlanks();
        if (!AtLineEnd()) return Fault(m_at, "a backslash in hexadecimal data that does not end its line");
        if (Peek() == u'\r') ++m_at;
        if (Peek() == u'\n') ++m_at;
        SkipBlanks();
        if (AtEnd()) return Fault(m_at, "the file ends inside of hexadecimal data");
    }
    return true;
}

bool RegTextParser::EndValue() {
    SkipBlanks();
    if (Peek() == u';') SkipLine();
    return AtLineEnd() || Fault(m_at, "something else behind the end of a value");
}

// The text as UTF-16, whatever the file's encoding.
SourceStatus Decode(std::span<const std::byte> bytes, const std::string& name, std::u16string& text) {
    const std::string_view narrow(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (narrow.starts_with("\xFF\xFE")) {
        if (narrow.size() % 2 != 0) {
            return SourceError{name, SourceError::Place::Offset, narrow.size() - 1,
                               "UTF-16 text with half a character"};
        }
        text.resize(narrow.size() / 2 - 1);
        if (!text.empty()) std::memcpy(text.data(), narrow.data() + 2, narrow.size() - 2);
        return {};
    }
    const std::size_t mark = narrow.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    std::size_t fault = 0;
    if (!FromUtf8Strict(narrow.substr(mark), text, fault)) {
        return FaultAt(name, narrow, mark + fault, "neither UTF-16 with its mark nor valid UTF-8");
    }
    return {};
}

}  // namespace

SourceStatus ParseRegText(RegistryStore& store, std::span<const std::byte> text, const std::string& name) {
    try {
        std::u16string decoded;
        if (SourceStatus status = Decode(text, name, decoded)) return status;
        const std::lock_guard guard(store.Lock());
        store.Changed();
        return RegTextParser(store, decoded, name).Run();
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(name);
    }
}

SourceStatus LoadRegText(RegistryStore& store, const std::string& file) {
    try {
        SourceBytes bytes;
        if (SourceStatus status = ReadSourceFile(file, bytes)) return status;
        return ParseRegText(store, bytes.View(), file);
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(file);
    }
}

SourceStatus LoadRegTextFolder(RegistryStore& store, const std::string& folder) {
    try {
        if (!SourceFileExists(folder)) return {};
        std::vector<std::string> names;
        if (SourceStatus status = ListSourceFolder(folder, u".reg", names)) return status;
        for (const std::string& name : names) {
            std::string file = folder;
            file.append("/").append(name);
            if (SourceStatus status = CheckInside(HostFolderAbove(folder), file)) return status;
            if (SourceStatus status = LoadRegText(store, file)) return status;
        }
        return {};
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(folder);
    }
}

}  // namespace roundup
