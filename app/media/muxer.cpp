// SPDX-License-Identifier: MIT
#include "app/media/muxer.h"

#include "app/base/files.h"
#include "engine/error.h"

#include <new>

namespace vireo {

Muxer::Muxer(const RenderJob& job, const AVOutputFormat& container, const StopRequest& stop)
    : name_(job.output == "-" ? "standard output" : job.output) {
    AVFormatContext* context = nullptr;
    // The first of two passes writes nothing.
    const bool isWritten = job.pass != 1;
    if (job.dryRun) {
        if (job.output != "-") checkOutputFile(pathOf(job.output), job.overwrite, job.folderIsMade);
    } else if (isWritten && job.output == "-") {
        pipe_ = std::make_unique<FileIo>(job.pipe, FileIo::Direction::Write, stop);
    } else if (isWritten) {
        file_.emplace(pathOf(job.output), job.overwrite);
    }
    const std::string url = file_        ? fileUrl(utf8Of(file_->path()))
                            : job.dryRun ? fileUrl("/dev/null")
                                         : "pipe:1";
    check(avformat_alloc_output_context2(&context, &container, nullptr, url.c_str()),
          "cannot write " + name_);
    context_.reset(context);
    context->interrupt_callback = interruptBy(stop);
    // The same input gives the same file: no random numbers, no versions.
    context->flags |= AVFMT_FLAG_BITEXACT;
    if (!isWritten || (container.flags & AVFMT_NOFILE) != 0) return;
    if (pipe_ != nullptr) {
        context->pb = pipe_->context();
        return;
    }
    AVIOContext* io = nullptr;
    check(avio_open2(&io, url.c_str(), AVIO_FLAG_WRITE, &context->interrupt_callback, nullptr),
          "cannot write " + name_);
    io_.reset(io);
    context->pb = io;
}

void Muxer::begin(Dictionary& options) {
    captureLibraryMessages();
    checkWrite(avformat_write_header(context_.get(), options.address()));
}

void Muxer::write(PacketPtr packet) {
    const std::lock_guard lock(mutex_);
    checkWrite(av_interleaved_write_frame(context_.get(), packet.get()));
    if (context_->pb != nullptr) checkWrite(context_->pb->error);
}

void Muxer::finish() {
    const std::lock_guard lock(mutex_);
    checkWrite(av_write_trailer(context_.get()));
    if (context_->pb != nullptr) {
        avio_flush(context_->pb);
        const std::int64_t size = avio_size(context_->pb);
        bytes_ = size >= 0 ? size : avio_tell(context_->pb);
        checkWrite(context_->pb->error);
    }
    if (io_ != nullptr) {
        context_->pb = nullptr;
        checkWrite(avio_close(io_.release()));
    }
}

void Muxer::appear() {
    if (file_) file_->commit();
}

void Muxer::checkWrite(int code) const {
    if (code >= 0) return;
    throwIfInterrupted();
    if (code == AVERROR(EPIPE)) throw Error("the reader of " + name_ + " closed the pipe");
    check(code, "cannot write " + name_);
}

}  // namespace vireo
