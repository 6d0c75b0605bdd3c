// SPDX-License-Identifier: MIT
// What the page takes of others' libraries, as it is put together for the browser.
export { makeZip } from 'client-zip';
export {
    AudioSampleSink,
    AudioSampleSource,
    BlobSource,
    canEncodeAudio,
    canEncodeVideo,
    EncodedAudioPacketSource,
    EncodedPacket,
    EncodedPacketSink,
    Input,
    MATROSKA,
    MediaStreamAudioTrackSource,
    MP4,
    Mp4OutputFormat,
    Output,
    QTFF,
    Quality,
    StreamTarget,
    VideoSample,
    VideoSampleSink,
    VideoSampleSource,
    WEBM,
    WebMOutputFormat,
} from 'mediabunny';
