// SPDX-License-Identifier: MIT
// The engine as pages had it before the package: the same, with chains as lists too.
import { loadVireo } from './vireo/index.mjs';

/**
 * Loads module and engine. `source` is nothing (what the package holds), an address, or the bytes of the program, for
 * pages that carry them.
 */
export async function loadEngine(source) {
    return new Engine(await loadVireo(typeof source === 'string' ? new URL(source, import.meta.url) : source));
}

class Engine {
    #vireo;

    constructor(vireo) {
        this.#vireo = vireo;
        const { version, commit, instructionSet } = vireo;
        this.version = { version, commit, instructionSet };
    }

    /** Names and texts are in this language from now on: en, fr, de, ja, es, it or ko. */
    setLanguage(language) {
        this.#vireo.setLanguage(language);
    }

    /** The text of a key such as "$$$/Page/Save=Save" in the language: the catalogue's, else what follows "=". */
    text(key) {
        return this.#vireo.translate(key);
    }

    /** Every filter with its parameters, named in the language. */
    filters() {
        return this.#vireo.filters().map((filter) => ({ ...filter, usesTime: filter.readsTime }));
    }

    /** A chain of the filters that a text names, as -f takes them, ";" between several. Throws VireoError. */
    chain(text = '') {
        return this.#vireo.chain(text);
    }

    /**
     * The picture that a chain makes of another, a new one of the same size.
     *   chain: a text as chain() takes it, or [{ filter: id, values: [number, …] in the list's order, mix: 100 }];
     *     without values a filter has those that it starts with
     *   picture: { width, height, data }: RGBA, straight alpha, rows from the top
     *   clock: { frame, frames, rate, fetch }: the frame's number, the clip's length, frames a second, and a function
     *     from a number to the picture that the chain gets at that frame; without it the picture stands for all
     * Throws VireoError with one sentence.
     */
    render(chain, picture, { fetch: earlier, ...moment } = {}) {
        const made = this.chain(typeof chain === 'string' ? chain : chain.map((use) => this.#textOf(use)).join(';'));
        try {
            const { width, height, data } = made.render(picture, { ...moment, earlier });
            return { width, height, data: new Uint8ClampedArray(data.buffer) };
        } finally {
            made.dispose();
        }
    }

    /** What -f takes for a filter with numbers. */
    #textOf({ filter: id, values, mix = 100 }) {
        const filter = this.filters().find((known) => known.id === id);
        if (!filter) throw new Error(`there is no filter ${id}`);
        const { name, parameters } = filter;
        if (values && values.length !== parameters.length) {
            throw new Error(`${name} takes ${parameters.length} values, not ${values.length}`);
        }
        const text = ({ kind }, value) => (kind === 'colour' ? `#${value.toString(16).padStart(6, '0')}` : value);
        const pairs = values?.map((value, i) => `${parameters[i].englishName}=${text(parameters[i], value)}`) ?? [];
        return `${id}:${[...pairs, `mix=${mix}`].join(',')}`;
    }
}
