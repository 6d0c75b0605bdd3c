// SPDX-License-Identifier: MIT
// Renders in the page and in a worker of it, for the test that serves this, plain or bundled.
import { loadVireo } from 'vireo-filters';

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
