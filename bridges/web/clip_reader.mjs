// SPDX-License-Identifier: MIT
// A clip's file, read packet by packet: what is in it, and each of its frames once, in order.
import {
    AudioSampleSink,
    BlobSource,
    EncodedPacketSink,
    Input,
    MATROSKA,
    MP4,
    QTFF,
    VideoSampleSink,
    WEBM,
} from './media.mjs';
import { PageError } from './texts.mjs';

const commonRates = [24000 / 1001, 24, 25, 30000 / 1001, 30, 50, 60000 / 1001, 60];

/** The usual rate that is within a share of a measured one, or undefined. */
export const commonRate = (rate, share) => commonRates.find((common) => Math.abs(common / rate - 1) < share);

/** A frame begins where its time says, or as near as this, in seconds. */
const slack = 1e-4;

export class ClipReader {
    #input;
    #video;
    #audio;

    constructor(input, video, audio, facts) {
        this.#input = input;
        this.#video = video;
        this.#audio = audio;
        Object.assign(this, facts);
    }

    /**
     * Reads what a file holds; null where it is no clip of a kind that is known here.
     *   name, width, height   as they are shown
     *   rate, frames          frames a second, on average, and how many there are
     *   hasAlpha, hasSound
     */
    static async open(blob, name) {
        const input = new Input({ source: new BlobSource(blob), formats: [MP4, QTFF, MATROSKA, WEBM] });
        try {
            const video = await input.getPrimaryVideoTrack();
            if (!video) throw new Error('no picture');
            const audio = await input.getPrimaryAudioTrack();
            const { packetCount, averagePacketRate } = await video.computePacketStats();
            const facts = {
                name,
                width: await video.getDisplayWidth(),
                height: await video.getDisplayHeight(),
                rate: commonRate(averagePacketRate, 0.0005) ?? averagePacketRate,
                frames: packetCount,
                hasAlpha: await video.canBeTransparent(),
                hasSound: audio !== null,
            };
            return new ClipReader(input, video, audio, facts);
        } catch {
            input.dispose();
            return null;
        }
    }

    close() {
        this.#input.dispose();
    }

    /** The times of all frames in the order in which they are shown, in seconds. */
    async times() {
        const times = [];
        const sink = new EncodedPacketSink(this.#video);
        for await (const { timestamp } of sink.packets(undefined, undefined, { metadataOnly: true })) {
            times.push(timestamp);
        }
        return times.sort((a, b) => a - b);
    }

    /**
     * The frames { image, time, duration } from a time on, upright; images are to be closed. Throws PageError where the
     * browser cannot decode one.
     */
    async *framesFrom(time) {
        if (!(await this.#video.canDecode())) throw new PageError('cannotDecode', { name: this.name });
        const samples = new VideoSampleSink(this.#video).samples(time + slack);
        for (let next; ;) {
            try {
                next = await samples.next();
            } catch {
                throw new PageError('decodeFailed', { name: this.name });
            }
            if (next.done) return;
            yield this.#upright(next.value);
        }
    }

    #upright(sample) {
        const { timestamp: time, duration, rotation, flip, format, visibleRect } = sample;
        const { width, height } = this;
        const isUpright = format !== null && rotation === 0 && !flip;
        let image;
        if (isUpright && visibleRect.width === width && visibleRect.height === height) {
            image = sample.toVideoFrame();
        } else {
            const canvas = new OffscreenCanvas(width, height);
            sample.draw(canvas.getContext('2d'), 0, 0, width, height);
            image = new VideoFrame(canvas, { timestamp: sample.microsecondTimestamp });
        }
        sample.close();
        return { image, time, duration };
    }

    /** What is in the sound: { codec, channels, rate, canDecode }; null where there is none. */
    async sound() {
        if (!this.#audio) return null;
        const [codec, channels, rate, canDecode] = await Promise.all([
            this.#audio.getCodec(),
            this.#audio.getNumberOfChannels(),
            this.#audio.getSampleRate(),
            this.#audio.canDecode(),
        ]);
        return { codec, channels, rate, canDecode };
    }

    soundConfig() {
        return this.#audio.getDecoderConfig();
    }

    /** The sound's packets as they are in the file, from a time on. */
    async *soundPacketsFrom(time) {
        const sink = new EncodedPacketSink(this.#audio);
        const within = time > 0 ? await sink.getPacket(time) : null;
        const first = within ?? (await sink.getFirstPacket());
        if (first) yield* sink.packets(first);
    }

    /** The sound decoded, from a time on; each piece is to be closed. */
    soundSamplesFrom(time) {
        return new AudioSampleSink(this.#audio).samples(time);
    }
}
