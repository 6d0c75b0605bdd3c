// SPDX-License-Identifier: MIT
// Runs the engine beside the page. Each message { id, action, argument } is answered by { id, result } or { id, error }.
import { measured } from './picture_levels.mjs';
import { compressedPixels, readPng, writePng } from './png.mjs';
import { frameOfPicture, pictureOfFrame } from './video_pictures.mjs';
import { loadVireo } from './vireo/index.mjs';

let vireo;
const pictures = new Map(); // frame's number -> the picture that goes into the chain

/** The picture of a frame, or the one nearest before it, or else the earliest. */
function pictureAt(frame) {
    const numbers = [...pictures.keys()].sort((a, b) => a - b);
    return pictures.get(numbers.findLast((number) => number <= frame) ?? numbers[0]);
}

/** The result of a job { chain, frame, frames, rate, picture }, over the stored pictures where it brings none. */
function rendered({ chain: text, frame, frames, rate, picture }) {
    const chain = vireo.chain(text);
    try {
        const earlier = picture ? undefined : pictureAt;
        return chain.render(picture ?? pictureAt(frame), { frame, frames, rate, earlier });
    } finally {
        chain.dispose();
    }
}

/** What is made of a rendered frame of a clip. */
const made = {
    frame: (picture) => ({ image: frameOfPicture(picture) }),
    png: async (picture) => ({ bytes: await writePng(picture) }),
    pixels: async (picture, { channels }) => ({ bytes: await compressedPixels(picture, channels) }),
    picture: (picture) => ({ picture }),
};

const actions = {
    async start(source) {
        vireo = await loadVireo(source);
    },
    store({ frame, picture }) {
        pictures.set(frame, picture);
    },
    drop(frames) {
        for (const frame of frames) pictures.delete(frame);
    },
    /** Stores a frame of a clip and forgets those before `first`. */
    async takeFrame({ image, picture, frame, first, isShared }) {
        pictures.set(frame, picture ?? (await pictureOfFrame(image, isShared)));
        for (const number of pictures.keys()) if (number < first) pictures.delete(number);
        return isShared ? pictures.get(frame) : undefined;
    },
    /** A job whose picture comes as a video's frame, or was stored. */
    async renderFrame({ image, as, ...job }) {
        return made[as](rendered({ ...job, picture: image ? await pictureOfFrame(image) : undefined }), job);
    },
    render: rendered,
    measure: (job) => measured(rendered(job)),
    png: (job) => writePng(rendered(job)),
    readPng,
};

/** What need not be copied on its way to the page. */
function transferred(result) {
    if (result instanceof Uint8Array) return [result.buffer];
    if (result?.image) return [result.image];
    const buffer = result?.bytes?.buffer ?? (result?.picture ?? result)?.data?.buffer;
    return buffer instanceof ArrayBuffer ? [buffer] : [];
}

async function answer({ id, action, argument }) {
    try {
        const result = await actions[action](argument);
        self.postMessage({ id, result }, transferred(result));
    } catch (error) {
        self.postMessage({ id, error: error.message });
    }
}

/** Actions that wait for the browser are not overtaken by those that were asked for later. */
let last = Promise.resolve();
self.onmessage = ({ data }) => (last = last.then(() => answer(data)));
