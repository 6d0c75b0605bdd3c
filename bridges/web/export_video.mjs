// SPDX-License-Identifier: MIT
// A clip rendered into a file: decoded, filtered, encoded and written frame by frame, each once and in order.
import { Clock } from './export_control.mjs';
import { Sound } from './export_sound.mjs';
import { closeFrame, FramePool } from './frame_pool.mjs';
import {
    canEncodeVideo,
    Mp4OutputFormat,
    Output,
    Quality,
    StreamTarget,
    VideoSample,
    VideoSampleSource,
    WebMOutputFormat,
} from './media.mjs';
import { PageError } from './texts.mjs';

/** How far the sound is written ahead of the frames, in seconds. */
const soundLead = 1;

const webM = { extension: '.webm', type: 'video/webm', sounds: ['opus'] };

/** Videos that the page writes. Sound is copied, or encoded as the first of its codecs that the browser has. */
export const videoFormats = {
    vp9: { name: 'WebM (VP9)', codec: 'vp9', ...webM, keepsAlpha: true },
    av1: { name: 'WebM (AV1)', codec: 'av1', ...webM },
    h264: { name: 'MP4 (H.264)', codec: 'avc', extension: '.mp4', type: 'video/mp4', sounds: ['aac', 'opus'] },
};

export const qualities = { small: 'medium', good: 'high', best: 'very-high' };

export const canEncode = ({ codec }, { width, height }, quality = 'good') =>
    canEncodeVideo(codec, { width, height, quality: new Quality(qualities[quality]) });

/** The frames of a stretch { first, last } with the earlier ones that the chain looks back at. */
async function* framesOf(reader, times, { first, last }, lookBack, control) {
    let frame = Math.max(0, first - lookBack);
    for await (const { image, ...timing } of reader.framesFrom(times[frame])) {
        try {
            await control.pass();
        } catch (error) {
            image.close();
            throw error;
        }
        yield { image, ...timing, frame, isEarlier: frame < first };
        if (++frame > last) return;
    }
}

/**
 * The rendered frames of a stretch, in order. `job` is { reader, chain, lookBack, stretch, control, progress }; progress
 * hears of { done, all, left }, the seconds that are left or null.
 */
export async function* renderedFrames({ reader, chain, lookBack, stretch, control, progress }, times, as, channels) {
    const all = stretch.last - stretch.first + 1;
    const pool = new FramePool();
    const clock = new Clock();
    let done = 0;
    let result = null;
    try {
        await pool.started;
        const frames = framesOf(reader, times, stretch, lookBack, control);
        const { frames: count, rate } = reader;
        for await (result of pool.rendered(frames, { chain, lookBack, frames: count, rate, as, channels })) {
            yield result;
            result = null;
            const wasPaused = control.isPaused;
            await control.pass();
            progress({ done: ++done, all, left: clock.step(done, all, wasPaused) });
        }
    } finally {
        closeFrame(result);
        pool.close();
    }
}

class Video {
    #source;
    #sound;
    #begin;

    constructor(source, sound, begin) {
        this.#source = source;
        this.#sound = sound;
        this.#begin = begin;
    }

    async add({ image, frame, time, duration }) {
        const sample = new VideoSample(image, { timestamp: Math.max(0, time - this.#begin), duration });
        try {
            await this.#sound?.upTo(time + soundLead);
            await this.#source.add(sample);
        } catch {
            throw new PageError('encodeFailed', { frame });
        } finally {
            sample.close();
        }
    }
}

/**
 * Writes a stretch of a clip to a target. `job` is that of renderedFrames() with
 *   format    one of videoFormats
 *   quality, sound, alpha
 * Gives the note on the sound, [text, words] or null.
 */
export async function exportVideo(job, target) {
    const { reader, stretch, format, quality, alpha } = job;
    const isWebM = format.extension === '.webm';
    const container = isWebM ? new WebMOutputFormat() : new Mp4OutputFormat({ fastStart: false });
    const writable = new WritableStream({ write: (chunk) => target.write(chunk) });
    const output = new Output({ format: container, target: new StreamTarget(writable, { chunked: true }) });
    const times = await reader.times();
    // A whole clip begins where it did, a stretch at its first frame.
    const begin = stretch.first === 0 ? Math.min(0, times[0]) : times[stretch.first];
    const end = times[stretch.last + 1] ?? Infinity;
    const { sound, note } = job.sound
        ? await Sound.of(reader, container, format.sounds, begin)
        : { sound: null, note: null };
    const source = new VideoSampleSource({
        codec: format.codec,
        quality: new Quality(qualities[quality]),
        alpha: alpha ? 'keep' : 'discard',
        latencyMode: 'quality',
    });
    try {
        output.addVideoTrack(source, { canBeTransparent: alpha });
        sound?.addTo(output);
        await output.start();
        const video = new Video(source, sound, begin);
        for await (const result of renderedFrames(job, times, 'frame')) await video.add(result);
        source.close();
        await sound?.upTo(end);
        await sound?.end();
        await output.finalize();
        return note;
    } catch (error) {
        await sound?.abandon();
        await output.cancel().catch(() => {});
        throw target.failure ?? error;
    }
}
