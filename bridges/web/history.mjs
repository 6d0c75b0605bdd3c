// SPDX-License-Identifier: MIT
// Undo and redo: states of the page, one after another, each as text.

const mostSteps = 500;

/** How long what follows a change without a new touch still belongs to it, in milliseconds. */
const pauseTime = 1000;

/** What a hand does in one go is one step. */
export class Gestures {
    #number = 0;
    #isHeld = false;

    constructor(target) {
        const next = (isHeld) => (event) => {
            if (event.repeat) return;
            ++this.#number;
            this.#isHeld = isHeld;
        };
        const options = { capture: true };
        target.addEventListener('pointerdown', next(true), options);
        for (const event of ['keydown', 'drop', 'paste', 'hashchange'])
            target.addEventListener(event, next(false), options);
        const release = () => (this.#isHeld = false);
        for (const event of ['pointerup', 'pointercancel']) target.addEventListener(event, release, options);
    }

    get now() {
        return { number: this.#number, isHeld: this.#isHeld };
    }
}

export class History {
    #states = [];
    #at = -1;
    #last = { number: -1, time: 0 };

    /** Keeps a state that differs from the one at hand. `gesture` is what brought it; without one it is a step of its own. */
    record(state, gesture = null, time = performance.now()) {
        if (state === this.#states[this.#at]) return;
        const isSame =
            gesture !== null &&
            this.#at > 0 &&
            gesture.number === this.#last.number &&
            (gesture.isHeld || time - this.#last.time < pauseTime);
        if (!isSame) ++this.#at;
        this.#states.splice(this.#at, Infinity, state);
        if (this.#states.length > mostSteps) {
            this.#states.shift();
            --this.#at;
        }
        this.#last = { number: gesture?.number ?? -1, time };
    }

    get canUndo() {
        return this.#at > 0;
    }

    get canRedo() {
        return this.#at < this.#states.length - 1;
    }

    /** The state before, or after, the one at hand, which it then is; undefined where there is none. */
    undo() {
        return this.#go(this.canUndo ? -1 : 0);
    }

    redo() {
        return this.#go(this.canRedo ? 1 : 0);
    }

    #go(step) {
        if (step === 0) return undefined;
        this.#last = { number: -1, time: 0 };
        return this.#states[(this.#at += step)];
    }
}

/** Ctrl+Z and its kin, but for a field that is being typed in, whose own they are. */
export function listenToUndo(target, { undo, redo }) {
    let typing = null;
    target.addEventListener('input', (event) => {
        typing = event.target.matches('[type=text], [type=number]') ? event.target : null;
    });
    target.addEventListener('change', () => (typing = null));
    target.addEventListener('keydown', (event) => {
        if (!(event.ctrlKey || event.metaKey) || event.altKey || event.target === typing) return;
        const key = event.key.toLowerCase();
        const isUndo = key === 'z' && !event.shiftKey;
        const isRedo = key === 'y' || (key === 'z' && event.shiftKey);
        if (!isUndo && !isRedo) return;
        event.preventDefault();
        (isUndo ? undo : redo)();
    });
}
