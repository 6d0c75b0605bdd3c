// SPDX-License-Identifier: MIT
// What goes into the chain: a still picture, a clip or the camera. Each has
//   name, width, height, rate (frames a second), frames (0 where unknown), isStill, isLive
//   grab(frame, width, height)   the frame's picture { width, height, data } at that size, new each time
//   file                         of clips: what a ClipReader reads; null where it reads none
//   play(onFrame), pause()       onFrame(frame) comes with each frame; grab then takes the frame on show
import { ClipReader, commonRate } from './clip_reader.mjs';
import { readPngHeader } from './png.mjs';
import { PageError } from './texts.mjs';

/** A picture, its result and what lies between them must fit the memory of a page. */
const mostPixels = 64e6;

/** A still picture counts as a clip of four seconds, so that filters that depend on time show themselves. */
const stillRate = 25;
const stillFrames = 100;

function refuseLarge(name, width, height) {
    if (width * height > mostPixels) throw new PageError('tooLarge', { name, most: mostPixels / 1e6 });
}

/** What a canvas source shows, as a picture of the given size. */
function pictureOf(shown, width, height) {
    const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
    context.imageSmoothingQuality = 'high';
    context.drawImage(shown, 0, 0, width, height);
    return { width, height, data: context.getImageData(0, 0, width, height).data };
}

class Still {
    rate = stillRate;
    frames = stillFrames;
    isStill = true;
    isLive = false;
    #picture;
    #canvas;
    #timer;

    constructor(name, picture) {
        Object.assign(this, { name, width: picture.width, height: picture.height });
        this.#picture = picture;
        this.#canvas = new OffscreenCanvas(picture.width, picture.height);
        this.#canvas.getContext('2d').putImageData(new ImageData(picture.data, picture.width), 0, 0);
    }

    async grab(frame, width, height) {
        if (width !== this.width) return pictureOf(this.#canvas, width, height);
        return { width, height, data: this.#picture.data.slice() };
    }

    play(onFrame, from) {
        const begin = performance.now() - (1000 * from) / this.rate;
        const step = (now) => {
            onFrame(Math.floor(((now - begin) * this.rate) / 1000) % this.frames);
            this.#timer = requestAnimationFrame(step);
        };
        this.#timer = requestAnimationFrame(step);
    }

    pause() {
        cancelAnimationFrame(this.#timer);
    }

    close() {
        this.pause();
    }
}

/** Comes once with the event, or fails after an error. */
function once(target, event, milliseconds = 10_000) {
    return new Promise((resolve, reject) => {
        const stop = new AbortController();
        const end = (finish) => () => {
            stop.abort();
            clearTimeout(timer);
            finish();
        };
        const timer = setTimeout(
            end(() => reject(new Error(`no ${event}`))),
            milliseconds,
        );
        target.addEventListener(event, end(resolve), { signal: stop.signal });
        target.addEventListener(
            'error',
            end(() => reject(new Error('not readable'))),
            { signal: stop.signal },
        );
    });
}

/** Calls back with the media time of each frame that a video shows, until the answer is false. */
function eachFrame(video, onTime) {
    const next = video.requestVideoFrameCallback
        ? (step) => video.requestVideoFrameCallback((_, { mediaTime }) => step(mediaTime))
        : (step) => requestAnimationFrame(() => step(video.currentTime));
    const step = (time) => {
        if (onTime(time) !== false) next(step);
    };
    next(step);
}

/** When the frame that a video shows begins, in seconds; null where the browser does not tell. */
function shownTime(video) {
    try {
        const frame = new VideoFrame(video);
        const { timestamp } = frame;
        frame.close();
        return timestamp / 1e6;
    } catch {
        return null;
    }
}

/** Frames a second, from the times of the first few. */
async function measuredRate(video) {
    const times = new Set();
    const enough = new Promise((resolve) => {
        setTimeout(resolve, 1500);
        eachFrame(video, (time) => {
            times.add(time);
            if (times.size < 9) return true;
            resolve();
            return false;
        });
    });
    await video.play();
    await enough;
    video.pause();
    const sorted = [...times].sort((a, b) => a - b);
    const steps = sorted.slice(1).map((time, i) => time - sorted[i]);
    const single = steps.filter((step) => step < 1.5 * Math.min(...steps));
    if (single.length === 0) return stillRate;
    const rate = single.length / single.reduce((sum, step) => sum + step, 0);
    return commonRate(rate, 0.0005) ?? commonRate(rate, 0.02) ?? rate;
}

class Video {
    isStill = false;
    #video;
    #url;
    #turn = Promise.resolve();
    #isPlaying = false;

    constructor(name, video, { rate, frames, url = null, file = null }) {
        this.#video = video;
        this.#url = url;
        this.file = file;
        Object.assign(this, { name, width: video.videoWidth, height: video.videoHeight, rate, frames });
        this.isLive = frames === 0;
    }

    grab(frame, width, height) {
        this.#turn = this.#turn
            .catch(() => {})
            .then(async () => {
                if (!this.#isPlaying && !this.isLive) await this.#seek(frame);
                return pictureOf(this.#video, width, height);
            });
        return this.#turn;
    }

    async #seek(frame) {
        const time = Math.min((frame + 0.5) / this.rate, this.#video.duration);
        if (Math.abs(this.#video.currentTime - time) < 0.25 / this.rate) return;
        const before = shownTime(this.#video);
        const done = once(this.#video, 'seeked');
        this.#video.currentTime = time;
        await done;
        // Chromium may tell of the end some milliseconds before the frame is there to be drawn.
        const isOld = () => {
            const shown = shownTime(this.#video);
            return shown !== null && shown === before && Math.abs(shown - frame / this.rate) > 0.75 / this.rate;
        };
        for (let tries = 0; isOld() && tries < 50; ++tries) await new Promise((resolve) => setTimeout(resolve, 5));
    }

    /** Of the camera: the next frame, which is to be closed. */
    nextFrame() {
        return new Promise((resolve) => {
            eachFrame(this.#video, (time) => {
                resolve(new VideoFrame(this.#video, { timestamp: Math.round(1e6 * time) }));
                return false;
            });
        });
    }

    play(onFrame, from) {
        this.#isPlaying = true;
        let count = from;
        if (!this.isLive) this.#video.currentTime = from / this.rate;
        this.#video.play().catch(() => {}); // ended by a pause that comes at once
        eachFrame(this.#video, (time) => {
            if (!this.#isPlaying) return false;
            onFrame(this.isLive ? count++ : Math.min(Math.round(time * this.rate), this.frames - 1));
            return true;
        });
    }

    pause() {
        this.#isPlaying = false;
        this.#video.pause();
    }

    close() {
        this.pause();
        for (const track of this.#video.srcObject?.getTracks() ?? []) track.stop();
        this.#video.removeAttribute('src');
        if (this.#url) URL.revokeObjectURL(this.#url);
    }
}

const silentVideo = () =>
    Object.assign(document.createElement('video'), { muted: true, playsInline: true, loop: true });

async function openClip(blob, name) {
    const video = silentVideo();
    const url = URL.createObjectURL(blob);
    try {
        const loaded = once(video, 'loadeddata');
        Object.assign(video, { preload: 'auto', src: url });
        await loaded;
        if (video.videoWidth === 0) throw new Error('no picture');
        refuseLarge(name, video.videoWidth, video.videoHeight);
        if (!Number.isFinite(video.duration)) {
            const found = once(video, 'durationchange'); // recordings tell their length at their end
            video.currentTime = 1e6;
            await found;
        }
        const reader = await ClipReader.open(blob, name);
        if (reader) {
            reader.close();
            return new Video(name, video, { rate: reader.rate, frames: reader.frames, url, file: blob });
        }
        const rate = await measuredRate(video);
        return new Video(name, video, { rate, frames: Math.max(1, Math.round(video.duration * rate)), url });
    } catch (error) {
        URL.revokeObjectURL(url);
        throw error;
    }
}

async function openStill(blob, name, readPng) {
    const bytes = new Uint8Array(await blob.arrayBuffer());
    const header = readPngHeader(bytes);
    if (header) refuseLarge(name, header.width, header.height);
    const exact = header ? await readPng(bytes) : null;
    if (exact) return new Still(name, exact);
    const bitmap = await createImageBitmap(blob, { colorSpaceConversion: 'none' });
    refuseLarge(name, bitmap.width, bitmap.height);
    const picture = pictureOf(bitmap, bitmap.width, bitmap.height);
    bitmap.close();
    return new Still(name, picture);
}

/** The source that a file holds; throws PageError. `readPng` reads a PNG file's bytes, or gives null. */
export async function openSource(blob, name, readPng) {
    const isClip = blob.type.startsWith('video/');
    for (const open of isClip ? [openClip] : [openStill, openClip]) {
        try {
            return await open(blob, name, readPng);
        } catch (error) {
            if (error instanceof PageError) throw error;
            if (blob.type.startsWith('image/')) break;
        }
    }
    throw new PageError('notReadable', { name });
}

/** The camera, once the user allows it; throws PageError. */
export async function openCamera(name) {
    try {
        const video = silentVideo();
        const media = { width: { ideal: 1280 }, height: { ideal: 720 } };
        video.srcObject = await navigator.mediaDevices.getUserMedia({ video: media });
        await once(video, 'loadeddata', 5000).catch(() => video.play());
        return new Video(name, video, { rate: 30, frames: 0 });
    } catch {
        throw new PageError('noCamera');
    }
}
