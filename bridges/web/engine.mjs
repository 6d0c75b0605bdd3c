// SPDX-License-Identifier: MIT
// The filters for scripts: module and host as one WebAssembly program. Works in pages, in workers and in Node.

/** The host's language words, (sub-language << 10) | language. */
const languages = { en: 0x409, fr: 0x40c, de: 0x407, ja: 0x411, es: 0x40a, it: 0x410, ko: 0x412 };
const kinds = ['number', 'boolean', 'colour'];
const parameterNumbers = 7;
const largestFrame = 2 ** 30 - 1;
const pixelBytes = 4;

const decoder = new TextDecoder();
const encoder = new TextEncoder();

/** The word after the catalogue's folder in a key, as links and commands name the filter. */
const keySegment = (key) => key.slice(0, key.indexOf('=')).split('/').at(-2);

const swapRedAndBlue = (colour) => ((colour & 0xff) << 16) | (colour & 0xff00) | ((colour >> 16) & 0xff);

/** A colour is stored with red in its low byte, and 0xRRGGBB outside. */
const betweenStored = (kind, value) =>
    kind === 'colour' && Number.isInteger(value) && value >= 0 && value <= 0xffffff ? swapRedAndBlue(value) : value;

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
 * Loads module and host. `source` is nothing (vireo.wasm beside this script), an address, or the bytes of the program,
 * for pages that carry them.
 */
export async function loadEngine(source = new URL('vireo.wasm', import.meta.url)) {
    const isAddress = typeof source === 'string' || source instanceof URL;
    const bytes = isAddress ? await bytesAt(new URL(source, import.meta.url)) : source;
    const engine = new Engine();
    const { instance } = await WebAssembly.instantiate(bytes, {
        vireo: { fetch: (frame, address, rowBytes) => engine._fetch(frame, address, rowBytes) },
        env: { emscripten_notify_memory_growth() {} },
        wasi_snapshot_preview1: systemCalls(() => engine._program.memory.buffer),
    });
    engine._start(instance.exports);
    return engine;
}

class Engine {
    /** { version, commit, instructionSet } */
    version;

    _program;
    _filters;
    _clock;
    _failure;

    /** Names and texts are in this language from now on: en, fr, de, ja, es, it or ko. */
    setLanguage(language) {
        if (!Object.hasOwn(languages, language)) throw new Error(`there is no language "${language}"`);
        this._program.vireo_set_language(languages[language]);
    }

    /** The text of a key such as "$$$/Page/Save=Save" in the language: the catalogue's, else what follows "=". */
    text(key) {
        const bytes = encoder.encode(key);
        return this._withMemory(bytes.length + 1, (address) => {
            this._bytes().set(bytes, address);
            this._bytes()[address + bytes.length] = 0;
            return this._textAt(this._program.vireo_translated(address));
        });
    }

    /** Every filter with its parameters, named in the language. */
    filters() {
        return this._filters.map(({ nameKey, categoryKey, parameters, ...filter }) => ({
            ...filter,
            name: this.text(nameKey),
            category: this.text(categoryKey),
            parameters: parameters.map(({ key, ...parameter }) => ({ ...parameter, name: this.text(key) })),
        }));
    }

    /**
     * The picture that a chain makes of another, a new one of the same size.
     *   chain: [{ filter: id, values: [number, …] in the list's order, mix: 100 }]; without values a filter has those
     *     that it starts with
     *   picture: { width, height, data }: RGBA, straight alpha, rows from the top
     *   clock: { frame, frames, fetch }: the frame's number, the clip's length, and a function from a number to the
     *     picture that the chain gets at that frame; without it the picture stands for all. Filters that look back get
     *     earlier frames through the filters before them, with the values that these have now.
     * Throws an Error with one sentence where there is no such filter, a value is out of range, or memory is short.
     */
    render(chain, picture, clock = {}) {
        const { frame = 0, frames = 0 } = clock;
        checkPicture(picture);
        checkFrameNumber(frame);
        checkFrameNumber(frames);
        this._clock = { picture, fetch: clock.fetch };
        try {
            const input = this._address(this._program.vireo_begin(picture.width, picture.height));
            this._put(picture, input, this._program.vireo_row_bytes());
            for (const use of chain) this._add(use);
            return this._take(picture, this._address(this._program.vireo_render(frame, frames)));
        } finally {
            this._program.vireo_end();
            this._clock = undefined;
            this._failure = undefined;
        }
    }

    _start(program) {
        this._program = program;
        program._initialize();
        this.version = {
            version: this._textAt(program.vireo_version()),
            commit: this._textAt(program.vireo_commit()),
            instructionSet: this._textAt(program.vireo_instruction_set()),
        };
        this._filters = Array.from({ length: program.vireo_filter_count() }, (_, index) => this._describeFilter(index));
    }

    _describeFilter(index) {
        const program = this._program;
        const nameKey = this._textAt(program.vireo_filter_name_key(index));
        return {
            id: program.vireo_filter_id(index),
            englishName: nameKey.slice(nameKey.indexOf('=') + 1),
            matchName: this._textAt(program.vireo_filter_match_name(index)),
            key: keySegment(nameKey),
            nameKey,
            categoryKey: this._textAt(program.vireo_filter_category_key(index)),
            usesTime: program.vireo_filter_reads_time(index) !== 0,
            earlierFrames: program.vireo_filter_look_back(index),
            parameters: Array.from({ length: program.vireo_parameter_count(index) }, (_, i) =>
                this._describeParameter(index, i)),
        };
    }

    _describeParameter(filter, index) {
        const key = this._textAt(this._program.vireo_parameter_key(filter, index));
        const numbers = this._withMemory(parameterNumbers * 8, (address) => {
            this._program.vireo_describe_parameter(filter, index, address);
            return [...new Float64Array(this._program.memory.buffer, address, parameterNumbers)];
        });
        const [kindNumber, minimum, maximum, displayMinimum, displayMaximum, initial, size] = numbers;
        const kind = kinds[kindNumber];
        return {
            key,
            englishName: key.slice(key.indexOf('=') + 1),
            kind,
            minimum,
            maximum,
            displayMinimum,
            displayMaximum,
            default: betweenStored(kind, initial),
            size,
        };
    }

    _add({ filter: id, values, mix = 100 }) {
        const index = this._filters.findIndex((filter) => filter.id === id);
        if (index < 0) throw new Error(`there is no filter ${id}`);
        const { parameters } = this._filters[index];
        const given = values ?? parameters.map((parameter) => parameter.default);
        const stored = given.map((value, i) => betweenStored(parameters[i]?.kind, value));
        this._withMemory(stored.length * 8, (address) => {
            new Float64Array(this._program.memory.buffer, address, stored.length).set(stored);
            if (!this._program.vireo_add(index, address, stored.length, mix)) this._fail();
        });
    }

    /** Called by the program for the chain's input at an earlier frame. Exceptions wait until it has returned. */
    _fetch(frame, address, rowBytes) {
        try {
            const { picture, fetch } = this._clock;
            const earlier = fetch ? fetch(frame) : picture;
            checkPicture(earlier);
            if (earlier.width !== picture.width || earlier.height !== picture.height) {
                throw new Error(`frame ${frame} is not as large as the others`);
            }
            this._put(earlier, address >>> 0, rowBytes);
            return 0;
        } catch (failure) {
            this._failure ??= failure;
            return 1;
        }
    }

    /** Copies a picture to where the program has it, rows from the bottom. */
    _put({ width, height, data }, address, rowBytes) {
        const bytes = this._bytes();
        const row = width * pixelBytes;
        for (let y = 0; y < height; ++y) {
            bytes.set(data.subarray(y * row, (y + 1) * row), address + (height - 1 - y) * rowBytes);
        }
    }

    _take({ width, height }, address) {
        const bytes = this._bytes();
        const rowBytes = this._program.vireo_row_bytes();
        const row = width * pixelBytes;
        const data = new Uint8ClampedArray(row * height);
        for (let y = 0; y < height; ++y) {
            const from = address + (height - 1 - y) * rowBytes;
            data.set(bytes.subarray(from, from + row), y * row);
        }
        return { width, height, data };
    }

    /** An address that the program gave, or its failure. */
    _address(address) {
        return address === 0 ? this._fail() : address >>> 0;
    }

    _fail() {
        throw this._failure ?? new Error(this._textAt(this._program.vireo_failure()));
    }

    _withMemory(size, use) {
        const address = this._program.vireo_allocate(size) >>> 0;
        if (address === 0 && size > 0) throw new Error('there is not enough memory');
        try {
            return use(address);
        } finally {
            this._program.vireo_free(address);
        }
    }

    /** The program's memory, which moves when it grows. */
    _bytes() {
        return new Uint8Array(this._program.memory.buffer);
    }

    _textAt(address) {
        const bytes = this._bytes();
        const begin = address >>> 0;
        return decoder.decode(bytes.slice(begin, bytes.indexOf(0, begin)));
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
