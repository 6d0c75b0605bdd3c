// SPDX-License-Identifier: MIT
// What the engine keeps for scripts, and when it goes.
import { VireoError } from './interface.mjs';

/** Closes what scripts have forgotten. */
const forgotten = new FinalizationRegistry((handle) => handle.release());

/** Something of the engine's by its address, closed when nobody holds it any more. */
export class Handle {
    #close;
    #holders = 1;

    constructor(address, close) {
        this.address = address;
        this.#close = close;
    }

    hold() {
        ++this.#holders;
        return this;
    }

    release() {
        if (--this.#holders === 0) this.#close(this.address);
    }
}

/** What `using` calls. */
export const disposal = Symbol.dispose ?? Symbol.for('Symbol.dispose');

/** An object of a script's that stands for a handle. */
export class Disposable {
    #handle;
    #what;

    constructor(what, handle) {
        this.#what = what;
        this.#handle = handle;
        forgotten.register(this, handle, this);
    }

    /** Throws VireoError once it was disposed of. */
    get handle() {
        if (this.#handle) return this.#handle;
        throw new VireoError(`the ${this.#what} was disposed of`);
    }

    dispose() {
        if (!this.#handle) return;
        forgotten.unregister(this);
        this.#handle.release();
        this.#handle = null;
    }

    [disposal]() {
        this.dispose();
    }
}
