// SPDX-License-Identifier: MIT
// Owners for the objects of FFmpeg's libraries, and their errors as sentences.
#ifndef VIREO_APP_MEDIA_FFMPEG_OBJECTS_H
#define VIREO_APP_MEDIA_FFMPEG_OBJECTS_H

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/avutil.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libavutil/hwcontext.h>
#include <libavutil/pixdesc.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <string>

namespace vireo {

template <auto release>
struct ReleaseBy {
    template <class Object>
    void operator()(Object* object) const {
        release(object);
    }
};

template <auto release>
struct ReleaseByAddress {
    template <class Object>
    void operator()(Object* object) const {
        release(&object);
    }
};

using InputFormatPtr = std::unique_ptr<AVFormatContext, ReleaseByAddress<avformat_close_input>>;
using OutputFormatPtr = std::unique_ptr<AVFormatContext, ReleaseBy<avformat_free_context>>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, ReleaseByAddress<avcodec_free_context>>;
using BufferPtr = std::unique_ptr<AVBufferRef, ReleaseByAddress<av_buffer_unref>>;
using FramePtr = std::unique_ptr<AVFrame, ReleaseByAddress<av_frame_free>>;
using PacketPtr = std::unique_ptr<AVPacket, ReleaseByAddress<av_packet_free>>;
using BufferPoolPtr = std::unique_ptr<AVBufferPool, ReleaseByAddress<av_buffer_pool_uninit>>;
using ScalerPtr = std::unique_ptr<SwsContext, ReleaseBy<sws_freeContext>>;
using ResamplerPtr = std::unique_ptr<SwrContext, ReleaseByAddress<swr_free>>;
using FilterGraphPtr = std::unique_ptr<AVFilterGraph, ReleaseByAddress<avfilter_graph_free>>;
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, ReleaseBy<av_audio_fifo_free>>;

FramePtr newFrame();    ///< Throws std::bad_alloc.
PacketPtr newPacket();  ///< Throws std::bad_alloc.

/// Options by name.
class Dictionary {
public:
    Dictionary() = default;
    Dictionary(const Dictionary&) = delete;
    Dictionary& operator=(const Dictionary&) = delete;
    ~Dictionary() { av_dict_free(&entries_); }

    void set(const std::string& name, const std::string& value) {
        av_dict_set(&entries_, name.c_str(), value.c_str(), 0);
    }
    /// Null where there is none.
    const char* value(const char* name) const {
        const AVDictionaryEntry* entry = av_dict_get(entries_, name, nullptr, 0);
        return entry == nullptr ? nullptr : entry->value;
    }

    /// The name of an entry that nobody took, or null.
    const char* anyName() const {
        const AVDictionaryEntry* entry = av_dict_get(entries_, "", nullptr, AV_DICT_IGNORE_SUFFIX);
        return entry == nullptr ? nullptr : entry->key;
    }

    AVDictionary** address() { return &entries_; }

private:
    AVDictionary* entries_ = nullptr;
};

/// The words for an error code.
std::string errorText(int code);

/// Keeps the libraries from writing to standard error by themselves, and the last thing they complained about
/// for error sentences. To be called before their first use.
void captureLibraryMessages();

/// Whether they refused to add a stream on this thread since this was last asked.
bool hadTooManyStreams();

/// What the libraries said last on this thread, which is forgotten then; empty where they said nothing.
std::string libraryComplaint();

/// The code's words, and what the library said last on this thread where it said something.
std::string failureText(int code);

/// Throws Error "what: words for the code" for a negative code, else returns it.
int check(int code, const std::string& what);

/// Seconds that are less apart are one time.
inline constexpr double sameTime = 1e-6;

inline double seconds(std::int64_t time, AVRational base) { return static_cast<double>(time) * av_q2d(base); }

}  // namespace vireo

#endif
