// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_DECODER_COMPLAINTS_H
#define VIREO_APP_MEDIA_DECODER_COMPLAINTS_H

#include "app/media/ffmpeg_objects.h"
#include "app/media/input_policy.h"

#include <mutex>
#include <string>
#include <utility>

namespace vireo {

/// What a decoder complains of, on whichever of its threads.
class DecoderComplaints {
public:
    /// The decoder ends first.
    void watch(AVCodecContext& decoder) { decoder.opaque = this; }

    /// Of what the libraries log for; null where nobody watches it.
    static DecoderComplaints* of(void* source);

    void add(const std::string& complaint);

    /// The last one, which is forgotten then; empty where there was none.
    std::string take();

    /// Whether it said since this was last asked that what it decoded is damaged, for codecs that give the
    /// frame all the same and mark nothing.
    bool takeDamage();

    /// Why decoding failed with a code, in words. Throws std::bad_alloc where memory is short.
    std::string failure(int code, const InputPolicy& policy);

private:
    std::mutex mutex_;
    std::string last_;
    bool damage_ = false;
    std::pair<std::int64_t, std::int64_t> refused_;  ///< A size that is too large.
};

/// Whether there is no memory for another picture or two, so that a failure was no damage.
bool isMemoryShort(std::int64_t pixels = 0);

}  // namespace vireo

#endif
