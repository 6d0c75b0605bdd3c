// SPDX-License-Identifier: MIT
// The page's chain: filters of the engine, each of which may be switched off.
import { firstFrame, withKey } from './keys.mjs';
import { PageError } from './texts.mjs';
import { VireoError } from './vireo/index.mjs';

export const fullMix = 100;

/** A filter in a chain. A parameter goes by its index, and by "from", "to" or "mix". */
export class FilterUse {
    isOn = true;
    #settings; // of a chain that holds this filter alone

    /** `text` is what -f takes for one filter. Throws VireoError. */
    constructor(engine, text) {
        this.#settings = engine.chain(text).at(0);
    }

    /** As the engine lists it, in the language that is spoken now. */
    get filter() {
        return this.#settings.filter;
    }

    /** Takes a number, or a text as -f takes it. Throws VireoError. */
    set(parameter, value) {
        this.#settings.set(parameter, value);
    }

    /** The same at a moment { frame, rate }: where there are key frames already, as one of them. */
    setAt(parameter, value, moment) {
        const keys = this.keys(parameter);
        this.set(parameter, value);
        if (keys.length === 0) return;
        const key = { value: this.valueAt(parameter, moment) };
        this.setKeys(parameter, withKey(keys, key, moment.frame, moment.rate));
    }

    unset(parameter) {
        this.#settings.unset(parameter);
    }

    reset() {
        for (const parameter of [...this.filter.parameters.keys(), 'from', 'to', 'mix']) this.unset(parameter);
    }

    isSet(parameter) {
        return this.#settings.isSet(parameter);
    }

    isKeyed(parameter) {
        return this.#settings.isKeyed(parameter);
    }

    /** [{ frame or seconds, value, transition }] in order of time; empty for a constant. */
    keys(parameter) {
        return this.#settings.keys(parameter);
    }

    /** Without any, the value stays as it is. Throws VireoError. */
    setKeys(parameter, keys) {
        if (keys.length > 0) this.#settings.setKeys(parameter, keys);
    }

    /** The frame from which on it works, and the one from which on it no longer does, in a clip { frames, rate }. */
    stretch(clip) {
        return { first: this.#endAt('from', 'to', clip, true), end: this.#endAt('to', 'from', clip, false) };
    }

    /** Where one end alone begins to tell. */
    #endAt(end, other, { frames, rate }, covers) {
        const text = this.valueText(other);
        this.unset(other);
        const first = firstFrame(frames, (frame) => this.#settings.covers({ frame, rate }) === covers);
        if (text !== '') this.set(other, text);
        return first;
    }

    /** The value at a moment { frame, rate }. */
    valueAt(parameter, moment) {
        try {
            return this.#settings.value(parameter, moment);
        } catch {
            // Key frames in frames and in seconds may be out of order at this clip's rate. Rendering says so.
            return parameter === 'mix' ? fullMix : this.filter.parameters[parameter].default;
        }
    }

    /** The value as -f takes it, key frames too. */
    valueText(parameter) {
        return this.#settings.get(parameter);
    }

    /** When it begins and ends to work, as -f takes it; empty where that is not given. */
    get from() {
        return this.valueText('from');
    }
    get to() {
        return this.valueText('to');
    }

    /** Whether what was set of it changes along a clip. */
    isAnimated() {
        const values = [...this.filter.parameters.keys(), 'mix'];
        return this.from !== '' || this.to !== '' || values.some((parameter) => this.isKeyed(parameter));
    }

    /** What -f takes. */
    text() {
        return this.#settings.text();
    }

    /** The same without what addresses would escape. */
    compactText() {
        return this.#settings.text('compact');
    }
}

/** The filters that are switched on, as the engine takes them together. */
export const wholeText = (uses) =>
    uses
        .filter((use) => use.isOn)
        .map((use) => use.text())
        .join('; ');

/** All filters as lines of a text, and what is switched off too. */
export const writtenUses = (uses) => uses.map((use) => `${use.isOn ? 'on' : 'off'} ${use.text()}`).join('\n');

/** The filters of such a text. */
export function readUses(engine, written) {
    const lines = written.split('\n').filter((line) => line !== '');
    return lines.map((line) => {
        const space = line.indexOf(' ');
        const use = new FilterUse(engine, line.slice(space + 1));
        use.isOn = line.slice(0, space) === 'on';
        return use;
    });
}

/** The filters of an engine's chain. */
export const usesOf = (engine, chain) => Array.from(chain, (filter) => new FilterUse(engine, filter.text()));

/** What the page says of a text that the engine does not take. `file` is the name of what it was read from. */
function told(engine, error, file) {
    if (!(error instanceof VireoError)) return error;
    const filter = engine.filters().find(({ englishName }) => englishName === error.filter);
    const parameter = filter?.parameters.find(({ englishName }) => englishName === error.parameter);
    const isKnown = parameter || ['from', 'to', 'mix'].includes(error.parameter);
    const values = {
        filter: filter?.name ?? error.filter,
        name: parameter?.name ?? error.parameter,
        value: error.value,
    };
    const { status } = error;
    const isFile = status === 'badSettings';
    if (isFile && error.filter === '') return new PageError('badSettings', { name: file });
    if (status === 'unknownFilter' || (isFile && !filter)) return new PageError('noFilter', { name: error.filter });
    if (status === 'unknownParameter' || (isFile && !isKnown)) return new PageError('noParameter', values);
    if (status === 'badText') {
        return isKnown ? new PageError('givenTwice', values) : new PageError('badPair', { text: error.value });
    }
    return status === 'badValue' || isFile ? new PageError('badValue', values) : error;
}

function understood(engine, work, file) {
    try {
        return work();
    } catch (error) {
        throw told(engine, error, file);
    }
}

/** The filter that a text as -f takes it means; throws PageError. */
export function parseFilterText(engine, text) {
    const isOne = text.trim() !== '' && !/[;\r\n]/.test(text);
    if (!isOne) throw new PageError('noFilter', { name: text.trim() });
    return understood(engine, () => new FilterUse(engine, text));
}

/** The filters of a settings file; throws PageError. */
export function parseSettings(engine, name, text) {
    const chain = engine.chain();
    understood(engine, () => chain.addSettings(text, name), name);
    return usesOf(engine, chain);
}
