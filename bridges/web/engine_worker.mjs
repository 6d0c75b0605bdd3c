// SPDX-License-Identifier: MIT
// A worker with the engine, as the page sees it.
import { engineProgram, startWorker } from './assets.mjs';

export class EngineWorker {
    #worker = startWorker();
    #waiting = new Map(); // id -> { resolve, reject }
    #lastId = 0;
    #stored = new Set();

    constructor() {
        this.#worker.onmessage = ({ data: { id, result, error } }) => {
            const { resolve, reject } = this.#waiting.get(id);
            this.#waiting.delete(id);
            if (error === undefined) resolve(result);
            else reject(new Error(error));
        };
        this.#worker.onerror = () => this.#rejectAll();
        this.started = engineProgram().then((program) => this.call('start', program));
    }

    #rejectAll() {
        for (const { reject } of this.#waiting.values()) reject(new Error('the worker does not run'));
        this.#waiting.clear();
    }

    /** Frees the worker; what it was asked for is rejected. */
    end() {
        this.#worker.terminate();
        this.#rejectAll();
    }

    /** Asks for one of the worker's actions; rejects with its one sentence. */
    call(action, argument, transferred = []) {
        const id = ++this.#lastId;
        return new Promise((resolve, reject) => {
            this.#waiting.set(id, { resolve, reject });
            this.#worker.postMessage({ id, action, argument }, transferred);
        });
    }

    /** Gives the worker the picture of a frame, which is then no longer the page's. */
    store(frame, picture) {
        this.#stored.add(frame);
        return this.call('store', { frame, picture }, [picture.data.buffer]);
    }

    holds(frame) {
        return this.#stored.has(frame);
    }

    /** Forgets all pictures but those of the frames from `first` to `last`. */
    keep(first, last) {
        const dropped = [...this.#stored].filter((frame) => frame < first || frame > last);
        for (const frame of dropped) this.#stored.delete(frame);
        if (dropped.length > 0) return this.call('drop', dropped);
    }

    forget() {
        this.keep(Infinity, -Infinity);
    }
}
