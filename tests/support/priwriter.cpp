#include "tests/support/priwriter.h"

#include <cstdint>

namespace roundup {

namespace {

class Block {
  public:
    Block& U16(std::size_t number) { return Number<std::uint16_t>(number); }
    Block& U32(std::size_t number) { return Number<std::uint32_t>(number); }
    Block& Text(std::u16string_view text) {
        m_bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
        return *this;
    }
    Block& Bytes(std::string_view bytes) {
        m_bytes.append(bytes);
        return *this;
    }
    const std::string& Get() const { return m_bytes; }

  private:
    template <class T>
    Block& Number(std::size_t number) {
        const T value = static_cast<T>(number);
        m_bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
        return *this;
    }
    std::string m_bytes;
};

std::string Name16(std::string name) {
    name.resize(16);
    return name;
}

std::string Schema(const PriWriter& pri) {
    const std::size_t items = pri.items.size();
    Block names, block;
    std::size_t place = 0;
    const auto entry = [&](std::size_t parent, std::size_t path, std::string_view name, bool scope, std::size_t index) {
        const std::size_t flags = (scope ? 0x10U : 0U) | (pri.extended ? 0U : 0x20U);
        block.U16(parent).U16(path).U16(name.empty() ? 0 : static_cast<unsigned char>(name[0]));
        block.Bytes(std::string{static_cast<char>(name.size()), static_cast<char>(flags)}).U16(place).U16(index);
        for (const char c : name) pri.extended ? names.U16(static_cast<unsigned char>(c)) : names.Bytes({&c, 1});
        pri.extended ? names.U16(0) : names.Bytes(std::string(1, '\0'));
        place += name.size() + 1;
    };
    block.U16(1).U16(4).U16(4).U16(0);
    if (pri.extended) block.Bytes(Name16("[def_hnamesx]  "));
    block.U16(1).U16(0).U32(0).U32(7).U32(2).U32(items).Text(u"Uni").U16(0).Text(u"Nam").U16(0);
    block.U16(0).U16(99).U16(0).U32(items + 2).U32(2).U32(items);
    // The names' size stands in front of them; they are known only behind the entries.
    const std::string head = block.Get();
    block = Block();
    entry(0, 0, "", true, 0);
    entry(0, 9, "Resources", true, 1);
    for (std::size_t i = 0; i < items; ++i) entry(1, 10 + pri.items[i].name.size(), pri.items[i].name, false, i);
    for (int i = 0; i < 2; ++i) block.U16(0).U16(1).U16(1).U16(0);
    for (std::size_t i = 0; i < items; ++i) block.U16(1);
    Block counts;
    counts.U32(pri.extended ? names.Get().size() / 2 : 0).U32(0);
    if (pri.extended) counts.U32(0);
    return head + counts.Get() + block.Get() + names.Get();
}

// One decision with a set for each language.
std::string Decisions(const PriWriter& pri) {
    const std::size_t count = pri.languages.size();
    Block block, values;
    block.U16(count).U16(count).U16(count).U16(1).U16(2 * count).U16(0).U16(0).U16(count);
    for (std::size_t i = 0; i < count; ++i) block.U16(count + i).U16(pri.languages[i].empty() ? 0 : 1);
    for (std::size_t i = 0; i < count; ++i) block.U16(i).U16(100).U16(1000 - i).U16(0);
    for (std::size_t i = 0; i < count; ++i) {
        block.U16(0).U16(0).U16(0).U16(0).U32(values.Get().size() / 2);
        values.Text(pri.languages[i]).U16(0);
    }
    for (int half = 0; half < 2; ++half) {
        for (std::size_t i = 0; i < count; ++i) block.U16(i);
    }
    return block.Get() + values.Get();
}

// Every item has an info of its own, all of them one group.
std::string Map(const PriWriter& pri, std::string& dataSection) {
    const std::size_t items = pri.items.size();
    Block block, candidates, data, places, wide;
    std::size_t count = 0;
    for (const PriWriter::Item& item : pri.items) {
        for (const std::u16string& text : item.texts) {
            const std::size_t size = text.size() * 2 + 2;
            places.U16(data.Get().size()).U16(size);
            if (pri.dataItems) {
                candidates.Bytes(std::string("\1\0", 2)).U16(0).U16(count).U16(4);
            } else {
                candidates.Bytes(std::string("\0\0", 2)).U16(size).U32(data.Get().size());
            }
            data.Text(text).U16(0);
            ++count;
        }
    }
    const std::size_t perItem = items != 0 ? count / items : 0;
    wide.U32(1).U32(1).U32(items).U32(0).U32(0).U32(items).U32(0);
    for (std::size_t i = 0; i < items; ++i) wide.U32(0).U32(i * perItem);
    dataSection = Block().U32(0).U16(count).U16(0).U32(data.Get().size()).Get() + places.Get() + data.Get();
    const std::size_t small = pri.large ? 0 : 1;
    block.U16(3).U16(1).U16(1).U16(2).U16(2).U16(1).U16(small).U16(small).U32(small * items).U32(count);
    block.U32(pri.dataItems ? 0 : data.Get().size()).U32(pri.large ? wide.Get().size() : 0).Bytes("env").Bytes("sc");
    block.U32(4).U32(0);
    if (!pri.large) {
        block.U16(0).U16(0).U16(items).U16(0);
        for (std::size_t i = 0; i < items; ++i) block.U16(0).U16(i * perItem);
    }
    return block.Get() + (pri.large ? wide.Get() : "") + candidates.Get() + (pri.dataItems ? "" : data.Get());
}

}  // namespace

std::string PriWriter::Write() const {
    std::string data;
    const std::string map = Map(*this, data);
    const std::string descriptor =
        Block().U16(0).U16(0).U16(0).U16(1).U16(1).U16(1).U16(3).U16(0).U16(1).U16(0).U16(1).U16(2).U16(3).U16(4).Get();
    const std::pair<const char*, std::string> sections[] = {
        {"[mrm_pridescex]", descriptor},
        {extended ? "[mrm_hschemaex] " : "[mrm_hschema]  ", Schema(*this)},
        {"[mrm_decn_info]", Decisions(*this)},
        {"[mrm_res_map__]", map},
        {"[mrm_dataitem] ", data},
    };
    Block table, content;
    for (const auto& [name, bytes] : sections) {
        table.Bytes(Name16(name)).U16(0).U16(0).U32(0).U32(content.Get().size()).U32(bytes.size() + 40);
        content.Bytes(Name16(name)).U32(0).U16(0).U16(0).U32(bytes.size() + 40).U32(0).Bytes(bytes);
        content.U32(0xDEF5FADE).U32(bytes.size() + 40);
    }
    const std::size_t start = 32 + table.Get().size();
    Block file;
    file.Bytes("mrm_pri2").U16(0).U16(1).U32(start + content.Get().size() + 16).U32(32).U32(start).U16(5);
    file.U16(0xFFFF).U32(0).Bytes(table.Get()).Bytes(content.Get());
    return file.U32(0xDEFFFADE).U32(start + content.Get().size() + 16).Bytes("mrm_pri2").Get();
}

}  // namespace roundup
