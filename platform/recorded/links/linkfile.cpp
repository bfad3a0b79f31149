#include "platform/recorded/links/linkfile.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>
#include <vector>

#include "platform/recorded/icons/filebytes.h"
#include "platform/recorded/links/linkidlist.h"
#include "platform/recorded/links/linktexts.h"

namespace roundup {

namespace {

constexpr std::uint32_t kHeaderSize = 76;
constexpr std::array<std::uint8_t, 16> kLinkClass = {0x01, 0x14, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                                     0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

// LinkFlags.
constexpr std::uint32_t kHasIdList = 0x1;
constexpr std::uint32_t kHasLocation = 0x2;
constexpr std::uint32_t kHasName = 0x4;
constexpr std::uint32_t kHasRelativePath = 0x8;
constexpr std::uint32_t kHasWorkingDirectory = 0x10;
constexpr std::uint32_t kHasArguments = 0x20;
constexpr std::uint32_t kHasIconPath = 0x40;
constexpr std::uint32_t kIsUnicode = 0x80;
constexpr std::uint32_t kIgnoreLocation = 0x100;
constexpr std::uint32_t kPreferEnvironmentPath = 0x2000000;

// Flags of the location and of its network part.
constexpr std::uint32_t kLocalVolume = 0x1;
constexpr std::uint32_t kNetworkShare = 0x2;

// Signatures of the extra blocks, all of which hold 260 bytes and then 260 characters of text.
constexpr std::uint32_t kEnvironmentBlock = 0xA0000001U;
constexpr std::uint32_t kDescriptorBlock = 0xA0000006U;
constexpr std::uint32_t kIconBlock = 0xA0000007U;
constexpr std::uint64_t kNarrowText = 8;
constexpr std::uint64_t kWideText = kNarrowText + 260;

std::u16string JoinPath(std::u16string path, const std::u16string& suffix) {
    if (!path.empty() && !suffix.empty() && path.back() != u'\\' && suffix.front() != u'\\') path.push_back(u'\\');
    return path.append(suffix);
}

class Parser {
  public:
    Parser(ByteView bytes, LinkFile& link) noexcept : m_bytes(bytes), m_link(link) {}

    bool Run() {
        if (!ReadHeader()) return false;
        if (Has(kHasIdList) && !ReadIdList()) return false;
        if (Has(kHasLocation) && !ReadLocation()) return false;
        if (!ReadTexts()) return false;
        ReadBlocks();
        return true;
    }

  private:
    bool Has(std::uint32_t flag) const noexcept { return (m_flags & flag) != 0; }

    bool ReadHeader() {
        const std::optional<ByteView> header = m_bytes.Slice(0, kHeaderSize);
        if (!header || header->At<std::uint32_t>(0) != kHeaderSize) return false;
        if (std::memcmp(header->Data() + 4, kLinkClass.data(), kLinkClass.size()) != 0) return false;
        m_flags = *header->At<std::uint32_t>(20);
        m_link.iconIndex = *header->At<std::int32_t>(56);
        m_link.showCommand = *header->At<std::int32_t>(60);
        m_link.hotkey = *header->At<std::uint16_t>(64);
        m_link.prefersEnvironment = Has(kPreferEnvironmentPath);
        m_at = kHeaderSize;
        return true;
    }

    bool ReadIdList() {
        const auto size = m_bytes.At<std::uint16_t>(m_at);
        const auto list = size ? m_bytes.Slice(m_at + 2, *size) : std::nullopt;
        if (!list) return false;
        m_link.idListPath = PathOfIdList(*list);
        m_at += 2 + std::uint64_t{*size};
        return true;
    }

    bool ReadLocation() {
        const auto size = m_bytes.At<std::uint32_t>(m_at);
        const auto block = size ? m_bytes.Slice(m_at, *size) : std::nullopt;
        if (!block || *size < 4) return false;
        m_at += *size;
        if (!Has(kIgnoreLocation)) ReadPaths(*block);
        return true;
    }

    // A header of 36 bytes or more has the places of the texts in two-byte characters, too.
    void ReadPaths(ByteView block) {
        const std::uint32_t headerSize = block.At<std::uint32_t>(4).value_or(0);
        const std::uint32_t flags = block.At<std::uint32_t>(8).value_or(0);
        if (headerSize < 28 || block.Size() < headerSize) return;
        const bool wide = headerSize >= 36 && block.Size() >= 36;
        const auto text = [&](std::uint64_t narrowField, std::uint64_t wideField) {
            const std::uint32_t place = wide ? block.At<std::uint32_t>(wideField).value_or(0) : 0;
            if (place != 0) return WideTextAt(block, place);
            const std::uint32_t narrow = block.At<std::uint32_t>(narrowField).value_or(0);
            return narrow != 0 ? NarrowTextAt(block, narrow) : std::u16string();
        };
        const std::u16string suffix = text(24, 32);
        if ((flags & kLocalVolume) != 0) {
            if (std::u16string base = text(16, 28); !base.empty()) m_link.localPath = JoinPath(base, suffix);
        }
        if ((flags & kNetworkShare) != 0) ReadShare(block, suffix);
    }

    void ReadShare(ByteView location, const std::u16string& suffix) {
        const std::uint32_t place = location.At<std::uint32_t>(20).value_or(0);
        const auto size = location.At<std::uint32_t>(place);
        const auto block = size && place != 0 ? location.Slice(place, *size) : std::nullopt;
        if (!block) return;
        const std::uint32_t name = block->At<std::uint32_t>(8).value_or(0);
        // A name that does not follow the short header leaves room for the places of the wide texts.
        const std::uint32_t wideName = name > 20 ? block->At<std::uint32_t>(20).value_or(0) : 0;
        std::u16string share = wideName != 0 ? WideTextAt(*block, wideName)
                               : name != 0   ? NarrowTextAt(*block, name)
                                             : std::u16string();
        if (!share.empty()) m_link.networkPath = JoinPath(std::move(share), suffix);
    }

    bool ReadTexts() {
        std::u16string relativePath;
        const struct {
            std::uint32_t flag;
            std::u16string& target;
        } texts[] = {{kHasName, m_link.description},
                     {kHasRelativePath, relativePath},
                     {kHasWorkingDirectory, m_link.workingDirectory},
                     {kHasArguments, m_link.arguments},
                     {kHasIconPath, m_link.iconPath}};
        for (const auto& [flag, target] : texts) {
            if (!Has(flag)) continue;
            const auto count = m_bytes.At<std::uint16_t>(m_at);
            if (!count) return false;
            const std::uint64_t size = std::uint64_t{*count} * (Has(kIsUnicode) ? 2 : 1);
            const auto bytes = m_bytes.Slice(m_at + 2, size);
            if (!bytes) return false;
            target = Has(kIsUnicode) ? DecodeWide(*bytes) : DecodeNarrow(*bytes);
            target.resize(std::min(target.size(), target.find(u'\0')));
            m_at += 2 + size;
        }
        return true;
    }

    void ReadBlocks() {
        for (;;) {
            const auto size = m_bytes.At<std::uint32_t>(m_at);
            // A size below that of the field itself ends the list.
            if (!size || *size < 8) return;
            const std::optional<ByteView> block = m_bytes.Slice(m_at, *size);
            if (!block) return;
            ReadBlock(*block);
            m_at += *size;
        }
    }

    void ReadBlock(ByteView block) {
        std::u16string* target = nullptr;
        switch (block.At<std::uint32_t>(4).value_or(0)) {
            case kEnvironmentBlock:
                target = &m_link.environmentPath;
                break;
            case kDescriptorBlock:
                target = &m_link.descriptor;
                break;
            case kIconBlock:
                target = &m_link.environmentIcon;
                break;
            default:
                return;
        }
        const auto wide = block.Slice(kWideText, 520);
        const auto narrow = block.Slice(kNarrowText, 260);
        if (wide) *target = WideTextAt(*wide, 0);
        if (target->empty() && narrow) *target = NarrowTextAt(*narrow, 0);
    }

    const ByteView m_bytes;
    LinkFile& m_link;
    std::uint32_t m_flags = 0;
    std::uint64_t m_at = 0;
};

}  // namespace

bool ParseLinkFile(ByteView bytes, LinkFile& link) {
    LinkFile read;
    if (!Parser(bytes, read).Run()) return false;
    link = std::move(read);
    return true;
}

bool LoadLinkFile(IFileSystem& files, const char16_t* path, LinkFile& link) {
    const FileBytes file(files, path);
    std::vector<std::byte> bytes;
    if (!file.IsOpen() || file.Size() > kLargestLinkFile) return false;
    return file.Read(0, static_cast<std::uint32_t>(file.Size()), bytes) && ParseLinkFile(ByteView(bytes), link);
}

}  // namespace roundup
