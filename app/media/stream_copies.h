// SPDX-License-Identifier: MIT
// The streams beside the video: sound and subtitles, copied where the container takes them, else converted,
// else named and left out.
#ifndef VIREO_APP_MEDIA_STREAM_COPIES_H
#define VIREO_APP_MEDIA_STREAM_COPIES_H

#include "app/media/ffmpeg_reader.h"
#include "app/media/muxer.h"

#include <memory>
#include <vector>

namespace vireo {

/// One stream on its way from an input to an output.
class StreamRoute {
public:
    virtual ~StreamRoute() = default;
    /// Times are the input's.
    virtual void take(PacketPtr packet) = 0;
    virtual void finish() {}
};

class StreamCopies {
public:
    /// Adds streams, titles, languages and chapters to the output.
    StreamCopies(const FfmpegReader& reader, Muxer& muxer, bool noAudio, Messages& messages);

    void take(PacketPtr packet);
    void finish();

private:
    std::vector<std::unique_ptr<StreamRoute>> routes_;  ///< By the input's stream; null where it is left out.
};

/// Copies tags of a stream or a file, less those that would be wrong of the output.
void copyTags(AVDictionary* from, AVDictionary** to);

/// A sound stream through decoder and encoder; null where there is no pair for it.
std::unique_ptr<StreamRoute> convertSound(const AVStream& from, Muxer& muxer, double timeOrigin);

/// Text subtitles in the kind that the container takes; null where there is none.
std::unique_ptr<StreamRoute> convertSubtitles(const AVStream& from, Muxer& muxer, double timeOrigin);

}  // namespace vireo

#endif
