#include "msianalyzer/saveregistry2datafile.h"

#include <cstring>
#include <memory>

#include "msianalyzer/datafile.h"
#include "msianalyzer/msianalyzer.h"
#include "utility/iremoverepeatreg.h"
#include "utility/log.h"
#include "utility/reg.h"

namespace roundup {

namespace {

// A registry has at most so many levels (learn.microsoft.com, "Registry element size limits"). Records of machines
// that nobody runs may hold more.
constexpr std::size_t kMaxDepth = 512;

bool IsAbsent(ResultCode rc) noexcept { return Win32Of(rc) == kErrorFileNotFound; }

template <class T>
std::byte* Put(std::byte* at, T number) noexcept {
    std::memcpy(at, &number, sizeof number);
    return at + sizeof number;
}
std::byte* Put(std::byte* at, const void* bytes, std::size_t size) noexcept {
    if (size != 0) std::memcpy(at, bytes, size);
    return at + size;
}
std::byte* Put(std::byte* at, std::u16string_view text) noexcept {
    const std::size_t size = text.size() * sizeof(char16_t);
    return Put(Put(at, static_cast<std::uint32_t>(size)), text.data(), size);
}

}  // namespace

// Values of one key tend to come one behind the other, and opening it is most of the work.
struct CSaveRegistry2DataFile::ValueKey {
    KeyHandle root = 0;
    bool view64 = false;
    std::u16string path;
    ResultCode result;
    CWFYRegKey key;
};

CSaveRegistry2DataFile::CSaveRegistry2DataFile(CDataFile& file, const CMSIAnalyzer* analyzer) noexcept
    : m_file(file), m_analyzer(analyzer) {}

CSaveRegistry2DataFile::~CSaveRegistry2DataFile() = default;

// The keys from the start of the walk down to where it is.
struct CSaveRegistry2DataFile::Walk {
    struct Level {
        std::unique_ptr<CWFYRegKey> key;
        std::size_t pathLength;
    };
    KeyHandle root;
    bool view64;
    std::u16string path;
    std::vector<Level> levels{};
    OwnedString name{};
};

ResultCode CSaveRegistry2DataFile::SaveKey(KeyHandle root, std::u16string_view key, bool view64) {
    Walk walk{root, view64, std::u16string(key)};
    if (const ResultCode rc = EnterKey(walk); Failed(rc)) return Pass(rc);
    while (!walk.levels.empty()) {
        if (const ResultCode rc = NextSubkey(walk); Failed(rc)) return Pass(rc);
    }
    return kSuccess;
}

// Writes the key of the walk's path with its values, and puts it on top of the walk; nothing for a key that is not
// there or was seen before.
ResultCode CSaveRegistry2DataFile::EnterKey(Walk& walk) {
    auto key = std::make_unique<CWFYRegKey>();
    if (const ResultCode rc = key->Open(walk.root, walk.path.c_str(), walk.view64, true); Failed(rc)) {
        return IsAbsent(rc) ? kSuccess : Pass(rc);
    }
    IRemoveRepeatReg* const filter = m_analyzer != nullptr ? m_analyzer->Filter() : nullptr;
    const auto low = static_cast<std::uint32_t>(walk.root);
    if (filter != nullptr && filter->IsKeySeen(&low, walk.path.c_str(), walk.view64) != 0) return kSuccess;
    if (const ResultCode rc = WriteRecord(walk.root, walk.path, u"", kRegNone, {}, walk.view64); Failed(rc))
        return Pass(rc);
    if (const ResultCode rc = WriteValues(walk, *key); Failed(rc)) return Pass(rc);
    if (key->KeyCount() != 0) walk.levels.push_back({std::move(key), walk.path.size()});
    return kSuccess;
}

ResultCode CSaveRegistry2DataFile::WriteValues(const Walk& walk, CWFYRegKey& key) {
    RegValueView value;
    for (;;) {
        const ResultCode rc = key.EnumValueView(value);
        if (Small(rc) == SmallCode::NoMoreItems) return kSuccess;
        if (Failed(rc)) return Pass(rc);
        const ResultCode written =
            WriteRecord(walk.root, walk.path, value.Name(), value.Type(), value.Data(), walk.view64);
        if (Failed(written)) return Pass(written);
    }
}

// Goes on to the next subkey of the innermost key, or leaves that key.
ResultCode CSaveRegistry2DataFile::NextSubkey(Walk& walk) {
    const Walk::Level& level = walk.levels.back();
    const std::size_t pathLength = level.pathLength;
    walk.path.resize(pathLength);
    const ResultCode rc = level.key->EnumKey(walk.name);
    if (Small(rc) == SmallCode::NoMoreItems) {
        walk.levels.pop_back();
        return kSuccess;
    }
    if (Failed(rc)) return Pass(rc);
    if (walk.levels.size() == kMaxDepth) {
        TraceLine(u"Registry is too deep: %s\n", walk.path.substr(0, 260));
        walk.levels.pop_back();
        return kSuccess;
    }
    walk.path.append(u"\\").append(walk.name);
    const ResultCode entered = EnterKey(walk);
    return Failed(entered) ? Pass(entered) : kSuccess;
}

ResultCode CSaveRegistry2DataFile::SaveValue(KeyHandle root, std::u16string_view key, std::u16string_view name,
                                             bool view64) {
    if (const ResultCode rc = OpenValueKey(root, key, view64); Failed(rc)) return IsAbsent(rc) ? kSuccess : Pass(rc);
    const std::u16string value(name);
    RegValueBlock block;
    if (const ResultCode rc = m_valueKey->key.QueryValue(value.c_str(), block); Failed(rc)) {
        return IsAbsent(rc) ? kSuccess : Pass(rc);
    }
    IRemoveRepeatReg* const filter = m_analyzer != nullptr ? m_analyzer->Filter() : nullptr;
    const auto low = static_cast<std::uint32_t>(root);
    if (filter != nullptr && filter->IsValueSeen(&low, m_valueKey->path.c_str(), value.c_str(), view64) != 0)
        return kSuccess;
    const ResultCode rc = WriteRecord(root, key, name, block.Type(), block.Data(), view64);
    return Failed(rc) ? Pass(rc) : kSuccess;
}

ResultCode CSaveRegistry2DataFile::OpenValueKey(KeyHandle root, std::u16string_view key, bool view64) {
    if (m_valueKey == nullptr) m_valueKey = std::make_unique<ValueKey>();
    ValueKey& last = *m_valueKey;
    // A handle may stand for another key the next time.
    const bool isPredefined = root >= kHkeyClassesRoot;
    if (isPredefined && last.root == root && last.view64 == view64 && last.path == key) return PassQuiet(last.result);
    last.root = root;
    last.view64 = view64;
    last.path = key;
    last.result = last.key.Open(root, last.path.c_str(), view64, false);
    return PassQuiet(last.result);
}

// The file takes each piece with a call of the platform, so the pieces go in together.
ResultCode CSaveRegistry2DataFile::WriteRecord(KeyHandle root, std::u16string_view key, std::u16string_view name,
                                               std::uint32_t type, std::span<const std::byte> data, bool view64) {
    constexpr std::size_t kFixedPart = sizeof(std::uint64_t) + 5 * sizeof(std::uint32_t);
    const std::size_t size = kFixedPart + (key.size() + name.size()) * sizeof(char16_t) + data.size();
    if (size > UINT32_MAX) return Fail(SmallCode::BadData);
    if (m_record.size() < size) m_record.resize(size);
    std::byte* at = Put(m_record.data(), std::uint64_t{root});
    at = Put(Put(at, key), name);
    at = Put(Put(at, type), static_cast<std::uint32_t>(data.size()));
    at = Put(at, data.data(), data.size());
    at = Put(at, std::uint32_t{view64});
    const ResultCode rc = m_file.WriteBytes(m_record.data(), static_cast<std::uint32_t>(at - m_record.data()));
    return Failed(rc) ? Pass(rc) : kSuccess;
}

}  // namespace roundup
