// SPDX-License-Identifier: MIT
// What the pipeline knows of files: a reader that gives frames, a writer that takes them. FFmpeg's libraries
// stand behind both.
#ifndef VIREO_APP_MEDIA_MEDIA_H
#define VIREO_APP_MEDIA_MEDIA_H

#include "app/base/interruption.h"
#include "app/base/messages.h"
#include "app/media/frame_processor.h"
#include "app/media/media_description.h"
#include "app/media/render_job.h"

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

namespace vireo {

/// A frame that cannot be read; the clip goes on without it.
class DamagedFrame : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What is known of an input once its first frame is read.
struct SourceInfo {
    int width = 0;  ///< As the picture stands upright.
    int height = 0;
    int depth = 8;  ///< Bits per channel; 32 for float.
    bool alpha = false;
    std::int64_t frameCount = 0;      ///< Frames of the whole input; 0 where unknown.
    std::int64_t firstFrame = 0;      ///< The first frame that will be rendered.
    std::int64_t framesExpected = 0;  ///< Frames that will be rendered; 0 where unknown.
    double frameRate = 25;
};

/// A frame as the file holds it, not converted yet.
class SourceFrame {
public:
    virtual ~SourceFrame() = default;

    /// The pixels, upright, with straight alpha. Called once, on any thread. Throws DamagedFrame.
    virtual PicturePtr picture(std::uint32_t format) = 0;

    FramePosition position;
    bool impaired = false;  ///< Read in part.
    bool preRoll = false;   ///< Stands before the part that is rendered: only there to be looked back at.
};

/// Gives the frames of an input in order. Throws Error.
class MediaReader {
public:
    virtual ~MediaReader() = default;

    virtual const SourceInfo& info() const = 0;

    /// The next frame, of the part that was asked for and of those before it that its first frames look back
    /// at; null after the last. A frame that is damaged is given all the same, since it has a number.
    virtual std::unique_ptr<SourceFrame> read() = 0;
};

/// A frame ready to be written.
class OutputFrame {
public:
    virtual ~OutputFrame() = default;
};

/// Takes the frames of an output. Throws Error. Destroyed before appear() it leaves nothing.
class MediaWriter {
public:
    virtual ~MediaWriter() = default;

    /// Brings a rendered frame into the form that is written. Called on any thread.
    virtual std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) = 0;

    /// Frames in order, from one thread.
    virtual void write(std::unique_ptr<OutputFrame> frame) = 0;

    /// Ends the output.
    virtual void finish() = 0;

    /// Lets it be seen under its name.
    virtual void appear() = 0;

    /// How much was written, once it is finished.
    virtual std::int64_t bytes() const = 0;
};

/// Takes frames that nobody keeps.
class NoWriter : public MediaWriter {
public:
    std::unique_ptr<OutputFrame> convert(const Picture&, const SourceFrame&) override {
        return std::make_unique<OutputFrame>();
    }
    void write(std::unique_ptr<OutputFrame>) override {}
    void finish() override {}
    void appear() override {}
    std::int64_t bytes() const override { return 0; }
};

struct Media {
    std::unique_ptr<MediaReader> reader;
    std::unique_ptr<MediaWriter> writer;  ///< Of all outputs. Must be finished before the reader ends.
    std::uint32_t pictureFormat;          ///< What frames are converted to.
    MediaDescription description;
};

/// Whether a job's output is a single picture.
bool writesOnePicture(const RenderJob& job);

/// Opens both ends of a job; nothing is written under the name of the output yet. `stop` and `messages` must
/// outlive the result. Throws Error.
Media openMedia(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                Messages& messages);

}  // namespace vireo

#endif
