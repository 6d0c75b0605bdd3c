// SPDX-License-Identifier: MIT
// Chains of filters and their settings. What each member does stands in index.d.ts.
import { Disposable, Handle } from './handle.mjs';
import { constants, enumerations, numberOf, Out, Struct, VireoError } from './interface.mjs';
import { Live } from './live.mjs';
import { frameWithout, rendered, withScript } from './pictures.mjs';
import { Stream, streamed } from './stream.mjs';
import { timeOf } from './time.mjs';

export class Chain extends Disposable {
    #vireo;
    #program;

    constructor(vireo, program, address) {
        super('chain', new Handle(address, (chain) => program.number('vireoChainClose', chain)));
        this.#vireo = vireo;
        this.#program = program;
    }

    add(text) {
        this.#call('vireoChainAddText', String(text));
        return this;
    }

    addFilter(name) {
        const filter = typeof name === 'number' ? name : this.#vireo.filter(name).index;
        this.#call('vireoChainAddFilter', filter);
        return this;
    }

    addPreset(name) {
        this.#call('vireoChainAddPreset', String(name));
        return this;
    }

    addSettings(text, shownName = 'settings') {
        this.#call('vireoChainAddSettings', text, new TextEncoder().encode(text).length, shownName);
        return this;
    }

    addLevels(bytes, shownName = 'settings') {
        this.#call('vireoChainAddLevels', Uint8Array.from(bytes), bytes.length, shownName);
        return this;
    }

    get length() {
        return this.#program.number('vireoChainLength', this.handle.address);
    }

    at(position) {
        const { length } = this;
        const index = position < 0 ? length + position : position;
        if (!(index >= 0 && index < length)) return undefined;
        const call = (name, ...values) => this.#call(name, index, ...values);
        return new ChainFilter(this.#vireo, this.#program, index, call);
    }

    *[Symbol.iterator]() {
        for (let position = 0; position < this.length; ++position) yield this.at(position);
    }

    remove(position) {
        this.#call('vireoChainRemove', position);
        return this;
    }

    move(from, to) {
        this.#call('vireoChainMove', from, to);
        return this;
    }

    copy() {
        return new Chain(this.#vireo, this.#program, this.#call('vireoChainCopy', new Out('address')));
    }

    text(spelling = 'full') {
        return this.#call('vireoChainText', numberOf('spelling', spelling), new Out('own text'));
    }

    toString() {
        return this.text();
    }

    settings() {
        return this.#call('vireoChainSettings', new Out('own text'));
    }

    needs() {
        const { earlierFrames, readsTime, depths } = this.#call('vireoChainNeeds', new Out('VireoNeeds'));
        return { earlierFrames, readsTime: readsTime !== 0, depths: depthsOf(depths) };
    }

    check(shape, moment = {}) {
        this.#call('vireoChainAccepts', frameWithout(shape), timeOf(moment).members.interlacing);
    }

    isIdentity(moment = {}) {
        return this.#call('vireoChainIsIdentity', timeOf(moment), new Out('int')) !== 0;
    }

    render(picture, options = {}) {
        const program = this.#program;
        const time = timeOf(options);
        return rendered(program, picture, options, this.length > 1 ? 4 : 3, (source, result) =>
            withScript(program, picture, options, (asking) =>
                this.#call('vireoChainRender', source, result, time, asking)));
    }

    stream(pictures, options = {}) {
        return streamed(() => this.startStream(options), pictures);
    }

    startStream(options = {}) {
        return new Stream(this.#program, this.handle, options);
    }

    live(stream, options = {}) {
        return new Live(this, stream, options);
    }

    #call(name, ...values) {
        return this.#program.call(name, this.handle.address, ...values);
    }
}

/** The filter at a position of a chain. */
class ChainFilter {
    #vireo;
    #program;
    #call;

    constructor(vireo, program, position, call) {
        this.#vireo = vireo;
        this.#program = program;
        this.#call = call;
        this.position = position;
    }

    get filter() {
        return this.#vireo.filters()[this.#call('vireoChainFilter', new Out('uint'))];
    }

    get(parameter) {
        return this.#call('vireoChainGet', this.#find(parameter), new Out('own text'));
    }

    set(parameter, value) {
        const number = typeof value === 'boolean' ? Number(value) : value;
        const index = this.#find(parameter);
        if (Number.isSafeInteger(number)) this.#call('vireoChainSetValue', index, BigInt(number));
        else this.#call('vireoChainSet', index, String(number));
        return this;
    }

    unset(parameter) {
        this.#call('vireoChainUnset', this.#find(parameter));
        return this;
    }

    isSet(parameter) {
        return this.#call('vireoChainIsSet', this.#find(parameter), new Out('int')) !== 0;
    }

    value(parameter, moment = {}) {
        return this.#call('vireoChainValue', this.#find(parameter), timeOf(moment), new Out('long'));
    }

    covers(moment = {}) {
        return this.#call('vireoChainCovers', timeOf(moment), new Out('int')) !== 0;
    }

    isKeyed(parameter) {
        return this.#call('vireoChainKeys', this.#find(parameter), 0, 0, new Out('uint')) > 0;
    }

    keys(parameter) {
        const index = this.#find(parameter);
        const count = this.#call('vireoChainKeys', index, 0, 0, new Out('uint'));
        if (count === 0) return [];
        const found = this.#program.structs('VireoKey', count, (address) =>
            this.#call('vireoChainKeys', index, address, count, new Out('uint')));
        return found.map(({ frame, seconds, value, transition }) => ({
            ...(frame >= 0 ? { frame } : { seconds }),
            value,
            transition: enumerations.transition[transition],
        }));
    }

    setKeys(parameter, keys) {
        const structs = keys.map(({ frame = -1, seconds = 0, value, transition = 'linear' }) => {
            if (!Number.isSafeInteger(value)) throw new VireoError('a key frame takes a whole number');
            return new Struct('VireoKey', { frame, seconds, value, transition: numberOf('transition', transition) });
        });
        const some = structs.length > 0 ? structs : new Uint8Array(1); // the engine says what it thinks of none
        this.#call('vireoChainSetKeys', this.#find(parameter), some, structs.length);
        return this;
    }

    text(spelling = 'full') {
        return this.#call('vireoChainFilterText', numberOf('spelling', spelling), new Out('own text'));
    }

    toString() {
        return this.text();
    }

    bytes(moment = {}) {
        return this.#bytes('vireoChainBytes', moment);
    }

    setBytes(bytes) {
        this.#call('vireoChainSetBytes', Uint8Array.from(bytes), bytes.length);
        return this;
    }

    levels(moment = {}) {
        return this.#bytes('vireoChainLevels', moment);
    }

    #bytes(name, moment) {
        return this.#program.ownBytes(this.#call(name, timeOf(moment), new Out('address'), new Out('uint')));
    }

    #find(parameter) {
        if (typeof parameter === 'number') return parameter;
        return words[parameter] ?? this.#call('vireoChainFindParameter', String(parameter), new Out('int'));
    }
}

const words = { from: constants.VireoFrom, to: constants.VireoTo, mix: constants.VireoMix };

/** The depths that stand beside each other in a number. */
export const depthsOf = (bits) => [8, 16, 32].filter((depth) => bits & depth);
