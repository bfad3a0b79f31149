// The few things of a hive file that are read from its bytes: names as they stand, flags, and where a file is damaged.
//
// Source: the format of hive files as documented by the hivex and libregf projects.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace roundup {

// Offsets are those of cells in the file, as hivex uses them for handles. Every access is checked against the file.
class HiveCells {
  public:
    HiveCells() = default;
    explicit HiveCells(std::span<const std::byte> file) : m_file(file) {}

    struct Key {
        std::u16string name;
        bool link = false;
    };
    // Nothing when there is no key or value, or one whose name no registry can hold.
    std::optional<Key> ReadKey(std::size_t cell) const;
    std::optional<std::u16string> ReadValueName(std::size_t cell) const;
    // The security descriptor of a key, as it stands in the file; empty when there is none.
    std::span<const std::byte> ReadSecurity(std::size_t cell) const;

    struct Fault {
        std::size_t offset;
        const char* what;
    };
    // What is wrong with the frame of the file: its header, its blocks and their division into cells. This is what a
    // file that was cut or is none shows first.
    std::optional<Fault> FindFault() const;

  private:
    bool Has(std::size_t offset, std::size_t size) const noexcept {
        return offset <= m_file.size() && size <= m_file.size() - offset;
    }
    std::uint16_t Word(std::size_t offset) const noexcept;
    std::uint32_t Dword(std::size_t offset) const noexcept;
    bool HasMark(std::size_t offset, std::string_view mark) const noexcept;
    std::optional<std::u16string> ReadName(std::size_t offset, std::size_t bytes, bool oneByteEach,
                                           std::size_t longest) const;
    std::optional<Fault> FindBlockFault(std::size_t start, std::size_t end) const;

    std::span<const std::byte> m_file;
};

}  // namespace roundup
