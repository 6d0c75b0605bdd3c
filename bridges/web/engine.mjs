// SPDX-License-Identifier: MIT
// The filters for scripts: module and engine as one WebAssembly program. Works in pages, in workers and in Node.
import { constants, Out, Program, Struct } from './vireo.mjs';

const { VireoNumber, VireoBoolean, VireoColor, VireoRgba, VireoSpellingFull } = constants;
const kinds = { [VireoNumber]: 'number', [VireoBoolean]: 'boolean', [VireoColor]: 'colour' };
const largestFrame = 2 ** 30 - 1;
const pixelBytes = 4;

/** Five times these bytes fit the memory that the program may have, as much as a chain's pictures take at once. */
const mostBytes = 400e6;
const noMemory = 'there is not enough memory for this picture';

const isNode = typeof process !== 'undefined' && Boolean(process.versions?.node);

async function bytesAt(address) {
    if (isNode && address.protocol === 'file:') {
        const { readFile } = await import('node:fs/promises');
        return readFile(address);
    }
    const response = await fetch(address);
    if (!response.ok) throw new Error(`${address.href} cannot be loaded: ${response.status} ${response.statusText}`);
    return response.arrayBuffer();
}

/** What the C library of the program asks of its surroundings: nothing that filters need. */
const systemCalls = (memory) => ({
    environ_sizes_get(count, bytes) {
        const view = new DataView(memory());
        view.setUint32(count, 0, true);
        view.setUint32(bytes, 0, true);
        return 0;
    },
    environ_get: () => 0,
    proc_exit(code) {
        throw new Error(`the filters ended with ${code}`);
    },
});

/**
 * Loads module and engine. `source` is nothing (vireo.wasm beside this script), an address, or the bytes of the
 * program, for pages that carry them.
 */
export async function loadEngine(source = new URL('vireo.wasm', import.meta.url)) {
    const isAddress = typeof source === 'string' || source instanceof URL;
    const bytes = isAddress ? await bytesAt(new URL(source, import.meta.url)) : source;
    const asked = {}; // answers, once a chain renders, when the program asks for an earlier frame
    const { instance } = await WebAssembly.instantiate(bytes, {
        vireo: { earlierFrame: (user, frame, target) => asked.answer(Number(frame), target >>> 0) },
        env: { emscripten_notify_memory_growth() {} },
        wasi_snapshot_preview1: systemCalls(() => instance.exports.memory.buffer),
    });
    instance.exports._initialize();
    return new Engine(new Program(instance.exports), instance.exports.vireo_earlier_frame(), asked);
}

class Engine {
    /** { version, commit, instructionSet } */
    version;

    #program;
    #engine;
    #filters = null;
    #earlierFrame;

    constructor(program, earlierFrame, asked) {
        this.#program = program;
        this.#engine = program.call('vireoOpen', 0, new Out('address'));
        this.#earlierFrame = { address: earlierFrame, asked };
        this.version = {
            version: program.text('vireoVersion'),
            commit: program.text('vireoCommit'),
            instructionSet: program.text('vireoInstructionSet'),
        };
    }

    /** Names and texts are in this language from now on: en, fr, de, ja, es, it or ko. */
    setLanguage(language) {
        this.#program.call('vireoSetLanguage', this.#engine, language);
        this.#filters = null;
    }

    /** The text of a key such as "$$$/Page/Save=Save" in the language: the catalogue's, else what follows "=". */
    text(key) {
        return this.#program.call('vireoTranslate', this.#engine, key, new Out('own text'));
    }

    /** Every filter with its parameters, named in the language. */
    filters() {
        const count = () => this.#program.number('vireoFilterCount', this.#engine);
        this.#filters ??= Array.from({ length: count() }, (_, index) => this.#filter(index));
        return this.#filters;
    }

    /** A chain of the filters that a text names, as -f takes them, ";" between several. Throws EngineError. */
    chain(text = '') {
        const chain = new Chain(this.#program, this.#engine, this.#earlierFrame);
        if (text !== '') chain.add(text);
        return chain;
    }

    /**
     * The picture that a chain makes of another, a new one of the same size.
     *   chain: a text as chain() takes it, or [{ filter: id, values: [number, …] in the list's order, mix: 100 }];
     *     without values a filter has those that it starts with
     *   picture, clock: as Chain.render() takes them
     * Throws an Error with one sentence where there is no such filter, a value is out of range, or memory is short.
     */
    render(chain, picture, clock) {
        const made = this.chain(typeof chain === 'string' ? chain : chain.map((use) => this.#textOf(use)).join(';'));
        try {
            return made.render(picture, clock);
        } finally {
            made.close();
        }
    }

    #filter(index) {
        const filter = this.#program.call('vireoDescribeFilter', this.#engine, index, new Out('VireoFilter'));
        const { id, name, englishName, category, key, matchName, fileName, readsTime, earlierFrames } = filter;
        const parameters = Array.from({ length: filter.parameterCount }, (_, i) => this.#parameter(index, i));
        return {
            id,
            name,
            englishName,
            category,
            key,
            matchName,
            fileName,
            usesTime: readsTime !== 0,
            earlierFrames,
            parameters,
        };
    }

    #parameter(filter, index) {
        const found = new Out('VireoParameter');
        const parameter = this.#program.call('vireoDescribeParameter', this.#engine, filter, index, found);
        const { name, englishName, minimum, maximum, displayMinimum, displayMaximum, size } = parameter;
        return {
            name,
            englishName,
            kind: kinds[parameter.kind],
            minimum,
            maximum,
            displayMinimum,
            displayMaximum,
            takesPercent: parameter.takesPercent !== 0,
            default: parameter.initial,
            size,
        };
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

/** Closes the chains that scripts have forgotten. */
const forgotten = new FinalizationRegistry(({ program, chain }) => program.number('vireoChainClose', chain));

/**
 * Filters one after another, each with its settings. What can be given a value goes by the parameter's index, or by
 * VireoFrom, VireoTo or VireoMix. Values are those that `vireo info` prints, and colours 0xRRGGBB. A moment is
 * { frame, rate }.
 */
class Chain {
    #program;
    #chain;
    #earlierFrame;

    constructor(program, engine, earlierFrame) {
        this.#program = program;
        this.#earlierFrame = earlierFrame;
        this.#chain = this.#program.call('vireoChainNew', engine, new Out('address'));
        forgotten.register(this, { program, chain: this.#chain }, this);
    }

    /** Frees what it holds, at once. */
    close() {
        forgotten.unregister(this);
        this.#program.number('vireoChainClose', this.#chain);
    }

    add(text) {
        this.#call('vireoChainAddText', text);
    }

    /** Adds what a settings file describes. */
    addSettings(text, name) {
        this.#call('vireoChainAddSettings', text, new TextEncoder().encode(text).length, name);
    }

    get length() {
        return this.#program.number('vireoChainLength', this.#chain);
    }

    /** The index in filters() of the filter at a position. */
    filterAt(position) {
        return this.#call('vireoChainFilter', position, new Out('uint'));
    }

    /** What add() reads as the filter at a position. */
    text(position, spelling = VireoSpellingFull) {
        return this.#call('vireoChainFilterText', position, spelling, new Out('own text'));
    }

    /** The chain as a settings file. */
    settings() {
        return this.#call('vireoChainSettings', new Out('own text'));
    }

    /** Gives a value: a number, or a text as -f takes it. */
    set(position, parameter, value) {
        if (typeof value === 'string') this.#call('vireoChainSet', position, parameter, value);
        else this.#call('vireoChainSetValue', position, parameter, BigInt(value));
    }

    unset(position, parameter) {
        this.#call('vireoChainUnset', position, parameter);
    }

    isSet(position, parameter) {
        return this.#call('vireoChainIsSet', position, parameter, new Out('int')) !== 0;
    }

    /** Whether a parameter or the mix was given key frames. */
    isKeyed(position, parameter) {
        return this.#call('vireoChainKeys', position, parameter, 0, 0, new Out('uint')) > 0;
    }

    /** The value as -f takes it. */
    valueText(position, parameter) {
        return this.#call('vireoChainGet', position, parameter, new Out('own text'));
    }

    /** Throws EngineError where key frames do not follow each other at the moment's rate. */
    value(position, parameter, moment) {
        return this.#call('vireoChainValue', position, parameter, this.#time(moment), new Out('long'));
    }

    /** { earlierFrames: how many frames back it looks, readsTime: whether a frame's number matters } */
    needs() {
        const { earlierFrames, readsTime } = this.#call('vireoChainNeeds', new Out('VireoNeeds'));
        return { earlierFrames, readsTime: readsTime !== 0 };
    }

    /**
     * The picture that the chain makes of another, a new one of the same size.
     *   picture: { width, height, data }: RGBA, straight alpha, rows from the top
     *   clock: { frame, frames, rate, fetch }: the frame's number, the clip's length, frames a second, and a function
     *     from a number to the picture that the chain gets at that frame; without it the picture stands for all
     * Throws an Error with one sentence.
     */
    render(picture, clock = {}) {
        checkPicture(picture);
        checkFrameNumber(clock.frame ?? 0);
        checkFrameNumber(clock.frames ?? 0);
        const { width, height, data } = picture;
        const [stride, paddedBytes] = [width * pixelBytes, Math.ceil((width * pixelBytes) / 64) * 64 * height];
        if (paddedBytes > mostBytes) throw new Error(noMemory);
        const program = this.#program;
        const pixels = program.allocate(data.length);
        let failure;
        try {
            // Filters say nothing where there is no room for what they keep aside.
            const room = pixels === 0 ? 0 : program.allocate((this.length > 1 ? 4 : 3) * paddedBytes);
            if (room === 0) throw new Error(noMemory);
            program.free(room);
            program.bytes().set(data, pixels);
            const frame = new Struct('VireoFrame', { width, height, layout: VireoRgba, pixels, stride });
            this.#earlierFrame.asked.answer = (number, target) => {
                try {
                    this.#put(clock.fetch(number), picture, number, program.structAt('VireoFrame', target).pixels);
                    return 0;
                } catch (error) {
                    failure = error;
                    return 1;
                }
            };
            const earlierFrame = clock.fetch ? this.#earlierFrame.address : 0;
            const options = new Struct('VireoRenderOptions', { earlierFrame });
            this.#call('vireoChainRender', frame, frame, this.#time(clock), options);
            const rendered = program.bytes().slice(pixels, pixels + data.length);
            return { width, height, data: new Uint8ClampedArray(rendered.buffer) };
        } catch (error) {
            throw failure ?? error;
        } finally {
            program.free(pixels);
        }
    }

    #put(earlier, { width, height }, number, pixels) {
        checkPicture(earlier);
        if (earlier.width !== width || earlier.height !== height) {
            throw new Error(`frame ${number} is not as large as the others`);
        }
        this.#program.bytes().set(earlier.data, pixels);
    }

    #time({ frame = 0, frames = 0, rate = 0 }) {
        return new Struct('VireoTime', { frame, frames, rate, seconds: -1 });
    }

    #call(name, ...values) {
        return this.#program.call(name, this.#chain, ...values);
    }
}

function checkPicture(picture) {
    const { width, height, data } = picture;
    const isSize = (side) => Number.isInteger(side) && side > 0 && side < 2 ** 31;
    if (!isSize(width) || !isSize(height)) throw new Error(`a picture cannot have ${width} x ${height} pixels`);
    if (data.length !== width * height * pixelBytes) {
        throw new Error(`a picture of ${width} x ${height} pixels has ${width * height * pixelBytes} bytes, not ${data.length}`);
    }
}

function checkFrameNumber(number) {
    if (Number.isInteger(number) && number >= 0 && number <= largestFrame) return;
    throw new Error(`frames are counted from 0 to ${largestFrame}, not ${number}`);
}
