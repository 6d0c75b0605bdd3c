// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_objects.h"

#include "app/media/decoder_complaints.h"
#include "engine/error.h"

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <new>
#include <string_view>
#include <utility>

namespace vireo {
namespace {

// Nothing with a destructor: MinGW's runtime frees the storage of a thread before it calls those.
thread_local char lastComplaint[512];
thread_local bool tooManyStreams = false;

void keepComplaint(void* source, int level, const char* format, va_list arguments) {
    if (level > AV_LOG_ERROR) return;
    std::vsnprintf(lastComplaint, sizeof lastComplaint, format, arguments);
    std::string_view text = lastComplaint;
    if (text.starts_with("Number of streams exceeds")) tooManyStreams = true;
    while (text.ends_with('\n') || text.ends_with('.')) text.remove_suffix(1);
    lastComplaint[text.size()] = '\0';
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
    lastComplaint[0] = '\0';
}

bool hadTooManyStreams() { return std::exchange(tooManyStreams, false); }

std::string libraryComplaint() {
    std::string complaint = lastComplaint;
    lastComplaint[0] = '\0';
    return complaint;
}

std::string failureText(int code) {
    const std::string complaint = libraryComplaint();
    return errorText(code) + (complaint.empty() ? "" : " (" + complaint + ')');
}

int check(int code, const std::string& what) {
    if (code < 0) throw Error(what + ": " + failureText(code));
    return code;
}

}  // namespace vireo
