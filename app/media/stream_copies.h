// SPDX-License-Identifier: MIT
// The streams beside the video: sound and subtitles, copied where the container takes them, else transcoded,
// else named and left out.
#ifndef VIREO_APP_MEDIA_STREAM_COPIES_H
#define VIREO_APP_MEDIA_STREAM_COPIES_H

#include "app/media/ffmpeg_reader.h"
#include "app/media/muxer.h"
#include "app/media/stream_copy.h"

#include <memory>
#include <vector>

namespace vireo {

class StreamCopies {
public:
    /// Adds streams, titles, languages and chapters to the output.
    StreamCopies(const FfmpegReader& reader, Muxer& muxer, bool noAudio, Messages& messages);

    void take(PacketPtr packet);
    void finish();

    TrackFate fateOf(int stream) const { return fates_[static_cast<std::size_t>(stream)]; }

private:
    std::vector<TrackFate> fates_;                     ///< By the input's stream, as
    std::vector<std::unique_ptr<StreamCopy>> copies_;  ///< By the input's stream; null where it is left out.
};

/// Copies tags of a stream or a file, less those that would be wrong of the output.
void copyTags(AVDictionary* from, AVDictionary** to);

}  // namespace vireo

#endif
