// SPDX-License-Identifier: MIT
// Keeps scopes at what goes into their filters and what comes out.
import { wholeText } from './chain.mjs';

/** How often scopes follow, in milliseconds: what plays or is dragged has the worker for itself in between. */
const restTime = 200;

export class Measuring {
    #host;
    #isBusy = false;
    #isAsked = false;

    /**
     * `host` is { scopes(), chain(), measured(chains) }: scopes() gives [{ use, scope }], measured() what a scope shows of
     * the frame on show behind each of the chains.
     */
    constructor(host) {
        this.#host = host;
    }

    /** Something else shows. */
    async update() {
        this.#isAsked = true;
        if (this.#isBusy) return;
        this.#isBusy = true;
        while (this.#isAsked) {
            this.#isAsked = false;
            for (const shown of this.#host.scopes()) await this.#measure(shown);
            await new Promise((resolve) => setTimeout(resolve, restTime));
        }
        this.#isBusy = false;
    }

    async #measure({ use, scope }) {
        const chain = this.#host.chain();
        const position = chain.indexOf(use);
        const ends = [position, position + 1];
        try {
            scope.show(await this.#host.measured(ends.map((end) => wholeText(chain.slice(0, end)))));
        } catch {
            // The frame is gone again; the next one is measured.
        }
    }
}
