#include "platform/recorded/icons/recordedicons.h"

#include <cstring>
#include <string>
#include <utility>

#include "platform/recorded/icons/filetypeicon.h"
#include "platform/recorded/icons/icongroup.h"
#include "platform/recorded/icons/peresources.h"

namespace roundup {

namespace {

constexpr std::uint32_t kLargeIcon = 32;
constexpr std::uint32_t kSmallIcon = 16;
// An .ico file beyond this size is none.
constexpr std::uint32_t kLargestIconFile = 16U << 20U;

std::optional<IconImage> LoadFromProgram(const FileBytes& file, const PeResources& resources, std::int32_t index,
                                         std::uint32_t pixels) {
    std::vector<std::byte> group;
    const bool found =
        index >= 0 ? resources.ReadByPlace(file, kResourceGroupIcon, static_cast<std::uint32_t>(index), group)
                   : resources.ReadByNumber(file, kResourceGroupIcon, 0U - static_cast<std::uint32_t>(index), group);
    if (!found) return std::nullopt;
    const std::vector<IconImageInfo> images = ReadIconGroup(ByteView(group));
    const std::optional<std::size_t> chosen = ChooseIconImage(images, pixels);
    std::vector<std::byte> image;
    if (!chosen || !resources.ReadByNumber(file, kResourceIcon, images[*chosen].number, image)) return std::nullopt;
    return DecodeIconImage(ByteView(image));
}

std::optional<IconImage> LoadFromIconFile(const FileBytes& file, std::uint32_t pixels) {
    std::vector<std::byte> block;
    if (file.Size() > kLargestIconFile || !file.Read(0, static_cast<std::uint32_t>(file.Size()), block)) {
        return std::nullopt;
    }
    const std::vector<IconImageInfo> images = ReadIconFile(ByteView(block));
    const std::optional<std::size_t> chosen = ChooseIconImage(images, pixels);
    if (!chosen) return std::nullopt;
    return DecodeIconImage(*ByteView(block).Slice(images[*chosen].offset, images[*chosen].size));
}

// Rows of 1 or 32 bits for each pixel, bottom line first. A monochrome image's rows hold mask and picture, the mask
// on top, as the platform keeps them.
std::vector<std::byte> MaskRows(const IconImage& image) {
    const std::size_t stride = std::size_t{(image.width + 31) / 32} * 4;
    const std::size_t height = std::size_t{image.height} * (image.monochrome ? 2 : 1);
    std::vector<std::byte> rows(stride * height);
    for (std::size_t y = 0; y < height; ++y) {
        std::byte* row = rows.data() + (height - 1 - y) * stride;
        for (std::size_t x = 0; x < image.width; ++x) {
            const bool set = y < image.height ? image.mask[y * image.width + x] != 0
                                              : image.color[(y - image.height) * image.width + x] != 0;
            if (set) row[x / 8] |= std::byte{0x80} >> (x % 8);
        }
    }
    return rows;
}

std::vector<std::byte> ColorRows(const IconImage& image) {
    const std::size_t stride = std::size_t{image.width} * 4;
    std::vector<std::byte> rows(stride * image.height);
    for (std::size_t y = 0; y < image.height; ++y) {
        std::memcpy(rows.data() + (image.height - 1 - y) * stride, image.color.data() + y * image.width, stride);
    }
    return rows;
}

}  // namespace

// A program or an .ico file, opened once for all the sizes that are asked of it.
class RecordedIcons::Source {
  public:
    Source(IFileSystem& files, const char16_t* path) : m_file(files, path) {
        if (m_file.IsOpen()) m_resources = PeResources::Open(m_file);
    }
    std::optional<IconImage> Load(std::int32_t index, std::uint32_t pixels) const {
        std::optional<IconImage> image;
        if (m_resources) {
            image = LoadFromProgram(m_file, *m_resources, index, pixels);
        } else if (m_file.IsOpen() && index == 0) {
            image = LoadFromIconFile(m_file, pixels);
        }
        if (image) image = ScaleIconImage(std::move(*image), pixels);
        return image;
    }

  private:
    FileBytes m_file;
    std::optional<PeResources> m_resources;
};

IconHandle RecordedIcons::AddIcon(std::optional<IconImage> image) {
    return image ? m_icons.Add(std::make_shared<IconImage>(std::move(*image))) : 0;
}

void RecordedIcons::ExtractIcons(const char16_t* path, std::int32_t index, IconHandle& large, IconHandle& small) {
    const Source source(m_files, path);
    large = AddIcon(source.Load(index, kLargeIcon));
    small = AddIcon(source.Load(index, kSmallIcon));
}

IconHandle RecordedIcons::LargeIcon(const char16_t* path, std::int32_t index) {
    return AddIcon(Source(m_files, path).Load(index, kLargeIcon));
}

IconHandle RecordedIcons::GetFileIcon(const char16_t* path) {
    const std::uint32_t attributes = m_files.GetAttributes(path);
    if (attributes == kInvalidAttributes) return 0;
    const bool folder = (attributes & kAttributeDirectory) != 0;
    if (!folder) {
        if (const IconHandle own = LargeIcon(path, 0)) return own;
    }
    for (const IconPlace& place : FileTypeIcons(m_registry, path, folder)) {
        if (const IconHandle icon = LargeIcon(place.path.c_str(), place.index)) return icon;
    }
    return 0;
}

bool RecordedIcons::GetIconBitmaps(IconHandle icon, IconBitmaps& bitmaps) {
    const std::shared_ptr<IconImage> image = m_icons.Find(icon);
    if (image == nullptr) return false;
    auto mask = std::make_shared<Bitmap>();
    const std::int32_t width = static_cast<std::int32_t>(image->width);
    const std::int32_t height = static_cast<std::int32_t>(image->height);
    mask->shape = {width, image->monochrome ? 2 * height : height, 1, 1};
    mask->rows = MaskRows(*image);
    bitmaps.mask = m_bitmaps.Add(std::move(mask));
    bitmaps.color = 0;
    if (image->monochrome) return true;
    auto color = std::make_shared<Bitmap>();
    color->shape = {width, height, 1, 32};
    color->rows = ColorRows(*image);
    bitmaps.color = m_bitmaps.Add(std::move(color));
    return true;
}

bool RecordedIcons::GetBitmapShape(BitmapHandle bitmap, BitmapShape& shape) {
    const std::shared_ptr<Bitmap> found = m_bitmaps.Find(bitmap);
    if (found == nullptr) return false;
    shape = found->shape;
    return true;
}

bool RecordedIcons::GetBitmapBits(BitmapHandle bitmap, const BitmapHeader& header, void* bits, std::uint32_t size) {
    const std::shared_ptr<Bitmap> found = m_bitmaps.Find(bitmap);
    if (found == nullptr || header.bitCount != found->shape.bitsPerPixel || header.width != found->shape.width ||
        header.height != found->shape.height || size < found->rows.size()) {
        return false;
    }
    std::memcpy(bits, found->rows.data(), found->rows.size());
    return true;
}

}  // namespace roundup
