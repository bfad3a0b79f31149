// Fields of records of an installer database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "platform/installer.h"
#include "utility/result.h"
#include "utility/textarena.h"

namespace roundup {

// The text goes into the arena; a null field is empty. Small code 0x18 for a failure of the platform, 5 when memory
// is short.
ResultCode GetRecordString(InstallerHandle record, std::uint32_t column, TextArena& texts, std::u16string_view& text);

// kNullInteger for a null field.
void GetRecordInteger(InstallerHandle record, std::uint32_t column, std::int32_t& number);

// Small code 0x18 for a stream without bytes or one that cannot be read, 5 when memory is short.
ResultCode GetRecordStream(InstallerHandle record, std::uint32_t column, std::unique_ptr<std::byte[]>& buffer,
                           std::uint32_t& size);

// A short name and a long one stand in one column as "short|long": the long one, or the whole text.
std::u16string_view GetLongName(std::u16string_view text) noexcept;

// Reads the columns of a record one behind the other, as the query has them; after a failure nothing more is read.
class RecordColumns {
  public:
    RecordColumns(InstallerHandle record, TextArena& texts) noexcept : m_record(record), m_texts(texts) {}

    RecordColumns& Text(std::u16string_view& text);
    RecordColumns& Integer(std::int32_t& number);
    RecordColumns& Stream(std::unique_ptr<std::byte[]>& buffer, std::uint32_t& size);
    ResultCode Result() const noexcept { return m_result; }

  private:
    const InstallerHandle m_record;
    TextArena& m_texts;
    std::uint32_t m_column = 0;
    ResultCode m_result;
};

}  // namespace roundup
