#include "tests/support/linkwriter.h"

#include <algorithm>

namespace roundup {

namespace {

template <class Number>
void Put(std::string& bytes, Number number) {
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}
void PutWide(std::string& bytes, std::u16string_view text) {
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}
std::string Wide(std::u16string_view text) {
    std::string bytes;
    PutWide(bytes, text);
    return bytes;
}
// With a leading size of the given width that counts itself.
template <class Number>
std::string Sized(std::string_view content) {
    std::string bytes;
    Put(bytes, static_cast<Number>(content.size() + sizeof(Number)));
    return bytes.append(content);
}

// A file entry: attributes and times of zeros, the short name, filled up with zeros, and the extension with the long
// one, whose place the last word tells.
std::string Item(std::u16string_view name) {
    std::string extension("\x09\0\x04\0\xEF\xBE", 6);
    extension.append(38, '\0').append(Wide(name)).append(2, '\0').append("\x16\0", 2);
    return Sized<std::uint16_t>(std::string("\x32").append(11, '\0').append("SHORT\0\0\0", 8) +
                                Sized<std::uint16_t>(extension));
}

std::string IdList(std::u16string_view path) {
    std::string list = Sized<std::uint16_t>(std::string("\x1F\x50", 2).append(16, 'g'));
    list += Sized<std::uint16_t>(std::string("\x2F") + static_cast<char>(path[0]) + ":\\" + std::string(19, '\0'));
    for (path.remove_prefix(3); !path.empty();) {
        const std::size_t end = std::min(path.find(u'\\'), path.size());
        list += Item(path.substr(0, end));
        path.remove_prefix(std::min(end + 1, path.size()));
    }
    list.append(2, '\0');
    std::string bytes;
    Put(bytes, static_cast<std::uint16_t>(list.size()));
    return bytes + list;
}

std::string Block(std::uint32_t signature, std::u16string_view text) {
    std::string content;
    Put(content, signature);
    content.append(260, '\0');
    std::u16string wide(text);
    wide.resize(260);
    PutWide(content, wide);
    return Sized<std::uint32_t>(content);
}

std::u16string Pack(std::u16string_view code) {
    static constexpr std::u16string_view kDigits =
        u"!$%&'()*+,-.0123456789=?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[]^_`abcdefghijklmnopqrstuvwxyz{}~";
    std::u16string text;
    for (std::uint32_t word : ParseGuid(code, GuidForm::Braced).Words()) {
        for (int i = 0; i < 5; ++i, word /= 85) text += kDigits[word % 85];
    }
    return text;
}

}  // namespace

std::u16string LinkWriter::Descriptor(std::u16string_view product, std::u16string_view feature,
                                      std::u16string_view component) {
    std::u16string text = Pack(product).append(feature);
    return component.empty() ? text + u"<" : text + u">" + Pack(component);
}

std::string LinkWriter::Write() const {
    std::uint32_t flags = moreFlags | (unicode ? 0x80U : 0U);
    std::string body;
    if (!idListPath.empty()) flags |= 1, body += IdList(idListPath);
    if (!localPath.empty() || !wideLocalPath.empty() || !share.empty()) {
        flags |= 2;
        std::string texts;
        std::uint32_t places[5] = {};  // base, share, suffix, wide base, wide suffix
        const auto put = [&](std::uint32_t& place, std::string_view text) {
            place = static_cast<std::uint32_t>(36 + texts.size());
            texts.append(text);
        };
        if (!localPath.empty()) put(places[0], localPath + '\0');
        if (!share.empty()) {
            std::string content;
            for (const std::uint32_t field : {0U, 20U, 0U, 0U}) Put(content, field);
            put(places[1], Sized<std::uint32_t>(content + share + '\0'));
        }
        put(places[2], suffix + '\0');
        if (!wideLocalPath.empty()) put(places[3], Wide(wideLocalPath) + std::string(2, '\0'));
        std::string content;
        const std::uint32_t kinds = (!share.empty() ? 2U : 0U) | (places[0] + places[3] != 0 ? 1U : 0U);
        for (const std::uint32_t field : {36U, kinds, 0U, places[0], places[1], places[2], places[3], places[4]}) {
            Put(content, field);
        }
        body += Sized<std::uint32_t>(content + texts);
    }
    const std::u16string* const texts[] = {&description, nullptr, &workingDirectory, &arguments, &iconPath};
    for (std::uint32_t i = 0; i < 5; ++i) {
        if (texts[i] == nullptr || texts[i]->empty()) continue;
        flags |= 4U << i;
        Put(body, static_cast<std::uint16_t>(texts[i]->size()));
        body += unicode ? Wide(*texts[i]) : std::string(texts[i]->begin(), texts[i]->end());
    }
    if (!environmentPath.empty()) flags |= 0x200, body += Block(0xA0000001U, environmentPath);
    if (!descriptor.empty()) flags |= 0x1000, body += Block(0xA0000006U, descriptor);
    if (!environmentIcon.empty()) flags |= 0x4000, body += Block(0xA0000007U, environmentIcon);
    std::string bytes("\x4C\0\0\0\x01\x14\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 20);
    Put(bytes, flags);
    bytes.append(32, '\0');
    Put(bytes, iconIndex);
    Put(bytes, showCommand);
    Put(bytes, hotkey);
    return bytes.append(10, '\0') + body + std::string(4, '\0');
}

}  // namespace roundup
