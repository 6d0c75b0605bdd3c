// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_RENDER_JOB_H
#define VIREO_APP_MEDIA_RENDER_JOB_H

#include "app/base/messages.h"
#include "app/base/ratio.h"
#include "app/media/input_policy.h"
#include "engine/chain/clip.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vireo {

class PassLog;

/// Frames from `first` to `last`, both included, counted from 0.
struct FrameRange {
    std::int64_t first = 0;
    std::optional<std::int64_t> last;
};

/// The last of `count` frames, as far as numbers go.
inline std::int64_t lastOf(std::int64_t first, std::int64_t count) {
    return first + std::min(count - 1, std::numeric_limits<std::int64_t>::max() - first);
}

/// What FFmpeg's own filters do to an input before it is rendered, in this order. Numbers of frames are those
/// of what comes out.
struct Preparation {
    struct Crop {
        int width, height, left, top;
    };
    struct Scale {
        int width, height;  ///< One may be -N: by the other one, a multiple of N.
    };
    bool deinterlace = false;
    std::optional<Ratio> rate;
    std::optional<Crop> crop;
    std::optional<Scale> scale;

    bool changesPictures() const { return deinterlace || crop || scale; }
};

/// What is asked of a render of one input.
struct RenderJob {
    std::string input;   ///< A file, a sequence's pattern ("frame%04d.png") or "-".
    std::string output;  ///< The same. Empty: frames go nowhere.
    int pipe = 1;        ///< What "-" writes video to.
    bool overwrite = false;
    bool dryRun = false;        ///< Everything is opened and nothing written.
    bool folderIsMade = false;  ///< The output's folder, where it is missing.
    bool quiet = false;
    ProgressStyle progress;
    bool strict = false;  ///< Damage is a failure.
    InputPolicy policy;

    std::optional<FrameRange> frames;
    std::optional<double> start;                 ///< Seconds from the first frame; excludes `frames`.
    std::optional<double> duration;              ///< Seconds, from the start or from the first of `frames`.
    std::optional<std::int64_t> durationFrames;  ///< Frames, from the start.
    std::optional<std::int64_t> clipLength;      ///< Frames of the input, where that cannot be found.
    std::optional<std::int64_t> startNumber;

    std::string encoder;      ///< Empty: by the output's name.
    std::string pixelFormat;  ///< Empty: the best that the encoder and the source share.
    std::string format;       ///< Of "-"; empty: Matroska.
    std::vector<std::pair<std::string, std::string>> encoderOptions;
    std::optional<int> quality;  ///< 0 to 100, on whatever scale the encoder has.
    bool twoPass = false;
    int pass = 0;  ///< 1 or 2; 0 where there is but one.
    std::shared_ptr<PassLog> passLog;

    bool noAudio = false;
    bool alpha = false;
    bool premultiplied = false;
    bool dithers = true;  ///< Where a source is deeper than what the filters take.
    Preparation preparation;
    std::optional<Interlacing> interlacing;  ///< Overrides the source's flags.
    int jobs = 0;                            ///< Frames rendered side by side; 0: the machine's cores.
    bool atOnce = false;                     ///< Somebody waits for each frame: all cores work on it.

    std::vector<RenderJob> alsoTo;  ///< Further outputs of the same frames, as far as jobs say of outputs.

    /// The names of all outputs.
    std::vector<std::string> outputs() const {
        std::vector<std::string> names;
        if (!output.empty()) names.push_back(output);
        for (const RenderJob& other : alsoTo) names.push_back(other.output);
        return names;
    }
};

}  // namespace vireo

#endif
