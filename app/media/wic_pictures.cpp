// SPDX-License-Identifier: MIT
#include "app/media/wic_pictures.h"

#include "app/base/files.h"
#include "app/media/exif.h"
#include "app/media/format_lists.h"
#include "app/media/picture_tools.h"
#include "app/media/wic_objects.h"
#include "engine/error.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <string_view>

namespace vireo {
namespace {

ComPtr<IWICImagingFactory> factory() {
    return made<IWICImagingFactory>([](IWICImagingFactory** object) {
        return CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IWICImagingFactory, reinterpret_cast<void**>(object));
    });
}

struct Container {
    std::string_view extension;
    const GUID* format;
    bool alpha;
};

const Container containers[] = {
    {"png", &GUID_ContainerFormatPng, true},    {"jpg", &GUID_ContainerFormatJpeg, false},
    {"jpeg", &GUID_ContainerFormatJpeg, false}, {"tif", &GUID_ContainerFormatTiff, true},
    {"tiff", &GUID_ContainerFormatTiff, true},  {"bmp", &GUID_ContainerFormatBmp, false},
    {"gif", &GUID_ContainerFormatGif, false},
};

const Container* containerOf(std::string_view extension) {
    for (const Container& container : containers) {
        if (container.extension == extension) return &container;
    }
    return nullptr;
}

bool pixelFormatHasAlpha(IWICImagingFactory& wic, const WICPixelFormatGUID& format) {
    const auto component = made<IWICComponentInfo>(
        [&](IWICComponentInfo** object) { return wic.CreateComponentInfo(format, object); });
    if (component == nullptr) return false;
    const auto info = made<IWICPixelFormatInfo2>([&](IWICPixelFormatInfo2** object) {
        return component->QueryInterface(IID_IWICPixelFormatInfo2, reinterpret_cast<void**>(object));
    });
    BOOL transparency = FALSE;
    return info != nullptr && SUCCEEDED(info->SupportsTransparency(&transparency)) && transparency != FALSE;
}

/// The first picture of a file as BGRA. Throws DamagedFrame.
struct ReadPicture {
    std::shared_ptr<Picture> picture;
    bool alpha = false;

    explicit ReadPicture(const std::filesystem::path& path) {
        const auto need = [&](bool good) {
            if (!good) throw DamagedFrame(path.string() + " cannot be read as a picture");
        };
        const auto wic = factory();
        need(wic != nullptr);
        const auto decoder = made<IWICBitmapDecoder>([&](IWICBitmapDecoder** object) {
            return wic->CreateDecoderFromFilename(path.c_str(), nullptr, GENERIC_READ,
                                                  WICDecodeMetadataCacheOnDemand, object);
        });
        need(decoder != nullptr);
        const auto frame = made<IWICBitmapFrameDecode>(
            [&](IWICBitmapFrameDecode** object) { return decoder->GetFrame(0, object); });
        need(frame != nullptr);
        WICPixelFormatGUID stored;
        need(SUCCEEDED(frame->GetPixelFormat(&stored)));
        alpha = pixelFormatHasAlpha(*wic, stored);
        const auto bgra = made<IWICBitmapSource>([&](IWICBitmapSource** object) {
            return WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, frame.get(), object);
        });
        UINT width = 0;
        UINT height = 0;
        need(bgra != nullptr && SUCCEEDED(bgra->GetSize(&width, &height)));
        picture = std::make_shared<Picture>(static_cast<int>(width), static_cast<int>(height));
        for (int y = 0; y < picture->height(); ++y) {
            const WICRect row{0, y, picture->width(), 1};
            const auto bytes = static_cast<UINT>(4 * picture->width());
            need(SUCCEEDED(bgra->CopyPixels(&row, bytes, bytes, picture->row(y))));
        }
        const Orientation orientation = exifOrientation(exifOrientationTag(path));
        if (!orientation.upright()) picture = oriented(*picture, orientation);
    }
};

class WicFrame : public SourceFrame {
public:
    WicFrame(std::filesystem::path path, const SourceInfo& first, bool premultiplied)
        : path_(std::move(path)), first_(first), premultiplied_(premultiplied) {}

    PicturePtr picture(std::uint32_t) override {
        const ComScope com;
        const ReadPicture read(path_);
        if (premultiplied_ && read.alpha) unpremultiply(*read.picture);
        if (read.picture->width() == first_.width && read.picture->height() == first_.height)
            return read.picture;
        auto scaled = std::make_shared<Picture>(first_.width, first_.height);
        vpixCopy(read.picture->buffer(), scaled->buffer(), &read.picture->buffer()->bounds,
                 &scaled->buffer()->bounds, 0);
        return scaled;
    }

private:
    std::filesystem::path path_;
    const SourceInfo& first_;
    bool premultiplied_;
};

/// An encoder's frame, ready for its size. Throws Error.
ComPtr<IWICBitmapFrameEncode> newFrame(IWICBitmapEncoder& encoder, bool jpeg) {
    IPropertyBag2* bag = nullptr;
    auto frame = made<IWICBitmapFrameEncode>(
        [&](IWICBitmapFrameEncode** object) { return encoder.CreateNewFrame(object, &bag); });
    const ComPtr<IPropertyBag2> options(bag);
    if (frame == nullptr) return frame;
    if (jpeg && options != nullptr) {
        wchar_t name[] = L"ImageQuality";
        PROPBAG2 option{};
        option.pstrName = name;
        VARIANT value;
        VariantInit(&value);
        value.vt = VT_R4;
        value.fltVal = 0.95F;
        options->Write(1, &option, &value);
    }
    if (FAILED(frame->Initialize(options.get()))) frame.reset();
    return frame;
}

std::vector<std::uint8_t> contents(IStream& stream) {
    STATSTG state{};
    if (FAILED(stream.Stat(&state, STATFLAG_NONAME))) return {};
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(state.cbSize.QuadPart));
    const LARGE_INTEGER begin{};
    ULONG got = 0;
    if (FAILED(stream.Seek(begin, STREAM_SEEK_SET, nullptr)) ||
        FAILED(stream.Read(bytes.data(), static_cast<ULONG>(bytes.size()), &got)) || got != bytes.size())
        return {};
    return bytes;
}

}  // namespace

SourceInfo WicPictureSource::probe(const std::filesystem::path& file) {
    const ComScope com;
    const ReadPicture read(file);
    first_.width = read.picture->width();
    first_.height = read.picture->height();
    first_.alpha = read.alpha;
    return first_;
}

std::unique_ptr<SourceFrame> WicPictureSource::frame(const std::filesystem::path& file, std::int64_t) {
    return std::make_unique<WicFrame>(file, first_, premultiplied_);
}

WicPictureTarget::WicPictureTarget(const RenderJob& job) : premultiplied_(job.premultiplied) {
    extension_ = utf8Of(pathOf(job.output).extension());
    if (!extension_.empty()) extension_.erase(0, 1);
    for (char& c : extension_) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (containerOf(extension_) == nullptr)
        throw Error(Fault::Usage, job.output + ": pictures are written as PNG, JPEG, TIFF, BMP or GIF here");
    if (!job.encoder.empty() || !job.encoderOptions.empty() || !job.pixelFormat.empty())
        throw Error(Fault::Usage, "the system's picture encoders take no options");
}

bool WicPictureTarget::holdsAlpha() const { return containerOf(extension_)->alpha; }

std::vector<std::uint8_t> WicPictureTarget::encode(const Picture& picture, const SourceFrame&, bool alpha) {
    const auto need = [](bool good) {
        if (!good) throw Error("cannot encode a picture");
    };
    const Container& container = *containerOf(extension_);
    const bool indexed = *container.format == GUID_ContainerFormatGif;
    std::vector<std::uint8_t> pixels;
    const auto rowBytes = static_cast<std::size_t>(4) * static_cast<std::size_t>(picture.width());
    Picture upright(picture.width(), picture.height());
    for (int y = 0; y < picture.height(); ++y) std::memcpy(upright.row(y), picture.row(y), rowBytes);
    if (premultiplied_) premultiply(upright);
    for (int y = 0; y < upright.height(); ++y)
        pixels.insert(pixels.end(), upright.row(y), upright.row(y) + rowBytes);

    const ComScope com;
    const auto wic = factory();
    need(wic != nullptr);
    const auto width = static_cast<UINT>(picture.width());
    const auto height = static_cast<UINT>(picture.height());
    const auto bitmap = made<IWICBitmap>([&](IWICBitmap** object) {
        return wic->CreateBitmapFromMemory(width, height, GUID_WICPixelFormat32bppBGRA,
                                           static_cast<UINT>(rowBytes), static_cast<UINT>(pixels.size()),
                                           pixels.data(), object);
    });
    const auto stream =
        made<IStream>([](IStream** object) { return CreateStreamOnHGlobal(nullptr, TRUE, object); });
    const auto encoder = made<IWICBitmapEncoder>(
        [&](IWICBitmapEncoder** object) { return wic->CreateEncoder(*container.format, nullptr, object); });
    need(bitmap != nullptr && stream != nullptr && encoder != nullptr &&
         SUCCEEDED(encoder->Initialize(stream.get(), WICBitmapEncoderNoCache)));
    const auto frame = newFrame(*encoder, *container.format == GUID_ContainerFormatJpeg);
    WICPixelFormatGUID format = indexed                    ? GUID_WICPixelFormat8bppIndexed
                                : alpha && container.alpha ? GUID_WICPixelFormat32bppBGRA
                                                           : GUID_WICPixelFormat24bppBGR;
    need(frame != nullptr && SUCCEEDED(frame->SetSize(width, height)) &&
         SUCCEEDED(frame->SetPixelFormat(&format)));

    const auto palette = made<IWICPalette>([&](IWICPalette** object) { return wic->CreatePalette(object); });
    if (indexed) {
        need(palette != nullptr && SUCCEEDED(palette->InitializeFromBitmap(bitmap.get(), 256, FALSE)) &&
             SUCCEEDED(frame->SetPalette(palette.get())));
    }
    const auto converter = made<IWICFormatConverter>(
        [&](IWICFormatConverter** object) { return wic->CreateFormatConverter(object); });
    need(converter != nullptr &&
         SUCCEEDED(converter->Initialize(
             bitmap.get(), format, indexed ? WICBitmapDitherTypeErrorDiffusion : WICBitmapDitherTypeNone,
             indexed ? palette.get() : nullptr, 0, WICBitmapPaletteTypeCustom)));
    need(SUCCEEDED(frame->WriteSource(converter.get(), nullptr)) && SUCCEEDED(frame->Commit()) &&
         SUCCEEDED(encoder->Commit()));
    std::vector<std::uint8_t> bytes = contents(*stream);
    need(!bytes.empty());
    return bytes;
}

std::vector<ListedFormat> listFormats() {
    std::vector<ListedFormat> formats;
    for (const Container& container : containers) {
        const std::string ending(container.extension);
        if (!formats.empty() && *container.format == *containerOf(formats.back().name)->format) {
            formats.back().endings.push_back(ending);
        } else {
            formats.push_back({ending, {ending}, true, ending, ending, "pictures of the system"});
        }
    }
    return formats;
}

std::vector<ListedEncoder> listEncoders() { throw Error("the system's picture encoders have no names"); }

std::vector<ListedPixelFormat> listPixelFormats() {
    throw Error("the system's picture encoders choose the pixel format");
}

std::string codecVersions() { return "the system's picture codecs\n"; }

}  // namespace vireo
