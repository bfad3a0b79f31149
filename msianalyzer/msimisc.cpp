#include "msianalyzer/msimisc.h"

#include <new>

#include "platform/machine.h"

namespace roundup {

namespace {

constexpr std::uint32_t kFirstRoom = 1024;  // characters; few texts are longer

}  // namespace

ResultCode GetRecordString(InstallerHandle record, std::uint32_t column, TextArena& texts, std::u16string_view& text) {
    text = {};
    IInstaller& installer = CurrentMachine().Installer();
    char16_t* room = texts.Room(kFirstRoom - 1);
    if (room == nullptr) return Fail(SmallCode::BufferAllocation);
    std::uint32_t length = kFirstRoom;
    Win32Error error = installer.GetString(record, column, room, length);
    if (error == kErrorMoreData) {
        room = texts.Room(length);
        if (room == nullptr) return Fail(SmallCode::BufferAllocation, length);
        ++length;
        error = installer.GetString(record, column, room, length);
    }
    if (error != kErrorSuccess) return Fail(SmallCode::InstallerFailure, error);
    text = texts.Keep(length);
    return kSuccess;
}

void GetRecordInteger(InstallerHandle record, std::uint32_t column, std::int32_t& number) {
    number = CurrentMachine().Installer().GetInteger(record, column);
}

ResultCode GetRecordStream(InstallerHandle record, std::uint32_t column, std::unique_ptr<std::byte[]>& buffer,
                           std::uint32_t& size) {
    IInstaller& installer = CurrentMachine().Installer();
    buffer.reset();
    size = installer.GetDataSize(record, column);
    if (static_cast<std::int32_t>(size) <= 0) return Fail(SmallCode::InstallerFailure, size);
    buffer.reset(new (std::nothrow) std::byte[size]);
    if (buffer == nullptr) return Fail(SmallCode::BufferAllocation, size);
    const Win32Error error = installer.ReadStream(record, column, buffer.get(), size);
    if (error == kErrorSuccess) return kSuccess;
    buffer.reset();
    size = 0;
    return Fail(SmallCode::InstallerFailure, error);
}

std::u16string_view GetLongName(std::u16string_view text) noexcept {
    const std::size_t bar = text.find(u'|');
    return bar == std::u16string_view::npos ? text : text.substr(bar + 1);
}

RecordColumns& RecordColumns::Text(std::u16string_view& text) {
    ++m_column;
    if (Succeeded(m_result)) m_result = GetRecordString(m_record, m_column, m_texts, text);
    return *this;
}

RecordColumns& RecordColumns::Integer(std::int32_t& number) {
    ++m_column;
    if (Succeeded(m_result)) GetRecordInteger(m_record, m_column, number);
    return *this;
}

RecordColumns& RecordColumns::Stream(std::unique_ptr<std::byte[]>& buffer, std::uint32_t& size) {
    ++m_column;
    if (Succeeded(m_result)) m_result = GetRecordStream(m_record, m_column, buffer, size);
    return *this;
}

}  // namespace roundup
