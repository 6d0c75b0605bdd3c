// SPDX-License-Identifier: MIT
// A chain of filters and its text, in the grammar of the command line: "NAME:parameter=value,parameter=value".
import { PageError } from './texts.mjs';
import { isReached, parseTime, parseTrack, trackText, valueAt } from './value_track.mjs';

export const fullMix = 100;

/** Names are compared without case, blanks and brackets. */
const comparable = (name) => name.toLowerCase().replace(/[\s()[\]{}]/g, '');

/** A name without blanks and brackets, as addresses write it. */
const compact = (name) => name.replace(/[\s()[\]{}]/g, '');

/** The things of which one of the names is `typed`, or begins with it where none is. */
function matching(typed, things, namesOf) {
    const wanted = comparable(typed);
    if (wanted === '') return [];
    const names = (thing) => namesOf(thing).map(comparable);
    const exact = things.filter((thing) => names(thing).includes(wanted));
    if (exact.length > 0) return exact;
    return things.filter((thing) => names(thing).some((name) => name.startsWith(wanted)));
}

/** The filter that a name, key, match name or id means; names of the page's language are taken beside English ones. */
export function findFilter(filters, name) {
    let found = matching(name, filters, (f) => [f.englishName, f.key, f.matchName, String(f.id)]);
    if (found.length === 0) found = matching(name, filters, (f) => [f.name]);
    if (found.length !== 1) throw new PageError('noFilter', { name: name.trim() });
    return found[0];
}

/** Per cents are taken where they mean something: on a display range of 0 to 100 or 0 to 200. */
export const takesPercent = (parameter) =>
    parameter.displayMinimum === 0 && (parameter.displayMaximum === 100 || parameter.displayMaximum === 200);

const displayScale = (parameter) =>
    (parameter.maximum - parameter.minimum) / (parameter.displayMaximum - parameter.displayMinimum);

/** The stored value nearest to one in display units, halves up. */
export const fromDisplay = (parameter, display) =>
    Math.floor(parameter.minimum + (display - parameter.displayMinimum) * displayScale(parameter) + 0.5);

/** A stored value in display units, with just the decimals that tell it from its neighbours. */
export function displayText(parameter, value) {
    const step = 1 / displayScale(parameter);
    const decimals = Math.max(0, Math.ceil(-Math.log10(Math.abs(step)) - 1e-9));
    return String(Number((parameter.displayMinimum + (value - parameter.minimum) * step).toFixed(decimals)));
}

function parseNumber(parameter, text) {
    const percent = /^([+-]?\d*\.?\d*)\s*%$/.exec(text);
    if (percent && percent[1] !== '') {
        const display = Number(percent[1]);
        const isInside = display >= parameter.displayMinimum && display <= parameter.displayMaximum;
        return takesPercent(parameter) && isInside ? fromDisplay(parameter, display) : null;
    }
    const value = /^[+-]?\d+$/.test(text) ? Number(text) : NaN;
    return value >= parameter.minimum && value <= parameter.maximum ? value : null;
}

function parseBoolean(text) {
    const word = text.toLowerCase();
    if (['on', 'true', 'yes', '1'].includes(word)) return 1;
    return ['off', 'false', 'no', '0'].includes(word) ? 0 : null;
}

/** A CSS name as 0xRRGGBB, known to the browser; null where there is none. */
function namedColour(word) {
    if (typeof OffscreenCanvas === 'undefined' || !/^[a-z]+$/.test(word)) return null;
    const context = new OffscreenCanvas(1, 1).getContext('2d');
    const taken = ['#000000', '#ffffff'].map((other) => {
        context.fillStyle = other;
        context.fillStyle = word;
        return context.fillStyle;
    });
    return taken[0] === taken[1] ? parseColour(taken[0]) : null;
}

/** "#rrggbb", "rgb(r,g,b)" or a CSS name as 0xRRGGBB; null for anything else. */
export function parseColour(text) {
    const word = text.toLowerCase();
    if (/^#[0-9a-f]{6}$/.test(word)) return Number.parseInt(word.slice(1), 16);
    const channels = /^rgb\s*\(\s*(\d+)\s*,\s*(\d+)\s*,\s*(\d+)\s*\)$/.exec(word)?.slice(1).map(Number);
    if (channels)
        return channels.every((c) => c <= 255) ? (channels[0] << 16) | (channels[1] << 8) | channels[2] : null;
    return namedColour(word);
}

export const colourText = (value) => `#${value.toString(16).padStart(6, '0')}`;

function parseMix(text) {
    const percent = /^\+?(\d+)\s*%?$/.exec(text);
    return percent && Number(percent[1]) <= fullMix ? Number(percent[1]) : null;
}

function parseParameter(parameter, text) {
    if (parameter.kind === 'boolean') return parseBoolean(text.trim());
    const parse = parameter.kind === 'colour' ? parseColour : (value) => parseNumber(parameter, value);
    return parseTrack(text, parse);
}

const valueText = (parameter) => (value) => {
    if (parameter.kind === 'boolean') return value !== 0 ? 'true' : 'false';
    return parameter.kind === 'colour' ? colourText(value) : String(value);
};

/** A filter in a chain: what was set of it, in the order of setting, and what belongs to every filter. */
export class FilterUse {
    constructor(filter) {
        this.filter = filter;
        this.isOn = true;
        this.assigned = new Map(); // parameter's index -> number or track
        this.mix = undefined;
        this.from = undefined;
        this.to = undefined;
    }

    /** Sets what a name means from its text; throws PageError. */
    assign(name, text) {
        const word = comparable(name);
        const isWord = ['from', 'to', 'mix'].includes(word);
        const parameters = this.filter.parameters;
        let found = matching(name, parameters, (p) => [p.englishName]);
        if (found.length === 0 && !isWord) found = matching(name, parameters, (p) => [p.name]);
        if (found.length > 1 || (found.length === 0 && !isWord)) {
            throw new PageError('noParameter', { filter: this.filter.name, name: name.trim() });
        }
        const refuse = () => {
            throw new PageError('badValue', {
                name: found[0]?.name ?? word,
                filter: this.filter.name,
                value: text.trim(),
            });
        };
        if (found.length === 1) {
            this.set(parameters.indexOf(found[0]), parseParameter(found[0], text) ?? refuse());
        } else if (word === 'mix') {
            this.mix = parseTrack(text, parseMix) ?? refuse();
        } else {
            this[word] = parseTime(text) ?? refuse();
        }
    }

    set(index, value) {
        this.assigned.set(index, value);
    }

    /** The value of a parameter at a moment { frame, rate }. */
    valueAt(index, moment) {
        const parameter = this.filter.parameters[index];
        return valueAt(this.assigned.get(index) ?? parameter.default, moment, parameter.kind === 'colour');
    }

    mixAt(moment) {
        return valueAt(this.mix ?? fullMix, moment, false);
    }

    covers(moment) {
        return (!this.from || isReached(this.from, moment)) && (!this.to || !isReached(this.to, moment));
    }

    isAnimated() {
        const tracks = [...this.assigned.values(), this.mix ?? fullMix];
        return Boolean(this.from || this.to) || tracks.some((track) => typeof track !== 'number');
    }

    /** What was set as [name, text], names as the lists have them; `percent` ends each mix. */
    pairs(percent = '%') {
        const pairs = [...this.assigned].map(([index, track]) => {
            const parameter = this.filter.parameters[index];
            return [parameter.englishName, trackText(track, valueText(parameter))];
        });
        if (this.from) pairs.push(['from', this.from.text]);
        if (this.to) pairs.push(['to', this.to.text]);
        if (this.mix !== undefined) pairs.push(['mix', trackText(this.mix, (value) => `${value}${percent}`)]);
        return pairs;
    }

    /** What -f takes. */
    text() {
        return joined(this.filter.englishName, this.pairs());
    }

    /** The same as text() without what addresses would escape. */
    compactText() {
        return joined(
            this.filter.key,
            this.pairs('').map(([name, value]) => [compact(name), value]),
        );
    }
}

function joined(name, pairs) {
    return pairs.length === 0 ? name : `${name}:${pairs.map((pair) => pair.join('=')).join(',')}`;
}

/** The text cut at the commas that stand in no brackets. */
const splitAtCommas = (text) => text.split(/,(?![^(]*\))/);

/** The FilterUse that a text means; throws PageError. */
export function parseFilterText(filters, text) {
    const colon = text.indexOf(':');
    const use = new FilterUse(findFilter(filters, colon < 0 ? text : text.slice(0, colon)));
    const rest = colon < 0 ? '' : text.slice(colon + 1).trim();
    for (const piece of rest === '' ? [] : splitAtCommas(rest)) {
        const equals = piece.indexOf('=');
        if (equals <= 0) throw new PageError('badPair', { text: piece.trim() });
        use.assign(piece.slice(0, equals), piece.slice(equals + 1));
    }
    return use;
}

/** What the engine renders of a chain at a moment { frame, rate }. */
export function renderedChain(chain, moment) {
    return chain
        .filter((use) => use.isOn && use.covers(moment))
        .map((use) => ({
            filter: use.filter.id,
            values: use.filter.parameters.map((_, index) => use.valueAt(index, moment)),
            mix: use.mixAt(moment),
        }));
}
