// SPDX-License-Identifier: MIT
// What an input was understood to be and what an output is going to be, in words for people and programs.
#ifndef VIREO_APP_MEDIA_MEDIA_DESCRIPTION_H
#define VIREO_APP_MEDIA_MEDIA_DESCRIPTION_H

#include "app/base/interruption.h"
#include "app/base/messages.h"
#include "app/media/render_job.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vireo {

enum class TrackFate { Rendered, Copied, Converted, LeftOut };

/// A stream of an input.
struct TrackDescription {
    int index = 0;
    std::string kind;  ///< "video", "audio", "subtitle"...
    std::string codec;
    std::string language;  ///< Empty where none is told.
    int channels = 0;      ///< Of sound.
    int sampleRate = 0;
    std::optional<TrackFate> fate;  ///< In the first output; nothing where there is none.
};

/// Empty words are not told.
struct ColorDescription {
    std::string matrix, range, primaries, transfer;
};

struct InputDescription {
    std::string name;
    std::string format, codec, pixelFormat;  ///< By the libraries' names.
    int width = 0;                           ///< As the picture stands upright.
    int height = 0;
    std::string pixelAspect;  ///< "16:15"; empty where unknown.
    bool isTurned = false;    ///< Shown otherwise than it is stored.
    int depth = 8;            ///< Bits per channel; 32 for float.
    bool alpha = false;
    bool premultiplied = false;
    Interlacing interlacing = Interlacing::Progressive;
    std::string frameRate;  ///< "30000/1001".
    double framesPerSecond = 0;
    std::int64_t frames = 0;          ///< Of the whole input; 0 where unknown.
    std::int64_t firstFrame = 0;      ///< Of the part asked for,
    std::int64_t framesExpected = 0;  ///< and how many it has; 0 where unknown.
    ColorDescription tags;            ///< As the input says,
    ColorDescription colors;          ///< and as its samples are read; empty for RGB.
    std::vector<TrackDescription> tracks;
    int chapters = 0;
};

struct OutputDescription {
    std::string name;
    std::string firstFile, lastFile;  ///< Of a sequence.
    std::string format;               ///< Of the container; empty for pictures.
    std::string encoder, pixelFormat;
    std::vector<std::pair<std::string, std::string>> encoderOptions;
    int width = 0;
    int height = 0;
    int depth = 8;
    bool alpha = false;
    bool alphaIfNeeded = false;    ///< A picture gets it where a pixel is transparent.
    ColorDescription tags;         ///< What is written of colours,
    ColorDescription colors;       ///< and how samples are made; empty for RGB.
    std::vector<TrackFate> fates;  ///< What becomes of each of the input's tracks.
};

struct MediaDescription {
    InputDescription input;
    std::vector<OutputDescription> outputs;
    int renderedDepth = 8;  ///< Bits per channel that filters work with.
};

/// Opens the input of a job alone. Throws Error.
InputDescription probeInput(const RenderJob& job, const StopRequest& stop, Messages& messages);

}  // namespace vireo

#endif
