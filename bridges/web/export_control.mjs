// SPDX-License-Identifier: MIT

/** Lets a hand hold up what runs, and end it. */
export class Control {
    isPaused = false;
    isCancelled = false;
    #goOn = () => {};

    pause() {
        this.isPaused = true;
    }

    resume() {
        this.isPaused = false;
        this.#goOn();
    }

    cancel() {
        this.isCancelled = true;
        this.resume();
    }

    /** Waits while it is paused; throws Cancelled once it is cancelled. */
    async pass() {
        while (this.isPaused && !this.isCancelled) await new Promise((resolve) => (this.#goOn = resolve));
        if (this.isCancelled) throw new Cancelled();
    }
}

export class Cancelled extends Error {}

/** How long what runs will take, from what it took so far without its pauses. */
export class Clock {
    #worked = 0;
    #last = performance.now();
    #begun = null; // the first step comes late, as all is loaded

    /** The seconds that are left after `done` of `all` steps; null where that cannot be told yet. */
    step(done, all, wasPaused) {
        const now = performance.now();
        if (!wasPaused) this.#worked += now - this.#last;
        this.#last = now;
        this.#begun ??= { done, worked: this.#worked };
        const steps = done - this.#begun.done;
        const worked = this.#worked - this.#begun.worked;
        return worked < 500 || steps === 0 ? null : ((worked / steps) * (all - done)) / 1000;
    }
}

/** Asks before the page is left, and keeps the display awake, as long as the work goes on. */
export async function undisturbed(work) {
    const ask = (event) => event.preventDefault();
    addEventListener('beforeunload', ask);
    const lock = await navigator.wakeLock?.request('screen').catch(() => null);
    try {
        return await work();
    } finally {
        removeEventListener('beforeunload', ask);
        await lock?.release();
    }
}
