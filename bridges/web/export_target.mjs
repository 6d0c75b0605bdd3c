// SPDX-License-Identifier: MIT
// Where an export is written, piece by piece: the file that was chosen, or one that is downloaded when it is whole.
//   name
//   write(chunk)   bytes, or { type: 'write', data, position }; throws PageError where there is no room
//   finish()       makes the file what was written; abandon() leaves everything as it was
import { download } from './dom.mjs';
import { PageError } from './texts.mjs';

const scratchPrefix = 'vireo-export-';
const scratchName = () => `${scratchPrefix}${crypto.randomUUID()}`;

class FileTarget {
    #writable;
    failure = null;

    constructor(name, writable) {
        this.name = name;
        this.#writable = writable;
    }

    write(chunk) {
        return this.#told(() => this.#writable.write(chunk));
    }

    finish() {
        return this.#told(() => this.#writable.close());
    }

    abandon() {
        return this.#writable.abort().catch(() => {});
    }

    async #told(work) {
        try {
            await work();
        } catch (error) {
            const text = error.name === 'QuotaExceededError' ? 'noRoom' : 'notWritten';
            throw (this.failure = new PageError(text, { name: this.name }));
        }
    }
}

class ChosenFile extends FileTarget {
    #handle;

    constructor(handle, writable) {
        super(handle.name, writable);
        this.#handle = handle;
    }

    async abandon() {
        await super.abandon();
        const { size } = await this.#handle.getFile();
        if (size === 0) await this.#handle.remove?.(); // what the choice of a new file left
    }
}

/** A file of the browser's own that is handed over as one download. */
class ScratchFile extends FileTarget {
    #folder;
    #handle;

    constructor(name, folder, handle, writable) {
        super(name, writable);
        this.#folder = folder;
        this.#handle = handle;
    }

    async finish() {
        await super.finish();
        download(this.name, await this.#handle.getFile());
    }

    async abandon() {
        await super.abandon();
        await this.#folder.removeEntry(this.#handle.name);
    }
}

/** Browsers that have no files of their own keep it in memory. */
class MemoryFile {
    #bytes = new Uint8Array(1 << 20);
    #size = 0;

    constructor(name) {
        this.name = name;
    }

    async write(chunk) {
        const { data, position } = chunk.type === 'write' ? chunk : { data: chunk, position: this.#size };
        const end = position + data.byteLength;
        if (end > this.#bytes.length) {
            const larger = new Uint8Array(Math.max(end, 2 * this.#bytes.length));
            larger.set(this.#bytes.subarray(0, this.#size));
            this.#bytes = larger;
        }
        this.#bytes.set(data, position);
        this.#size = Math.max(this.#size, end);
    }

    async finish() {
        download(this.name, new Blob([this.#bytes.subarray(0, this.#size)]));
    }

    async abandon() {
        this.#bytes = null;
    }
}

/** Downloads may still read what is younger, in milliseconds. */
const leftoverAge = 600_000;

/** Removes what exports left: downloads that are long done, files of tabs that were closed. */
export async function removeLeftovers() {
    try {
        const folder = await navigator.storage.getDirectory();
        for await (const [name, handle] of folder.entries()) {
            if (!name.startsWith(scratchPrefix)) continue;
            const { lastModified } = await handle.getFile();
            if (Date.now() - lastModified > leftoverAge) await folder.removeEntry(name);
        }
    } catch {
        // There are no such files here, or another tab writes one.
    }
}

async function scratchFile(name) {
    try {
        const folder = await navigator.storage.getDirectory();
        await removeLeftovers();
        const handle = await folder.getFileHandle(scratchName(), { create: true });
        return new ScratchFile(name, folder, handle, await handle.createWritable());
    } catch {
        return new MemoryFile(name);
    }
}

/** The place for a file of that name and type, as a click asks for it; null where the user chose none. */
export async function openTarget(name, type) {
    if (!globalThis.showSaveFilePicker) return scratchFile(name);
    const extension = name.slice(name.lastIndexOf('.'));
    try {
        const handle = await showSaveFilePicker({ suggestedName: name, types: [{ accept: { [type]: [extension] } }] });
        return new ChosenFile(handle, await handle.createWritable());
    } catch (error) {
        if (error.name === 'AbortError') return null;
        return scratchFile(name); // in frames of other pages no file may be chosen
    }
}
