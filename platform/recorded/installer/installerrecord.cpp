#include <algorithm>
#include <limits>

#include "platform/installer.h"
#include "platform/recorded/installer/installeranswer.h"
#include "platform/recorded/installer/installerdatabase.h"

namespace roundup {

namespace {

using Kind = TableField::Kind;

constexpr std::uint32_t kMostBytes = std::numeric_limits<std::int32_t>::max();

std::u16string NumberText(std::int32_t number) {
    const std::string digits = std::to_string(number);
    return {digits.begin(), digits.end()};
}

// Straight from the bytes of the database; nearly every text is of this kind.
Win32Error AnswerBytes(const CodePage& page, std::string_view text, char16_t* buffer, std::uint32_t& length) noexcept {
    const std::uint32_t room = length;
    length = static_cast<std::uint32_t>(text.size());
    if (buffer == nullptr) return kErrorSuccess;
    if (room > 0) {
        const std::size_t fitting = std::min<std::size_t>(room - 1, text.size());
        std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(fitting), buffer,
                       [&page](char c) { return page.UnitOf(c); });
        buffer[fitting] = u'\0';
    }
    return text.size() < room ? kErrorSuccess : kErrorMoreData;
}

// The whole text must be a number, with a minus sign or without.
std::int32_t IntegerOf(std::string_view text) noexcept {
    const bool negative = !text.empty() && text.front() == '-';
    if (negative) text.remove_prefix(1);
    if (text.empty()) return kNullInteger;
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return kNullInteger;
        number = number * 10 + (c - '0');
        if (number > std::numeric_limits<std::int32_t>::max()) return kNullInteger;
    }
    return static_cast<std::int32_t>(negative ? -number : number);
}

}  // namespace

TableField InstallerRecord::FieldAt(std::uint32_t column) const noexcept {
    if (column == 0 || column > m_columns->size()) return {};
    return m_rows->At(m_row, (*m_columns)[column - 1]);
}

Win32Error InstallerRecord::Text(std::uint32_t column, char16_t* buffer, std::uint32_t& length) const {
    const TableField field = FieldAt(column);
    switch (field.kind) {
        case Kind::PoolText:
            if (m_rows->Page().IsUnitPerByte(field.poolText)) {
                return AnswerBytes(m_rows->Page(), field.poolText, buffer, length);
            }
            return AnswerInstallerText(m_rows->Page().Decode(field.poolText), buffer, length);
        case Kind::Integer:
            return AnswerInstallerText(NumberText(field.number), buffer, length);
        default:
            return AnswerInstallerText(field.text, buffer, length);
    }
}

std::int32_t InstallerRecord::Integer(std::uint32_t column) const {
    const TableField field = FieldAt(column);
    if (field.kind == Kind::Integer) return field.number;
    return field.kind == Kind::PoolText ? IntegerOf(field.poolText) : kNullInteger;
}

std::uint32_t InstallerRecord::DataSize(std::uint32_t column) {
    const TableField field = FieldAt(column);
    switch (field.kind) {
        case Kind::Integer:
            return sizeof(std::int32_t);
        case Kind::PoolText:
        case Kind::Text: {
            std::uint32_t length = 0;
            (void)Text(column, nullptr, length);
            return length;
        }
        case Kind::Stream: {
            const OpenStream* open = StreamAt(column);
            return open == nullptr
                       ? 0
                       : static_cast<std::uint32_t>(std::min<std::uint64_t>(open->stream.Size(), kMostBytes));
        }
        default:
            return 0;
    }
}

// Null for a field without a stream.
InstallerRecord::OpenStream* InstallerRecord::StreamAt(std::uint32_t column) {
    const auto found = m_streams.find(column);
    if (found != m_streams.end()) return &found->second;
    if (FieldAt(column).kind != Kind::Stream) return nullptr;
    OpenStream open;
    if (!m_rows->OpenStream(m_row, (*m_columns)[column - 1], open.stream)) return nullptr;
    return &m_streams.emplace(column, std::move(open)).first->second;
}

Win32Error InstallerRecord::ReadStream(std::uint32_t column, void* buffer, std::uint32_t& size) {
    if (column > m_columns->size()) return kErrorInvalidParameter;
    OpenStream* open = StreamAt(column);
    if (open == nullptr) return kErrorInvalidDatatype;
    const std::uint64_t left = open->stream.Size() - open->position;
    if (buffer == nullptr) {
        size = static_cast<std::uint32_t>(std::min<std::uint64_t>(left, kMostBytes));
        return kErrorSuccess;
    }
    size = static_cast<std::uint32_t>(std::min<std::uint64_t>(size, left));
    if (!open->stream.Read(open->position, {static_cast<std::byte*>(buffer), size})) return kErrorReadFault;
    open->position += size;
    return kErrorSuccess;
}

}  // namespace roundup
