#include "utility/reg.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>

#include "platform/machine.h"
#include "utility/textscan.h"

namespace roundup {

namespace {

// Asked once: source threads open thousands of keys, and the architecture does not change under them.
struct RegistryViews {
    bool both = CurrentMachine().System().GetNativeArchitecture() == kArchitectureAmd64;
};

std::uint32_t ViewMask(bool view64) {
    if (!ProcessWide<RegistryViews>().both) return 0;
    return view64 ? kKeyWow64Key64 : kKeyWow64Key32;
}

IRegistry& Registry() { return CurrentMachine().Registry(); }

// A key may lose entries while it is read, which is no event worth a line.
ResultCode FailRead(Win32Error error, std::source_location where = std::source_location::current()) {
    if (error == kErrorNoMoreFiles || error == kErrorFileNotFound) return FailWin32Quiet(error, where);
    return FailWin32(error, 1, where);
}

// The first words of a RegValueBlock, in front of the data.
constexpr std::size_t kBlockHeader = 2;
constexpr std::size_t kSmallestBlock = 16;  // bytes

}  // namespace

std::span<const std::byte> RegValueBlock::Data() const noexcept {
    if (IsNull()) return {};
    return {reinterpret_cast<const std::byte*>(m_block.get() + kBlockHeader), Size()};
}

bool RegValueBlock::Assign(std::uint32_t type, std::span<const std::byte> data) noexcept {
    const std::size_t bytes = std::max(kSmallestBlock, kBlockHeader * sizeof(std::uint32_t) + data.size());
    m_block.reset(new (std::nothrow) std::uint32_t[(bytes + 3) / sizeof(std::uint32_t)]);
    if (m_block == nullptr) return false;
    m_block[0] = type;
    m_block[1] = static_cast<std::uint32_t>(data.size());
    if (!data.empty()) std::memcpy(m_block.get() + kBlockHeader, data.data(), data.size());
    return true;
}

CWFYRegKey::~CWFYRegKey() { Close(); }

void CWFYRegKey::Close() noexcept {
    if (m_key != 0) Registry().CloseKey(m_key);
    m_key = 0;
    m_keyIndex = m_keyCount = m_valueIndex = m_valueCount = 0;
    m_buffer = nullptr;
    m_bufferSize = 0;
}

bool CWFYRegKey::SizeBuffer(const KeyInfo& info) noexcept {
    const std::uint64_t data = std::uint64_t{info.longestValueData} + 2;
    const std::uint64_t subKey = (std::uint64_t{info.longestSubKey} + 1) * 2;
    const std::uint64_t valueName = (std::uint64_t{info.longestValueName} + 1) * 2;
    const std::uint64_t size = std::max({data, subKey, valueName});
    if (size > UINT32_MAX - kSlack) return false;
    const auto needed = static_cast<std::uint32_t>(size) + kSlack;
    if (needed <= kInlineSize) {
        m_buffer = m_inline;
    } else {
        if (needed > m_blockSize) {
            m_block.reset(new (std::nothrow) std::byte[needed]);
            m_blockSize = m_block != nullptr ? needed : 0;
        }
        m_buffer = m_block.get();
    }
    if (m_buffer == nullptr) return false;
    m_bufferSize = static_cast<std::uint32_t>(size);
    return true;
}

// Stands for clearing the whole buffer before each read: only what lies directly behind the data is ever looked at,
// up to the end of the first whole character, and a value may fill the buffer to its last byte.
void CWFYRegKey::EndText(std::uint32_t size) noexcept { std::memset(m_buffer + size, 0, kSlack - 1); }

ResultCode CWFYRegKey::Open(KeyHandle parent, const char16_t* subKey, bool view64, bool write) {
    const std::uint32_t view = ViewMask(view64);
    KeyHandle key = 0;
    Win32Error error = Registry().OpenKey(parent, subKey, (write ? kKeyReadWrite : kKeyRead) | view, key);
    if (write && error == kErrorAccessDenied) error = Registry().OpenKey(parent, subKey, kKeyRead | view, key);
    // Only now: the parent may be this object's own key.
    Close();
    if (error != kErrorSuccess || key == 0) return FailWin32Quiet(error);
    m_key = key;

    KeyInfo info;
    error = Registry().QueryInfo(m_key, info);
    if (error != kErrorSuccess) return FailWin32(error);
    if (!SizeBuffer(info)) return Fail(SmallCode::ObjectAllocation);
    m_keyCount = info.subKeys;
    m_valueCount = info.values;
    return kSuccess;
}

ResultCode CWFYRegKey::OpenOrCreate(KeyHandle parent, const char16_t* subKey, bool view64) {
    const std::uint32_t access = kKeyAllAccess | ViewMask(view64);
    KeyHandle key = 0;
    Win32Error error = Registry().OpenKey(parent, subKey, access, key);
    if (error != kErrorSuccess) error = Registry().CreateKey(parent, subKey, access, key);
    Close();
    if (error != kErrorSuccess || key == 0) return FailWin32Quiet(error);
    m_key = key;
    return kSuccess;
}

ResultCode CWFYRegKey::EnumKeyView(std::u16string_view& name) {
    name = {};
    if (m_keyIndex >= m_keyCount) return FailQuiet(SmallCode::NoMoreItems);
    auto* text = reinterpret_cast<char16_t*>(m_buffer);
    std::uint32_t length = m_bufferSize / 2;
    const Win32Error error = Registry().EnumKey(m_key, m_keyIndex++, text, length);
    if (error != kErrorSuccess) return FailRead(error);
    name = UpToZero({text, length});
    return kSuccess;
}

ResultCode CWFYRegKey::EnumKey(OwnedString& name) {
    std::u16string_view text;
    if (auto rc = EnumKeyView(text); Failed(rc)) return PassQuiet(rc);
    if (!AssignString(name, text)) return Fail(SmallCode::ObjectAllocation);
    return kSuccess;
}

ResultCode CWFYRegKey::EnumValue(OwnedString& name, RegValueBlock& block) {
    if (m_valueIndex >= m_valueCount) return FailQuiet(SmallCode::NoMoreItems);
    char16_t text[260];
    std::uint32_t length = static_cast<std::uint32_t>(std::size(text));
    std::uint32_t type = kRegNone;
    std::uint32_t size = m_bufferSize;
    const Win32Error error = Registry().EnumValue(m_key, m_valueIndex++, text, length, type, m_buffer, size);
    if (error != kErrorSuccess) return FailRead(error);
    if (!AssignString(name, UpToZero({text, length}))) return Fail(SmallCode::ObjectAllocation);
    if (!block.Assign(type, Bytes(size))) return Fail(SmallCode::ObjectAllocation);
    return kSuccess;
}

ResultCode CWFYRegKey::GetQword(const char16_t* name, std::uint64_t& value) {
    value = 0;
    std::uint64_t number = 0;
    std::uint32_t type = kRegNone;
    std::uint32_t size = sizeof number;
    const Win32Error error = Registry().QueryValue(m_key, name, type, &number, size);
    if (error != kErrorSuccess) return FailRead(error);
    value = number;
    return kSuccess;
}

ResultCode CWFYRegKey::GetDword(const char16_t* name, std::uint32_t& value) {
    value = 0;
    std::uint32_t number = 0;
    std::uint32_t type = kRegNone;
    std::uint32_t size = sizeof number;
    const Win32Error error = Registry().QueryValue(m_key, name, type, &number, size);
    if (error != kErrorSuccess) return FailWin32Quiet(error);
    value = number;
    return kSuccess;
}

ResultCode CWFYRegKey::ReadText(const char16_t* name, std::u16string_view& text, std::uint32_t& size) {
    if (m_buffer == nullptr) return Fail(SmallCode::GeneralFailure);
    std::uint32_t type = kRegNone;
    size = m_bufferSize;
    const Win32Error error = Registry().QueryValue(m_key, name, type, m_buffer, size);
    if (error != kErrorSuccess) return FailWin32Quiet(error);
    EndText(size);
    const auto* characters = reinterpret_cast<const char16_t*>(m_buffer);
    // An odd byte at the end is the lower half of a character in a text, and dropped from a list.
    text = type == kRegMultiSz ? std::u16string_view(characters, size / 2) : UpToZero({characters, (size + 1) / 2});
    return kSuccess;
}

ResultCode CWFYRegKey::GetStringView(const char16_t* name, std::u16string_view& text) {
    std::uint32_t size = 0;
    text = {};
    return ReadText(name, text, size);
}

ResultCode CWFYRegKey::GetString(const char16_t* name, OwnedString& text, std::size_t* count) {
    std::u16string_view content;
    std::uint32_t size = 0;
    if (auto rc = ReadText(name, content, size); Failed(rc)) return PassQuiet(rc);
    if (!AssignString(text, content)) return Fail(SmallCode::ObjectAllocation);
    if (count != nullptr) *count = size / 2;
    return kSuccess;
}

ResultCode CWFYRegKey::SetValue(const char16_t* name, std::uint32_t type, const void* data, std::uint32_t size) {
    const Win32Error error = Registry().SetValue(m_key, name, type, data, size);
    if (error != kErrorSuccess) return FailWin32(error);
    return kSuccess;
}

ResultCode CWFYRegKey::DeleteValue(const char16_t* name) {
    if (name == nullptr) return Fail(SmallCode::GeneralFailure);
    const Win32Error error = Registry().DeleteValue(m_key, name);
    if (error != kErrorSuccess) return FailWin32(error);
    return kSuccess;
}

ResultCode CWFYRegKey::QueryValue(const char16_t* name, RegValueBlock& block) {
    if (m_buffer == nullptr) return Fail(SmallCode::GeneralFailure);
    std::uint32_t type = kRegNone;
    std::uint32_t size = m_bufferSize;
    const Win32Error error = Registry().QueryValue(m_key, name, type, m_buffer, size);
    if (error != kErrorSuccess) return FailWin32Quiet(error);
    if (!block.Assign(type, Bytes(size))) return Fail(SmallCode::ObjectAllocation);
    return kSuccess;
}

}  // namespace roundup
