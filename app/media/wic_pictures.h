// SPDX-License-Identifier: MIT
// Pictures through the Windows Imaging Component.
#ifndef VIREO_APP_MEDIA_WIC_PICTURES_H
#define VIREO_APP_MEDIA_WIC_PICTURES_H

#include "app/media/picture_files.h"

namespace vireo {

class WicPictureSource : public PictureSource {
public:
    explicit WicPictureSource(bool premultiplied) : premultiplied_(premultiplied) {}

    SourceInfo probe(const std::filesystem::path& file) override;
    std::unique_ptr<SourceFrame> frame(const std::filesystem::path& file, std::int64_t number) override;

private:
    bool premultiplied_;
    SourceInfo first_;
};

class WicPictureTarget : public PictureTarget {
public:
    /// Throws Error where the job asks for what the system's encoders do not have.
    explicit WicPictureTarget(const RenderJob& job);

    bool holdsAlpha() const;

    std::vector<std::uint8_t> encode(const Picture& picture, const SourceFrame& source, bool alpha) override;

private:
    std::string extension_;
    bool premultiplied_;
};

}  // namespace vireo

#endif
