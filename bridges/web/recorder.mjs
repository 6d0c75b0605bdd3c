// SPDX-License-Identifier: MIT
// Records the filtered camera into a file. Frames that come while all cores work are left out.
import { videoFormats } from './export_video.mjs';
import { closeFrame, FramePool } from './frame_pool.mjs';
import {
    MediaStreamAudioTrackSource,
    Output,
    Quality,
    StreamTarget,
    VideoSample,
    VideoSampleSource,
    WebMOutputFormat,
} from './media.mjs';

export const recordingFormat = videoFormats.vp9;

const quality = new Quality('high');

/** The microphone, where there is one that the user allows. */
async function microphone() {
    try {
        return (await navigator.mediaDevices.getUserMedia({ audio: true })).getAudioTracks()[0];
    } catch {
        return null;
    }
}

export class Recorder {
    #source;
    #settings;
    #isStopped = false;
    #stop;
    #stopped = new Promise((resolve) => (this.#stop = resolve));

    /** `settings()` gives { chain, lookBack } as they are at a frame. */
    constructor(source, settings) {
        this.#source = source;
        this.#settings = settings;
    }

    stop() {
        this.#isStopped = true;
        this.#stop();
    }

    /** The camera's frames as they come, until it is stopped. */
    async *#frames() {
        for (let frame = 0; !this.#isStopped; ++frame) {
            const coming = this.#source.nextFrame();
            const image = await Promise.race([coming, this.#stopped]);
            if (!image) {
                coming.then((late) => late.close());
                return;
            }
            yield { image, frame, time: image.timestamp / 1e6, ...this.#settings() };
        }
    }

    /** Records into a target until stop(); `progress(seconds)` hears how long it is. */
    async run(target, progress) {
        const writable = new WritableStream({ write: (chunk) => target.write(chunk) });
        const output = new Output({
            format: new WebMOutputFormat(),
            target: new StreamTarget(writable, { chunked: true }),
        });
        const video = new VideoSampleSource({ codec: recordingFormat.codec, quality, latencyMode: 'realtime' });
        const pool = new FramePool();
        const [track] = await Promise.all([microphone(), pool.started]);
        let failed = () => {};
        const failure = new Promise((_, reject) => (failed = reject));
        failure.catch(() => {});
        let result = null;
        try {
            output.addVideoTrack(video);
            if (track) {
                const sound = new MediaStreamAudioTrackSource(track, { codec: 'opus', quality });
                sound.errorPromise?.catch(failed);
                output.addAudioTrack(sound);
            }
            await output.start();
            let begin = null;
            for await (result of pool.rendered(this.#frames(), { frames: 0, rate: this.#source.rate, as: 'frame' })) {
                begin ??= result.time;
                const sample = new VideoSample(result.image, { timestamp: result.time - begin });
                await Promise.race([video.add(sample), failure]).finally(() => sample.close());
                progress(result.time - begin);
                result = null;
            }
            await output.finalize();
        } catch (error) {
            await output.cancel().catch(() => {});
            throw target.failure ?? error;
        } finally {
            closeFrame(result);
            track?.stop();
            pool.close();
        }
    }
}
