// SPDX-License-Identifier: MIT
// A worker a core: the frames of a clip are rendered side by side and come back in order.
import { EngineWorker } from './engine_worker.mjs';

const mostWorkers = 16;

/** Frames a worker that are under way, so that none waits for the page, and one that is held up does not hold up all. */
const depth = 3;

/** Pages that are isolated share a frame's pixels with all workers; others give each worker the frame. */
const sharesMemory = () => globalThis.crossOriginIsolated && typeof SharedArrayBuffer !== 'undefined';

export class FramePool {
    #workers;
    #turn = 0;

    constructor(cores = navigator.hardwareConcurrency) {
        const count = Math.min(Math.max(cores || 1, 1), mostWorkers);
        this.#workers = Array.from({ length: count }, () => new EngineWorker());
    }

    get #underWay() {
        return depth * this.#workers.length;
    }

    get started() {
        return Promise.all(this.#workers.map((worker) => worker.started));
    }

    close() {
        for (const worker of this.#workers) worker.end();
    }

    /**
     * The results of `frames`, an async iterable of { image, frame, time, duration, isEarlier }, in its order, with what
     * came with each: `image` is a VideoFrame, which the pool takes; earlier ones are but looked back at. The job is
     * { chain, frames, rate, lookBack, as }, of which a frame may bring its own chain and lookBack; `as` says what comes of each: "frame" an image, "png" the bytes of a file,
     * "pixels" its bytes alone, of so many `channels`, "picture" a picture.
     */
    async *rendered(frames, job) {
        const coming = [];
        try {
            for await (const taken of frames) {
                const result = this.#render(taken, job);
                result.catch(() => {}); // told when its turn comes
                if (taken.isEarlier) await result;
                else coming.push(result);
                if (coming.length >= this.#underWay) yield coming.shift();
            }
            while (coming.length > 0) yield coming.shift();
        } finally {
            for (const result of coming) result.then(closeFrame, () => {});
        }
    }

    async #render({ image, isEarlier, ...taken }, all) {
        const { lookBack, ...job } = { ...all, ...taken };
        const worker = this.#workers[this.#turn++ % this.#workers.length];
        const { frame } = taken;
        const given = lookBack === 0 ? { image } : {};
        // Those whose turn comes meanwhile look back as well.
        if (lookBack > 0) await this.#spread(image, frame, frame - lookBack - this.#underWay);
        if (isEarlier) return null;
        const result = await worker.call('renderFrame', { ...job, ...given }, Object.values(given));
        return { ...taken, ...result };
    }

    /** Gives a frame to all workers, which forget those before `first`. Later frames do not overtake it. */
    async #spread(image, frame, first) {
        const [one, ...others] = this.#workers;
        if (!sharesMemory()) {
            const images = others.map(() => image.clone());
            const give = (worker, own) => worker.call('takeFrame', { image: own, frame, first }, [own]);
            await Promise.all([give(one, image), ...others.map((worker, i) => give(worker, images[i]))]);
            return;
        }
        const picture = await one.call('takeFrame', { image, frame, first, isShared: true }, [image]);
        await Promise.all(others.map((worker) => worker.call('takeFrame', { picture, frame, first })));
    }
}

export const closeFrame = (result) => result?.image?.close();
