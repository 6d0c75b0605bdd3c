// SPDX-License-Identifier: MIT
// Single pictures and sequences of them, over whatever reads and writes pictures on the system.
#ifndef VIREO_APP_MEDIA_PICTURE_FILES_H
#define VIREO_APP_MEDIA_PICTURE_FILES_H

#include "app/base/output_file.h"
#include "app/media/media.h"
#include "app/media/sequence_pattern.h"

#include <filesystem>
#include <optional>
#include <vector>

namespace vireo {

/// Pictures have no clock of their own, unless they are given one.
inline constexpr double pictureRate = 25;

class PictureSource {
public:
    virtual ~PictureSource() = default;

    /// Geometry, depth and alpha of a picture; throws DamagedFrame.
    virtual SourceInfo probe(const std::filesystem::path& file) = 0;

    /// A frame that reads the file when its pixels are asked for, and brings it to the size probed first.
    virtual std::unique_ptr<SourceFrame> frame(const std::filesystem::path& file, std::int64_t number) = 0;
};

class PictureTarget {
public:
    virtual ~PictureTarget() = default;

    /// The bytes of a file; without `alpha` all pixels are opaque. Called on any thread. Throws Error.
    virtual std::vector<std::uint8_t> encode(const Picture& picture, const SourceFrame& source,
                                             bool alpha) = 0;
};

/// Reads the pictures of a sequence. Those that are missing between others count as damaged.
class SequenceReader : public MediaReader {
public:
    SequenceReader(const RenderJob& job, const SequencePattern& pattern, int lookBack,
                   std::unique_ptr<PictureSource> source, Messages& messages);

    const SourceInfo& info() const override { return info_; }
    std::unique_ptr<SourceFrame> read() override;

    const PictureSource& source() const { return *source_; }

    /// The number in the first picture's name.
    std::int64_t firstNumber() const { return firstNumber_; }

private:
    SequencePattern pattern_;
    std::unique_ptr<PictureSource> source_;
    SourceInfo info_;
    std::int64_t firstNumber_ = 0;
    std::int64_t first_ = 0;  ///< Frames to render, counted from 0.
    std::int64_t last_ = 0;
    std::int64_t next_ = 0;
    double rate_;
    Interlacing interlacing_;
};

/// Writes one picture or a sequence. `firstNumber` is that of frame 0.
class PictureWriter : public MediaWriter {
public:
    PictureWriter(const RenderJob& job, std::unique_ptr<PictureTarget> target, std::int64_t firstNumber);

    std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) override;
    void write(std::unique_ptr<OutputFrame> frame) override;
    void finish() override {}
    void appear() override;
    std::int64_t bytes() const override { return bytes_; }

private:
    const RenderJob& job_;
    std::unique_ptr<PictureTarget> target_;
    std::int64_t firstNumber_;
    std::optional<SequencePattern> pattern_;
    std::optional<OutputFileSet> files_;
    std::optional<OutputFile> file_;
    bool written_ = false;
    std::int64_t bytes_ = 0;
};

/// Names the files of the frames from `firstFrame` on; a single picture's, or standard output's, alone.
void describePictureFiles(const RenderJob& job, std::int64_t firstNumber, const SourceInfo& info,
                          OutputDescription& output);

/// Refuses before any work what could only be refused after it: names that are taken, and several frames for
/// one picture. `frames` and `firstFrame` are what will be rendered, 0 frames where that is unknown. Throws
/// Error.
void checkPictureOutput(const RenderJob& job, std::int64_t firstNumber, std::int64_t firstFrame,
                        std::int64_t frames);

}  // namespace vireo

#endif
