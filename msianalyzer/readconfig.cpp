#include "msianalyzer/readconfig.h"

#include <cstdint>
#include <cstring>

#include "platform/filesystem.h"
#include "platform/machine.h"
#include "utility/fileinfo.h"
#include "utility/log.h"
#include "utility/textscan.h"

namespace roundup {

namespace {

constexpr std::uint64_t kSmallestFile = 3;        // bytes
constexpr std::uint64_t kLargestFile = 0x400000;  // bytes
constexpr std::size_t kLongestLine = 4095;        // characters, a carriage return included
constexpr char16_t kMark = 0xFEFF;

// One file of the host's file object, for a scope.
class ProbeFile {
  public:
    ProbeFile() : m_io(CurrentMachine().ClosedLibraries().GetProbeIO()) {}
    ~ProbeFile() {
        if (m_open) m_io->Close(0);
        if (m_io != nullptr) m_io->Release();
    }
    ProbeFile(const ProbeFile&) = delete;
    ProbeFile& operator=(const ProbeFile&) = delete;

    bool IsThere() const noexcept { return m_io != nullptr; }
    bool Open(const char16_t* path) {
        m_open = m_io->Open(path, kGenericRead, kShareRead | kShareWrite, kOpenExisting) != -1;
        return m_open;
    }
    bool Read(void* buffer, std::uint32_t size) {
        std::uint32_t done = 0;
        return m_io->Read(0, buffer, size, &done) == 0 && done == size;
    }

  private:
    IProbeIO* const m_io;
    bool m_open = false;
};

}  // namespace

ResultCode CReadConfig::Open(const char16_t* path) {
    m_text.clear();
    m_position = 0;
    if (path == nullptr || path[0] == u'\0') return Fail(SmallCode::BadArgument);
    ProbeFile file;
    if (!file.IsThere()) return Fail(SmallCode::BufferAllocation);
    if (!file.Open(path)) return Fail(SmallCode::OpenFailure);
    const std::uint64_t size = GetFileSize64(path);
    if (size < kSmallestFile || size > kLargestFile) return Fail(SmallCode::BadData, size);
    // An odd byte at the end is no character.
    m_text.resize(static_cast<std::size_t>(size) / 2 + 1);
    const bool whole = file.Read(m_text.data(), static_cast<std::uint32_t>(size));
    m_text.resize(static_cast<std::size_t>(size) / 2);
    const bool marked = m_text.front() == kMark;
    m_position = 1;
    if (whole && marked) return kSuccess;
    m_text.clear();
    m_position = 0;
    return Fail(whole ? SmallCode::BadData : SmallCode::ShortRead);
}

ResultCode CReadConfig::ReadLine(std::u16string_view& line) {
    if (m_position >= m_text.size()) return FailQuiet(SmallCode::NoMoreItems);
    const std::u16string_view rest = std::u16string_view(m_text).substr(m_position);
    line = rest.substr(0, FindFirst(rest, u'\n'));
    m_position += line.size() + 1;
    if (line.size() > kLongestLine) {
        TraceLine(u"Line of a rule file is too long: %s\n", line.substr(0, 80));
        line = {};
    }
    line = UpToZero(line);
    while (!line.empty() && line.back() == u'\r') line.remove_suffix(1);
    return kSuccess;
}

}  // namespace roundup
