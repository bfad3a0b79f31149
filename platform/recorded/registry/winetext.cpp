// The files in which Wine keeps a registry, version 2, as the wineserver of Wine 8 writes them: key lines in brackets
// with a time stamp behind, values below them, option lines that begin with #. All text is ASCII with the escapes of C;
// a text is one line.
#include <cstring>
#include <mutex>
#include <new>
#include <vector>

#include "platform/recorded/registry/registrysources.h"
#include "platform/recorded/registry/sourcefile.h"
#include "platform/recorded/registry/sourcetext.h"
#include "platform/recorded/registry/storedkeys.h"
#include "utility/casemap.h"

namespace roundup {

namespace {

constexpr std::string_view kHeader = "WINE REGISTRY Version 2";
constexpr std::string_view kBase = ";; All keys relative to ";

std::u16string Widen(std::string_view text) {
    std::u16string wide(text.size(), u'\0');
    for (std::size_t i = 0; i < text.size(); ++i) wide[i] = static_cast<unsigned char>(text[i]);
    return wide;
}

class WineTextParser {
  public:
    WineTextParser(RegistryStore& store, std::string_view text, const std::string& name)
        : m_store(store), m_tree(store.Tree()), m_text(text), m_name(name) {}

    SourceStatus Run() {
        if (!ReadHeader()) return Take();
        const std::lock_guard guard(m_store.Lock());
        m_store.Changed();
        while (SkipToContent()) {
            if (!ReadLine()) return Take();
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

    char Peek() const noexcept { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    bool AtLineEnd() const noexcept { return m_at == m_text.size() || IsLineEnd(m_text[m_at]); }
    void SkipBlanks() noexcept {
        while (m_at < m_text.size() && IsBlank(m_text[m_at])) ++m_at;
    }
    std::string_view TakeLine() noexcept {
        const std::size_t end = std::min(m_text.find('\n', m_at), m_text.size());
        std::string_view line = m_text.substr(m_at, end - m_at);
        if (line.ends_with('\r')) line.remove_suffix(1);
        m_at = end;
        return line;
    }
    bool Skip(std::string_view word) noexcept {
        if (!m_text.substr(m_at).starts_with(word)) return false;
        m_at += word.size();
        return true;
    }

    bool ReadHeader();
    bool SetBase(std::size_t position, std::string_view path);
    bool SkipToContent() noexcept;
    bool ReadLine();
    bool ReadOption(std::string_view line);
    bool ReadKey();
    bool ReadValue();
    bool ReadText(char closing, std::u16string& text);
    bool ReadEscape(std::u16string& text);
    bool ReadData();
    bool ReadTypedText(std::uint32_t type);
    bool ReadHexNumber(std::uint32_t& number);
    bool ReadHexData();
    bool SkipContinuation();
    void Set(std::uint32_t type, const void* data, std::size_t size) {
        m_tree.SetValue(*m_key, m_tree.Fold(m_valueName), type, data, static_cast<std::uint32_t>(size));
    }

    RegistryStore& m_store;
    RegistryTree& m_tree;
    const std::string_view m_text;
    const std::string& m_name;
    std::size_t m_at = 0;
    RegistryNode* m_base = nullptr;
    RegistryNode* m_key = nullptr;
    std::u16string m_path;  // buffers that all lines share
    std::u16string m_valueName;
    std::u16string m_valueText;
    std::vector<std::byte> m_data;
    SourceStatus m_fault;
};

bool WineTextParser::ReadHeader() {
    if (TakeLine() != kHeader) return Fault(0, "does not begin with \"WINE REGISTRY Version 2\"");
    while (SkipToContent() && Peek() == ';') {
        const std::size_t position = m_at;
        const std::string_view line = TakeLine();
        if (line.starts_with(kBase)) return SetBase(position, line.substr(kBase.size()));
    }
    return Fault(m_at, "does not say to which key its keys belong");
}

bool WineTextParser::SetBase(std::size_t position, std::string_view path) {
    const std::u16string wide = Widen(path);
    std::u16string_view rest = wide;
    const bool isRegistry = EqualsNoCase(TakeComponent(rest), u"REGISTRY");
    const std::u16string_view root = TakeComponent(rest);
    const std::u16string_view user = TakeComponent(rest);
    if (isRegistry && EqualsNoCase(root, u"Machine") && user.empty()) {
        m_base = &m_tree.Machine();
        return true;
    }
    if (!isRegistry || !EqualsNoCase(root, u"User") || user.empty() || !TakeComponent(rest).empty()) {
        return Fault(position, "keys that belong to neither the machine nor a user");
    }
    if (!EqualsNoCase(user, u".Default")) m_store.SetUser(user);
    const std::lock_guard guard(m_store.Lock());
    m_base = &m_tree.MakeChild(m_tree.Users(), m_tree.Fold(user));
    return true;
}

bool WineTextParser::SkipToContent() noexcept {
    while (m_at < m_text.size() && (IsBlank(m_text[m_at]) || IsLineEnd(m_text[m_at]))) ++m_at;
    return m_at < m_text.size();
}

bool WineTextParser::ReadLine() {
    switch (Peek()) {
        case '[':
            return ReadKey();
        case '"':
        case '@':
            return ReadValue();
        case '#':
            return ReadOption(TakeLine());
        case ';':
            TakeLine();
            return true;
        default:
            return Fault(m_at, "a line that is neither a key nor a value");
    }
}

// Times and classes of keys are nothing that a program here asks for.
bool WineTextParser::ReadOption(std::string_view line) {
    if (line == "#link" && m_key != nullptr) m_key->link = true;
    if (m_key == nullptr && line == "#arch=win64") m_store.SetLayout(RegistryLayout::Wine64);
    if (m_key == nullptr && line == "#arch=win32") m_store.SetLayout(RegistryLayout::Wine32);
    return true;
}

// The key is made as it stands: what a link leads to is not yet known here.
bool WineTextParser::ReadKey() {
    const std::size_t start = m_at++;
    m_path.clear();
    if (!ReadText(']', m_path)) return Fault(start, "a key line without its closing bracket");
    if (const char* const wrong = WrongWithKeyPath(m_path)) return Fault(start, wrong);
    SkipBlanks();
    while (Peek() >= '0' && Peek() <= '9') ++m_at;
    SkipBlanks();
    if (!AtLineEnd()) return Fault(m_at, "a key line with something else than a time behind the key");
    m_key = m_base;
    std::u16string_view path = m_path;
    for (auto name = TakeComponent(path); !name.empty(); name = TakeComponent(path)) {
        m_key = &m_tree.MakeChild(*m_key, m_tree.Fold(name));
    }
    return true;
}

bool WineTextParser::ReadValue() {
    const std::size_t start = m_at;
    if (m_key == nullptr) return Fault(start, "a value that belongs to no key");
    m_valueName.clear();
    const bool isNamed = Peek() == '"';
    ++m_at;
    if (isNamed && !ReadText('"', m_valueName)) return Fault(start, "a value name without its closing quote");
    if (m_valueName.size() > kLongestValueName) return Fault(start, "a value name of more than 16383 characters");
    SkipBlanks();
    if (!Skip("=")) return Fault(m_at, "a value name without \"=\" behind it");
    SkipBlanks();
    if (!ReadData()) return false;
    SkipBlanks();
    return AtLineEnd() || Fault(m_at, "something else behind the end of a value");
}

// Appends what stands before the closing character, which is taken, too. False when the line ends first.
bool WineTextParser::ReadText(char closing, std::u16string& text) {
    for (;;) {
        std::size_t end = m_at;
        while (end < m_text.size() && m_text[end] != closing && m_text[end] != '\\' && m_text[end] != '\n') ++end;
        const std::size_t length = text.size();
        text.resize(length + (end - m_at));
        for (std::size_t i = m_at; i < end; ++i) text[length + i - m_at] = static_cast<unsigned char>(m_text[i]);
        m_at = end;
        if (Peek() == closing && m_at < m_text.size()) {
            ++m_at;
            return true;
        }
        if (Peek() != '\\' || !ReadEscape(text)) return false;
    }
}

bool WineTextParser::ReadEscape(std::u16string& text) {
    static constexpr std::string_view kLetters = "abefnrtv";
    static constexpr std::u16string_view kMeanings = u"\a\b\x1B\f\n\r\t\v";
    ++m_at;
    if (AtLineEnd()) return false;
    const char c = m_text[m_at++];
    std::uint32_t number = 0;
    if (c == 'x') {
        const std::size_t start = m_at;
        for (; m_at - start < 4 && HexDigit(Peek()) != 0xFF; ++m_at) number = number * 16 + HexDigit(Peek());
        // Without a digit it is the letter, as Wine reads it.
        text.push_back(m_at == start ? u'x' : static_cast<char16_t>(number));
    } else if (c >= '0' && c <= '7') {
        --m_at;
        const std::size_t start = m_at;
        for (; m_at - start < 3 && Peek() >= '0' && Peek() <= '7'; ++m_at) number = number * 8 + HexDigit(Peek());
        text.push_back(static_cast<char16_t>(number));
    } else if (const std::size_t letter = kLetters.find(c); letter != std::string_view::npos) {
        text.push_back(kMeanings[letter]);
    } else {
        text.push_back(static_cast<unsigned char>(c));
    }
    return true;
}

bool WineTextParser::ReadData() {
    std::uint32_t type = kRegSz;
    if (Peek() == '"') return ReadTypedText(type);
    if (Skip("dword:")) {
        std::uint32_t number = 0;
        if (!ReadHexNumber(number)) return false;
        Set(kRegDword, &number, sizeof(number));
        return true;
    }
    const bool isText = Skip("str");
    if (!isText && !Skip("hex")) return Fault(m_at, "a value that is no text, dword:, hex: or str:");
    if (!isText) type = kRegBinary;
    if (Skip("(")) {
        if (!ReadHexNumber(type)) return false;
        if (!Skip(")")) return Fault(m_at, "a value type without its closing bracket");
    }
    if (!Skip(":")) return Fault(m_at, "a value type without \":\" behind it");
    if (isText) return ReadTypedText(type);
    if (!ReadHexData()) return false;
    Set(type, m_data.data(), m_data.size());
    return true;
}

// The terminator, of a list the last one of its two, is not written and belongs to the value all the same.
bool WineTextParser::ReadTypedText(std::uint32_t type) {
    const std::size_t start = m_at;
    if (!Skip("\"")) return Fault(start, "a text without its opening quote");
    m_valueText.clear();
    if (!ReadText('"', m_valueText)) return Fault(start, "a text without its closing quote");
    Set(type, m_valueText.c_str(), (m_valueText.size() + 1) * sizeof(char16_t));
    return true;
}

bool WineTextParser::ReadHexNumber(std::uint32_t& number) {
    const std::size_t start = m_at;
    number = 0;
    for (; HexDigit(Peek()) != 0xFF; ++m_at) number = (number << 4) | HexDigit(Peek());
    if (m_at == start) return Fault(start, "a hexadecimal number without a digit");
    return m_at - start <= 8 || Fault(start, "a hexadecimal number of more than 8 digits");
}

bool WineTextParser::ReadHexData() {
    m_data.clear();
    if (!SkipContinuation()) return false;
    while (!AtLineEnd()) {
        const unsigned high = HexDigit(Peek());
        if (high == 0xFF) return Fault(m_at, "hexadecimal data with something else than bytes of two digits");
        ++m_at;
        const unsigned low = HexDigit(Peek());
        if (low != 0xFF) ++m_at;
        m_data.push_back(static_cast<std::byte>(low == 0xFF ? high : high * 16 + low));
        SkipBlanks();
        if (AtLineEnd()) break;
        if (!Skip(",")) return Fault(m_at, "hexadecimal data without a comma between two bytes");
        if (!SkipContinuation()) return false;
        if (AtLineEnd()) return Fault(m_at, "hexadecimal data that ends with a comma");
    }
    return true;
}

bool WineTextParser::SkipContinuation() {
    SkipBlanks();
    while (Skip("\\")) {
        if (!AtLineEnd()) return Fault(m_at, "a backslash in hexadecimal data that does not end its line");
        if (Peek() == '\r') ++m_at;
        if (Peek() == '\n') ++m_at;
        SkipBlanks();
        if (m_at == m_text.size()) return Fault(m_at, "the file ends inside of hexadecimal data");
    }
    return true;
}

}  // namespace

SourceStatus ParseWineText(RegistryStore& store, std::span<const std::byte> text, const std::string& name) {
    try {
        return WineTextParser(store, {reinterpret_cast<const char*>(text.data()), text.size()}, name).Run();
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(name);
    }
}

SourceStatus LoadWineText(RegistryStore& store, const std::string& file) {
    try {
        SourceBytes bytes;
        if (SourceStatus status = ReadSourceFile(file, bytes)) return status;
        return ParseWineText(store, bytes.View(), file);
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(file);
    }
}

SourceStatus LoadWinePrefix(RegistryStore& store, const std::string& folder) {
    store.SetLayout(RegistryLayout::Wine32);  // until a file says otherwise: old prefixes say nothing
    try {
        for (const char* const name : {"/system.reg", "/user.reg", "/userdef.reg"}) {
            const std::string file = folder + name;
            if (std::strcmp(name, "/system.reg") != 0 && !SourceFileExists(file)) continue;
            if (SourceStatus status = CheckInside(folder, file)) return status;
            if (SourceStatus status = LoadWineText(store, file)) return status;
        }
        return {};
    } catch (const std::bad_alloc&) {
        return OutOfMemoryFault(folder);
    }
}

}  // namespace roundup
