#include "platform/pngpixels.h"

#include "platform/windows/wintext.h"
// What builds on it must come behind it.
#include <wincodec.h>

#include <memory>

namespace roundup {

namespace {

struct Releaser {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
template <class Interface>
using Owned = std::unique_ptr<Interface, Releaser>;

// What make(&object) writes; null when it fails.
template <class Interface, class Make>
Owned<Interface> Made(const Make& make) {
    Interface* object = nullptr;
    return Owned<Interface>(SUCCEEDED(make(&object)) ? object : nullptr);
}

// The calling thread may be one of a host, which has its own mind about apartments; any of them serves.
class Apartment {
  public:
    Apartment() : m_entered(SUCCEEDED(::CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    Apartment(const Apartment&) = delete;
    Apartment& operator=(const Apartment&) = delete;
    ~Apartment() {
        if (m_entered) ::CoUninitialize();
    }

  private:
    const bool m_entered;
};

}  // namespace

bool ReadPngPixels(std::span<const std::byte> file, std::uint32_t width, std::uint32_t height, std::uint32_t* pixels) {
    const Apartment apartment;
    const auto factory = Made<IWICImagingFactory>([](IWICImagingFactory** made) {
        return ::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                  reinterpret_cast<void**>(made));
    });
    if (!factory) return false;
    const auto stream = Made<IWICStream>([&](IWICStream** made) { return factory->CreateStream(made); });
    // The stream only reads what it is given, though it is declared to take it for writing too.
    auto* const bytes = reinterpret_cast<BYTE*>(const_cast<std::byte*>(file.data()));
    if (!stream || FAILED(stream->InitializeFromMemory(bytes, static_cast<DWORD>(file.size())))) return false;
    const auto decoder = Made<IWICBitmapDecoder>([&](IWICBitmapDecoder** made) {
        return factory->CreateDecoderFromStream(stream.get(), nullptr, WICDecodeMetadataCacheOnDemand, made);
    });
    if (!decoder) return false;
    const auto frame =
        Made<IWICBitmapFrameDecode>([&](IWICBitmapFrameDecode** made) { return decoder->GetFrame(0, made); });
    if (!frame) return false;
    const auto converted = Made<IWICBitmapSource>([&](IWICBitmapSource** made) {
        return ::WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, frame.get(), made);
    });
    UINT realWidth = 0, realHeight = 0;
    if (!converted || FAILED(converted->GetSize(&realWidth, &realHeight))) return false;
    if (realWidth != width || realHeight != height) return false;
    const auto stride = static_cast<UINT>(width * sizeof *pixels);
    return SUCCEEDED(converted->CopyPixels(nullptr, stride, stride * height, reinterpret_cast<BYTE*>(pixels)));
}

}  // namespace roundup
