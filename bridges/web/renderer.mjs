// SPDX-License-Identifier: MIT
// Renders while settings change: at preview size at once, at full size when the hand rests. Two workers, so that a long
// full-size rendering never holds up the next preview.
import { EngineWorker } from './engine_worker.mjs';

/** How long nothing changes before the hand counts as resting, in milliseconds. */
const restTime = 150;

/** A preview of this many pixels is rendered and shown within a frame of the display. */
const previewPixels = 960 * 540;

export class Renderer {
    #view; // { before(picture), after(picture, isPreview), failed(error) }
    #preview = { worker: new EngineWorker(), width: 0, height: 0 };
    #full = { worker: new EngineWorker(), width: 0, height: 0 };
    #source = null;
    #job = null; // the newest
    #isBusy = false;
    #isFullBusy = false;
    #showsBeside = false;
    #rest;

    constructor(view) {
        this.#view = view;
        this.started = Promise.all([this.#preview.worker.started, this.#full.worker.started]);
    }

    readPng(bytes) {
        return this.#full.worker.call('readPng', bytes);
    }

    /** Takes another source; what is rendered of the old one is dropped. */
    open(source) {
        this.#source = source;
        this.#job = null;
        this.#showsBeside = false;
        const scale = Math.min(1, Math.sqrt(previewPixels / (source.width * source.height)));
        const size = (side, by) => Math.max(1, Math.round(side * by));
        for (const [pane, by] of [
            [this.#preview, scale],
            [this.#full, 1],
        ]) {
            pane.worker.forget();
            Object.assign(pane, { width: size(source.width, by), height: size(source.height, by) });
        }
    }

    /**
     * Renders { chain, beside, frame, frames, rate, lookBack, isPlaying }, the chain as its text; beside is another that
     * stands for the picture before, or null; lookBack is how many frames back they may ask for. A newer request replaces
     * one that waits.
     */
    request(job) {
        // Frames that came by while playing may be a little late: when it stops, they are taken again.
        if (this.#job?.isPlaying && !job.isPlaying && !this.#source.isStill) this.#preview.worker.forget();
        this.#job = job;
        clearTimeout(this.#rest);
        if (!this.#isBusy) this.#renderPreviews();
    }

    async #renderPreviews() {
        this.#isBusy = true;
        for (let done = null; this.#job !== null && this.#job !== done;) {
            done = this.#job;
            await this.#render(this.#preview, done);
        }
        this.#isBusy = false;
        const isFull = this.#preview.width === this.#full.width;
        if (!isFull && this.#job && !this.#job.isPlaying) this.#rest = setTimeout(() => this.#renderFull(), restTime);
    }

    async #renderFull() {
        if (this.#isFullBusy) return;
        this.#isFullBusy = true;
        for (let done = null; this.#job !== null && this.#job !== done && !this.#job.isPlaying;) {
            done = this.#job;
            await this.#render(this.#full, done);
        }
        this.#isFullBusy = false;
    }

    async #render(pane, job) {
        const source = this.#source;
        try {
            // Where nothing is missing the worker begins before the page does anything else.
            if (this.#missing(pane, job, source).length > 0) await this.#supply(pane, job, source);
            if (source !== this.#source) return;
            if (job.beside !== null || this.#showsBeside) await this.#renderBefore(pane, job, source);
            const { chain, frame, frames, rate } = job;
            const picture = await pane.worker.call('render', { chain, frame, frames, rate });
            if (source !== this.#source || (pane === this.#full && job !== this.#job)) return;
            this.#view.after(picture, pane.width !== this.#full.width);
        } catch (error) {
            if (source === this.#source) this.#view.failed(error);
        }
    }

    /** On the other side stands another chain's picture, or the source again after one. */
    async #renderBefore(pane, job, source) {
        const { beside, frame, frames, rate } = job;
        const picture =
            beside === null
                ? await source.grab(frame, pane.width, pane.height)
                : await pane.worker.call('render', { chain: beside, frame, frames, rate });
        if (source !== this.#source || (pane === this.#full && job !== this.#job)) return;
        this.#view.before(picture);
        this.#showsBeside = beside !== null || pane.width !== this.#full.width;
    }

    /** What a scope shows of the frame that was shown last, at preview size, behind each of the chains. */
    async measured(chains, { frame, frames, rate }) {
        return Promise.all(chains.map((chain) => this.#preview.worker.call('measure', { chain, frame, frames, rate })));
    }

    /** The frames that a job looks at, from the first to its own. */
    #span(job, source) {
        const frame = source.isStill ? 0 : job.frame;
        return { first: Math.max(0, frame - (source.isStill ? 0 : job.lookBack)), frame };
    }

    /** Those of them that the worker has to be given; while playing, earlier frames are those that came by. */
    #missing(pane, job, source) {
        const { first, frame } = this.#span(job, source);
        const begin = job.isPlaying ? frame : first;
        const numbers = Array.from({ length: frame - begin + 1 }, (_, i) => begin + i);
        return numbers.filter((number) => !pane.worker.holds(number));
    }

    async #supply(pane, job, source) {
        const { first, frame } = this.#span(job, source);
        for (const number of this.#missing(pane, job, source)) {
            const picture = await source.grab(number, pane.width, pane.height);
            if (source !== this.#source) return;
            if (number === frame && job.beside === null) this.#view.before(picture);
            await pane.worker.store(number, picture);
        }
        pane.worker.keep(first, frame);
    }

    /** The PNG file of a job at full size. */
    async png(job) {
        await this.#supply(this.#full, job, this.#source);
        const { chain, frame, frames, rate } = job;
        return this.#full.worker.call('png', { chain, frame, frames, rate });
    }

    /** Small pictures of the source, one for each chain, as they are rendered. */
    async *thumbnails(chains, frame, frames, side) {
        const source = this.#source;
        const scale = side / Math.max(source.width, source.height);
        const size = [source.width, source.height].map((length) => Math.max(1, Math.round(length * scale)));
        const picture = await source.grab(frame, ...size);
        for (const chain of chains) yield this.#preview.worker.call('render', { chain, frame, frames, picture });
    }
}
