#include "appcenter/appsoftdata/linereader.h"

#include "platform/machine.h"
#include "utility/utf.h"

namespace roundup {

namespace {

constexpr std::size_t kPathBytes = 520;  // with a terminator
constexpr int kEndOfText = 0x1A;

}  // namespace

LineReader::~LineReader() {
    if (m_file != kInvalidFile) CurrentMachine().Files().Close(m_file);
}

// Opened by its UTF-16 path: narrow paths would fail where the platform's code page lacks a character of the user's
// name.
ResultCode LineReader::Open(const char16_t* path) {
    const std::size_t length = ToUtf8(path).size();
    if (length >= kPathBytes) return Fail(SmallCode::GeneralFailure, length);
    const Win32Error error =
        CurrentMachine().Files().Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting, m_file);
    return error == kErrorSuccess ? kSuccess : Fail(SmallCode::GeneralFailure, error);
}

bool LineReader::Fill() {
    if (m_next < m_filled) return true;
    m_next = m_filled = 0;
    if (m_end || m_file == kInvalidFile) return false;
    const Win32Error error = CurrentMachine().Files().Read(m_file, m_bytes, sizeof m_bytes, m_filled);
    if (error != kErrorSuccess) m_filled = 0;
    m_end = m_filled == 0;
    return !m_end;
}

int LineReader::PeekByte() { return Fill() ? static_cast<unsigned char>(m_bytes[m_next]) : -1; }

int LineReader::TakeByte() {
    int byte = PeekByte();
    if (byte < 0) return byte;
    if (byte == kEndOfText) {
        m_end = true;
        m_next = m_filled;
        return -1;
    }
    ++m_next;
    if (byte == '\r' && PeekByte() == '\n') {
        byte = '\n';
        ++m_next;
    }
    return byte;
}

bool LineReader::Next(std::string_view& line) {
    std::size_t length = 0;
    while (length < kLine - 1) {
        const int byte = TakeByte();
        if (byte < 0) return false;
        m_line[length++] = static_cast<char>(byte);
        if (byte == '\n') break;
    }
    line = {m_line, length};
    line = line.substr(0, line.find('\0'));
    return true;
}

}  // namespace roundup
