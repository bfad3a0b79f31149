// The registry key class: the system's one way into the registry.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

#include "platform/registry.h"
#include "utility/kvobject.h"
#include "utility/ownedstring.h"
#include "utility/result.h"

namespace roundup {

// One value as it stands in the registry: a heap block of type, byte count and the bytes.
class RegValueBlock {
  public:
    RegValueBlock() noexcept = default;

    bool IsNull() const noexcept { return m_block == nullptr; }
    std::uint32_t Type() const noexcept { return IsNull() ? kRegNone : m_block[0]; }
    // Bytes. The bytes themselves; a text has whatever terminator was stored, also none.
    std::uint32_t Size() const noexcept { return IsNull() ? 0 : m_block[1]; }
    std::span<const std::byte> Data() const noexcept;

    // Replaces the content by a copy. False, and the block null, when memory is short.
    [[nodiscard]] bool Assign(std::uint32_t type, std::span<const std::byte> data) noexcept;
    void Reset() noexcept { m_block.reset(); }

  private:
    std::unique_ptr<std::uint32_t[]> m_block;
};

// One value as EnumValueView shows it: the name lies in the view itself, the bytes in the key until its next read.
class RegValueView {
  public:
    std::u16string_view Name() const noexcept { return {m_name, m_nameLength}; }
    std::uint32_t Type() const noexcept { return m_type; }
    std::span<const std::byte> Data() const noexcept { return m_data; }
    // The bytes as text, to be read as GetString reads them: up to the first zero whatever the type is. An odd byte
    // at the end is the lower half of a character.
    std::u16string_view Text() const noexcept;
    // The bytes as a list of texts, as GetString hands it out: whole when the type is REG_MULTI_SZ, else one text.
    std::u16string_view TextList() const noexcept;

  private:
    friend class CWFYRegKey;
    static constexpr std::uint32_t kNameSize = 260;

    std::span<const std::byte> m_data;
    std::uint32_t m_type = kRegNone;
    std::uint32_t m_nameLength = 0;
    char16_t m_name[kNameSize];
};

// The operations of one open key. A failure is small code 0x21 with the Win32 error in the upper half unless told
// otherwise. Names may be null or empty: the default value. The order of the operations, behind those of IKvObject, is
// fixed.
class IRegIO : public IKvObject {
  public:
    // Opens subKey (null or empty: the parent itself) below a root or an open key, in the 64-bit or the 32-bit view;
    // a 32-bit machine has one view. With write set, a key that can only be read opens for reading all the same. A
    // failure is not logged. Opening once more closes the key first and starts anew.
    virtual ResultCode Open(KeyHandle parent, const char16_t* subKey, bool view64, bool write) = 0;
    // Opens or makes the key with all access. No enumeration and no GetString on such a key.
    virtual ResultCode OpenOrCreate(KeyHandle parent, const char16_t* subKey, bool view64) = 0;
    // The next subkey's name. Small code NoMoreItems at the end of what was there when the key was opened; a key that
    // lost subkeys since then ends with 0x21 instead.
    virtual ResultCode EnumKey(OwnedString& name) = 0;
    // The next value, with the same ends. A name above 259 characters is error 234, and the walk goes on behind it.
    virtual ResultCode EnumValue(OwnedString& name, RegValueBlock& block) = 0;
    // The value's bytes as a number whatever its type is. 0 on failure; a value of more bytes is error 234.
    virtual ResultCode GetQword(const char16_t* name, std::uint64_t& value) = 0;
    virtual ResultCode GetDword(const char16_t* name, std::uint32_t& value) = 0;
    // The value's bytes as a text up to the first zero whatever its type is; REG_MULTI_SZ whole, with its zeros. An
    // empty value gives a null string. count: the value's bytes divided by 2. On failure both keep what they held,
    // and only GeneralFailure (a key without a buffer) and ObjectAllocation are logged.
    virtual ResultCode GetString(const char16_t* name, OwnedString& text, std::size_t* count = nullptr) = 0;
    virtual ResultCode SetValue(const char16_t* name, std::uint32_t type, const void* data, std::uint32_t size) = 0;
    // A null name is small code GeneralFailure.
    virtual ResultCode DeleteValue(const char16_t* name) = 0;

  protected:
    KeyHandle m_key = 0;
};

// A key on the stack: opened once, walked once, closed by its end. Used by one thread.
class CWFYRegKey final : public CKvObject<IRegIO> {
  public:
    CWFYRegKey() noexcept = default;
    CWFYRegKey(const CWFYRegKey&) = delete;
    CWFYRegKey& operator=(const CWFYRegKey&) = delete;
    ~CWFYRegKey() override;

    ResultCode Open(KeyHandle parent, const char16_t* subKey, bool view64, bool write) override;
    ResultCode OpenOrCreate(KeyHandle parent, const char16_t* subKey, bool view64) override;
    ResultCode EnumKey(OwnedString& name) override;
    ResultCode EnumValue(OwnedString& name, RegValueBlock& block) override;
    ResultCode GetQword(const char16_t* name, std::uint64_t& value) override;
    ResultCode GetDword(const char16_t* name, std::uint32_t& value) override;
    ResultCode GetString(const char16_t* name, OwnedString& text, std::size_t* count = nullptr) override;
    ResultCode SetValue(const char16_t* name, std::uint32_t type, const void* data, std::uint32_t size) override;
    ResultCode DeleteValue(const char16_t* name) override;

    // The parent to give when a subkey of this key is opened.
    KeyHandle GetKeyHandle() const noexcept { return m_key; }
    // The subkeys that there were when the key was opened: as many as EnumKey goes through at most.
    std::uint32_t KeyCount() const noexcept { return m_keyCount; }
    // As EnumKey and GetString, without a copy: the text lies in the key, zero-terminated, until its next read.
    ResultCode EnumKeyView(std::u16string_view& name);
    ResultCode GetStringView(const char16_t* name, std::u16string_view& text);
    // The value with its type; failures as GetString. block keeps what it held on failure of the read.
    ResultCode QueryValue(const char16_t* name, RegValueBlock& block);
    // The next value, as EnumValue, without copies; for those that read all values of a key once. A value that cannot
    // be read is a failure that is not logged, and the walk goes on behind it.
    ResultCode EnumValueView(RegValueView& value);

  private:
    // What the platform was never told of: room to end a text that fills the buffer to its last byte.
    static constexpr std::uint32_t kSlack = 4;
    // Keys with short names and values are the rule, and their reads should not cost an allocation.
    static constexpr std::uint32_t kInlineSize = 640;

    void Close() noexcept;
    bool SizeBuffer(const KeyInfo& info) noexcept;
    void EndText(std::uint32_t size) noexcept;
    std::span<const std::byte> Bytes(std::uint32_t size) const noexcept { return {m_buffer, size}; }
    ResultCode ReadText(const char16_t* name, std::u16string_view& text, std::uint32_t& size);

    std::uint32_t m_keyIndex = 0;
    std::uint32_t m_keyCount = 0;
    std::uint32_t m_valueIndex = 0;
    std::uint32_t m_valueCount = 0;
    std::byte* m_buffer = nullptr;   // m_inline or m_block; null until Open has sized it
    std::uint32_t m_bufferSize = 0;  // bytes, as the platform is told
    std::unique_ptr<std::byte[]> m_block;
    std::uint32_t m_blockSize = 0;
    alignas(8) std::byte m_inline[kInlineSize];
};

}  // namespace roundup
