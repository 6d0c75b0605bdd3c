// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_objects.h"

#include "app/media/decoder_complaints.h"
#include "engine/error.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>
#include <utility>

namespace vireo {
namespace {

thread_local std::string lastComplaint;
thread_local bool tooManyStreams = false;

void keepComplaint(void* source, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_ERROR) return;
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    lastComplaint = text;
    if (lastComplaint.starts_with("Number of streams exceeds")) tooManyStreams = true;
    while (!lastComplaint.empty() && (lastComplaint.back() == '\n' || lastComplaint.back() == '.'))
        lastComplaint.pop_back();
    if (DecoderComplaints* const decoder = DecoderComplaints::of(source)) decoder->add(lastComplaint);
}

}  // namespace

FramePtr newFrame() {
    FramePtr frame(av_frame_alloc());
    if (frame == nullptr) throw std::bad_alloc();
    return frame;
}

PacketPtr newPacket() {
    PacketPtr packet(av_packet_alloc());
    if (packet == nullptr) throw std::bad_alloc();
    return packet;
}

std::string errorText(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE];
    av_strerror(code, text, sizeof text);
    return text;
}

void captureLibraryMessages() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_callback(keepComplaint); });
    lastComplaint.clear();
}

bool hadTooManyStreams() { return std::exchange(tooManyStreams, false); }

std::string libraryComplaint() { return std::exchange(lastComplaint, {}); }

std::string failureText(int code) {
    const std::string complaint = libraryComplaint();
    return errorText(code) + (complaint.empty() ? "" : " (" + complaint + ')');
}

int check(int code, const std::string& what) {
    if (code < 0) throw Error(what + ": " + failureText(code));
    return code;
}

}  // namespace vireo
