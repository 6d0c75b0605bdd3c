// SPDX-License-Identifier: MIT
// Runs the engine beside the page. Each message { id, action, argument } is answered by { id, result } or { id, error }.
import { readPng, writePng } from './png.mjs';
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
    render: rendered,
    png: (job) => writePng(rendered(job)),
    readPng,
};

/** What need not be copied on its way to the page. */
function transferred(result) {
    if (result instanceof Uint8Array) return [result.buffer];
    return result?.data ? [result.data.buffer] : [];
}

self.onmessage = async ({ data: { id, action, argument } }) => {
    try {
        const result = await actions[action](argument);
        self.postMessage({ id, result }, transferred(result));
    } catch (error) {
        self.postMessage({ id, error: error.message });
    }
};
