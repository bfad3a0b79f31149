// MachineBuilder::WriteTo: the machine as a recorded folder.
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "platform/recorded/winpath.h"
#include "tests/support/machinebuilder.h"
#include "utility/utf.h"

namespace roundup {

namespace {

std::filesystem::path HostPath(std::string_view utf8) {
    return {std::u8string(reinterpret_cast<const char8_t*>(utf8.data()), utf8.size())};
}

void WriteHostFile(const std::filesystem::path& path, const std::string& bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file.flush()) throw std::runtime_error("cannot write " + path.string());
}

void WriteEntry(const std::filesystem::path& root, std::u16string path, const std::optional<std::string>& bytes) {
    for (char16_t& c : path) {
        if (c == u'\\') c = u'/';
    }
    const std::filesystem::path place = root / HostPath(ToUtf8(path));
    if (bytes) {
        WriteHostFile(place, *bytes);
    } else {
        std::filesystem::create_directories(place);
    }
}

std::u16string Escaped(std::u16string_view text) {
    std::u16string result;
    for (const char16_t c : text) {
        if (c == u'\\' || c == u'"') result.push_back(u'\\');
        result.push_back(c);
    }
    return result;
}

// Texts that a line can hold are written as such, everything else as bytes.
std::u16string ValueText(std::uint32_t type, const std::string& data) {
    constexpr std::u16string_view kDigits = u"0123456789abcdef";
    std::u16string text;
    if (type == kRegSz && data.size() >= 2 && data.size() % 2 == 0) {
        for (std::size_t i = 0; i + 2 < data.size(); i += 2) {
            text.push_back(static_cast<char16_t>(static_cast<unsigned char>(data[i]) |
                                                 static_cast<unsigned char>(data[i + 1]) << 8));
        }
        const bool plain =
            data.ends_with(std::string(2, '\0')) && text.find_first_of(std::u16string_view(u"\0\r\n", 3)) == text.npos;
        if (plain) return u"\"" + Escaped(text) + u"\"";
    }
    text = u"hex";
    if (type != kRegBinary) {
        text += u"(";
        bool started = false;
        for (int shift = 28; shift >= 0; shift -= 4) {
            const std::uint32_t digit = type >> shift & 0xF;
            started = started || digit != 0 || shift == 0;
            if (started) text.push_back(kDigits[digit]);
        }
        text += u")";
    }
    text += u":";
    for (std::size_t i = 0; i < data.size(); ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        if (i != 0) text += u",";
        if (i % 25 == 24) text += u"\\\r\n  ";
        text.push_back(kDigits[byte >> 4]);
        text.push_back(kDigits[byte & 0xF]);
    }
    return text;
}

}  // namespace

std::string MachineBuilder::RegistryText() const {
    std::u16string text = u"\xFEFFWindows Registry Editor Version 5.00\r\n\r\n";
    for (const RegistryKey& key : m_keys) {
        text += u"[" + key.path + u"]\r\n";
        for (const RegistryValue& value : key.values) {
            text += value.name.empty() ? u"@" : u"\"" + Escaped(value.name) + u"\"";
            text += u"=" + ValueText(value.type, value.data) + u"\r\n";
        }
        text += u"\r\n";
    }
    std::string bytes;
    bytes.reserve(text.size() * 2);
    for (const char16_t c : text) {
        bytes.push_back(static_cast<char>(c & 0xFF));
        bytes.push_back(static_cast<char>(c >> 8));
    }
    return bytes;
}

void MachineBuilder::WriteTo(const std::string& folder) const {
    const bool memoryOnly = !m_memoryOnly.deniedKeys.empty() || !m_memoryOnly.readOnlyKeys.empty() ||
                            !m_memoryOnly.deniedFiles.empty() || m_memoryOnly.writeLimit;
    if (memoryOnly) throw std::runtime_error("the machine has what only one in memory can have");
    const std::filesystem::path root = HostPath(folder);
    std::filesystem::create_directories(root);
    if (!std::filesystem::is_empty(root)) throw std::runtime_error(folder + " is not empty");
    WriteHostFile(root / "machine.ini", WriteMachineSettings(m_settings));
    if (!m_keys.empty()) WriteHostFile(root / "registry" / "machine.reg", RegistryText());
    std::filesystem::create_directories(root / "drives" / "c");
    for (const auto& [path, bytes] : m_files) {
        WinPath parsed;
        if (ParsePath(path, parsed) != kErrorSuccess) throw std::runtime_error("a file has no proper path");
        const std::u16string drive(1, ToLower(parsed.Drive()));
        WriteEntry(root, u"drives\\" + drive + u"\\" + std::u16string(parsed.Parts()), bytes);
    }
    for (const auto& [path, bytes] : m_hostFiles) WriteEntry(root, u"host\\" + path, bytes);
}

}  // namespace roundup
