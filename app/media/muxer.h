// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_MUXER_H
#define VIREO_APP_MEDIA_MUXER_H

#include "app/base/output_file.h"
#include "app/media/ffmpeg_io.h"
#include "app/media/render_job.h"

#include <mutex>
#include <optional>

namespace vireo {

/// The container of an output. Packets may come from several threads.
class Muxer {
public:
    /// Throws Error where the output may not or cannot be written.
    Muxer(const RenderJob& job, const AVOutputFormat& container, const StopRequest& stop);

    AVFormatContext& context() { return *context_; }

    /// After all streams were added. Options that are not taken are left in `options`.
    void begin(Dictionary& options);

    /// Times of the packet are those of its stream.
    void write(PacketPtr packet);

    /// Ends the file.
    void finish();

    /// Lets it be seen under its name.
    void appear();

    /// How much was written, once it is finished.
    std::int64_t bytes() const { return bytes_; }

private:
    struct CloseIo {
        void operator()(AVIOContext* io) const { avio_close(io); }
    };

    void checkWrite(int code) const;

    const std::string name_;  ///< Of the output.
    std::optional<OutputFile> file_;
    std::unique_ptr<FileIo> pipe_;
    std::unique_ptr<AVIOContext, CloseIo> io_;
    OutputFormatPtr context_;
    std::int64_t bytes_ = 0;
    std::mutex mutex_;
};

}  // namespace vireo

#endif
