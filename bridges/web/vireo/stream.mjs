// SPDX-License-Identifier: MIT
// Frames that go through a chain in order, with the earlier ones kept by the engine.
import { Disposable, Handle } from './handle.mjs';
import { Out } from './interface.mjs';
import { rendered } from './pictures.mjs';
import { timeOf } from './time.mjs';

/** A frame, what a chain keeps aside for it, and the frame that joins the kept ones. */
const buffers = 5;

export class Stream extends Disposable {
    #program;
    #options;
    #next;

    constructor(program, chain, options) {
        const address = program.call('vireoStreamNew', chain.address, new Out('address'));
        const held = chain.hold();
        super(
            'stream',
            new Handle(address, (stream) => {
                program.number('vireoStreamClose', stream);
                held.release();
            }),
        );
        this.#program = program;
        this.#options = options;
        this.#next = options.frame ?? 0;
    }

    render(picture, options = {}) {
        const frame = options.frame ?? this.#next;
        const all = { ...this.#options, ...options, frame };
        const time = timeOf(all);
        this.#next = frame + 1;
        return rendered(this.#program, picture, all, buffers, (source, result) =>
            this.#program.call('vireoStreamRender', this.handle.address, source, result, time));
    }

    restart() {
        this.#program.call('vireoStreamRestart', this.handle.address);
        this.#next = this.#options.frame ?? 0;
    }
}

function* through(start, pictures) {
    const stream = start();
    try {
        for (const picture of pictures) yield stream.render(picture);
    } finally {
        stream.dispose();
    }
}

async function* throughLater(start, pictures) {
    const stream = start();
    try {
        for await (const picture of pictures) yield stream.render(picture);
    } finally {
        stream.dispose();
    }
}

/** The results of pictures that come one after another, or later where they do. */
export const streamed = (start, pictures) =>
    pictures[Symbol.asyncIterator] ? throughLater(start, pictures) : through(start, pictures);
