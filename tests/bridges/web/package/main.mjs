// SPDX-License-Identifier: MIT
// Renders in the page and in a worker of it, for the test that serves this, plain or bundled.
import { loadVireo } from 'vireo-filters';

/** What a stream of a picture, red on the left and blue on the right, shows flipped, and how it ends. */
globalThis.mirrored = async () => {
    const drawing = Object.assign(document.createElement('canvas'), { width: 64, height: 48 }).getContext('2d');
    const draw = () => {
        for (const [x, colour] of [[0, '#c00000'], [32, '#0000c0']]) {
            drawing.fillStyle = colour;
            drawing.fillRect(x, 0, 32, 48);
        }
    };
    const drawn = setInterval(draw, 20);
    const live = (await loadVireo()).chain('Horizontal Flip').live(drawing.canvas.captureStream(25));
    const video = Object.assign(document.createElement('video'), { muted: true, srcObject: live.stream });
    await video.play();
    const seen = new OffscreenCanvas(64, 48).getContext('2d');
    const pixel = (x) => [...seen.getImageData(x, 24, 1, 1).data].map((sample) => Math.round(sample / 64));
    do {
        await new Promise((resolve) => video.requestVideoFrameCallback(resolve));
        seen.drawImage(video, 0, 0);
    } while (pixel(8)[2] === 0);
    live.dispose();
    clearInterval(drawn);
    return { left: pixel(8), right: pixel(56), state: live.stream.getVideoTracks()[0].readyState };
};

/** The results of both, and whether the page's is an ImageData. */
globalThis.rendered = async (text, { width, height, samples }) => {
    const image = new ImageData(Uint8ClampedArray.from(samples), width, height);
    const worker = new Worker(new URL('./worker.mjs', import.meta.url), { type: 'module' });
    const answer = new Promise((resolve, reject) => {
        worker.onmessage = ({ data }) => resolve(data);
        worker.onerror = ({ message }) => reject(new Error(message));
    });
    worker.postMessage({ text, image });
    const result = (await loadVireo()).chain(text).render(image);
    return { isImage: result instanceof ImageData, page: [...result.data], worker: [...(await answer).data] };
};
