// SPDX-License-Identifier: MIT
// The engine's C interface for scripts: what vireo/vireo.h declares, called with values of scripts. The tables are held
// to the header by a test.

/** Structs by their members, in order. */
const structs = {
    VireoError: { status: 'int', offset: 'long', sentence: 'text', filter: 'text', parameter: 'text', value: 'text' },
    VireoOpenOptions: { structSize: 'uint', module: 'text', language: 'text' },
    VireoFilter: {
        structSize: 'uint',
        id: 'uint',
        name: 'text',
        englishName: 'text',
        category: 'text',
        englishCategory: 'text',
        key: 'text',
        matchName: 'text',
        fileName: 'text',
        parameterCount: 'uint',
        readsTime: 'int',
        earlierFrames: 'uint',
        depths: 'uint',
        maximumWidth: 'int',
        maximumHeight: 'int',
        maximumRowBytes: 'int',
        countsPixels: 'int',
    },
    VireoParameter: {
        structSize: 'uint',
        kind: 'int',
        name: 'text',
        englishName: 'text',
        unit: 'text',
        minimum: 'double',
        maximum: 'double',
        displayMinimum: 'double',
        displayMaximum: 'double',
        initial: 'long',
        takesPercent: 'int',
        choiceCount: 'uint',
        size: 'uint',
        label: 'text',
        inPixels: 'int',
    },
    VireoPreset: { structSize: 'uint', name: 'own text', description: 'own text', file: 'own text' },
    VireoKey: { frame: 'long', seconds: 'double', value: 'long', transition: 'int' },
    VireoTime: {
        structSize: 'uint',
        interlacing: 'int',
        frame: 'long',
        frames: 'long',
        rate: 'double',
        seconds: 'double',
    },
    VireoFrame: {
        structSize: 'uint',
        width: 'int',
        height: 'int',
        layout: 'int',
        depth: 'int',
        premultiplied: 'int',
        pixels: 'address',
        stride: 'long',
        owned: 'address',
    },
    VireoNeeds: {
        structSize: 'uint',
        earlierFrames: 'uint',
        readsTime: 'int',
        depths: 'uint',
        takesRowsFromTheTop: 'int',
    },
    VireoRenderOptions: {
        structSize: 'uint',
        earlierFrame: 'address',
        isCancelled: 'address',
        user: 'address',
        reducesDepth: 'int',
    },
};

/** What scripts call the members of the enumerations, in order from 0. */
export const enumerations = {
    status: [
        'done',
        'failed',
        'usage',
        'noMemory',
        'noModule',
        'unknownFilter',
        'unknownParameter',
        'badValue',
        'badText',
        'badSettings',
        'unknownPreset',
        'tooLarge',
        'unsupported',
        'noFrame',
        'cancelled',
    ],
    kind: ['number', 'boolean', 'colour'],
    layout: ['bgra', 'rgba', 'argb', 'abgr', 'bgrx', 'rgbx', 'xrgb', 'xbgr', 'bgr', 'rgb', 'grey'],
    transition: ['linear', 'hold', 'smooth'],
    spelling: ['full', 'compact'],
};

export const constants = { VireoFrom: -1, VireoTo: -2, VireoMix: -3 };

/** Types of members. A number of 64 bits is one of 53 here, and a text an address in memory. */
const types = {
    int: {
        bytes: 4,
        read: (view, at) => view.getInt32(at, true),
        write: (view, at, value) => view.setInt32(at, value, true),
    },
    uint: {
        bytes: 4,
        read: (view, at) => view.getUint32(at, true),
        write: (view, at, value) => view.setUint32(at, value, true),
    },
    long: {
        bytes: 8,
        read: (view, at) => Number(view.getBigInt64(at, true)),
        write: (view, at, value) => view.setBigInt64(at, BigInt(value), true),
    },
    double: {
        bytes: 8,
        read: (view, at) => view.getFloat64(at, true),
        write: (view, at, value) => view.setFloat64(at, value, true),
    },
};
types.address = types.text = types['own text'] = types.uint;

function layoutOf(struct) {
    let end = 0;
    const places = Object.entries(struct).map(([name, type]) => {
        const { bytes } = types[type];
        const offset = Math.ceil(end / bytes) * bytes;
        end = offset + bytes;
        return { name, type, offset, bytes };
    });
    const alignment = Math.max(...places.map(({ bytes }) => bytes));
    return { places, size: Math.ceil(end / alignment) * alignment };
}

/** Struct's name -> { places: [{ name, type, offset, bytes }], size }. */
export const layouts = Object.fromEntries(Object.entries(structs).map(([name, struct]) => [name, layoutOf(struct)]));

/** Why something failed, in one sentence; the other members are in the declarations. */
export class VireoError extends Error {
    constructor(sentence, { status = 'usage', offset = -1, filter = '', parameter = '', value = '', cause } = {}) {
        super(sentence, cause === undefined ? undefined : { cause });
        this.name = 'VireoError';
        Object.assign(this, { status, offset, filter, parameter, value });
    }
}

/** The number of an enumeration's member. Throws VireoError where there is none. */
export function numberOf(enumeration, word) {
    const number = enumerations[enumeration].indexOf(word);
    if (number >= 0) return number;
    throw new VireoError(`a ${enumeration} is one of ${enumerations[enumeration].join(', ')}, not "${word}"`);
}

/** An argument that is a struct; members that are not named are zero. */
export class Struct {
    constructor(name, members) {
        this.name = name;
        this.members = members;
    }
}

/** An argument that the function writes to: a struct by its name, or a type. An "own text" is freed once read. */
export class Out {
    constructor(type) {
        this.type = type;
    }
}

const noMemory = () => new VireoError('there is not enough memory', { status: 'noMemory' });

const decoder = new TextDecoder('utf-8', { ignoreBOM: true });
const encoder = new TextEncoder();

/** The program, which has the interface's functions as its exports. */
export class Program {
    /** { earlierFrame(number, target, time), isCancelled() }: what answers the engine while a chain renders. */
    asked;

    /** The functions of the program that ask, by the same names. */
    callbacks;

    #functions;
    #view;

    constructor(functions, asked) {
        this.#functions = functions;
        this.#view = new DataView(functions.memory.buffer);
        this.asked = asked;
        this.callbacks = {
            earlierFrame: functions.vireo_earlier_frame(),
            isCancelled: functions.vireo_is_cancelled(),
        };
    }

    /** Calls a function that answers with a number; Struct, text and bytes may be among the arguments. */
    number(name, ...values) {
        return this.#call(name, values, (answer) => answer);
    }

    /** The same of one that answers with a text. */
    text(name) {
        return this.#textAt(this.#functions[name]());
    }

    /** Calls a function that answers with a status, and gives what it wrote to Out. Throws VireoError. */
    call(name, ...values) {
        return this.#call(name, values, (status, written) => {
            if (status !== 0) throw this.#failure(values.find((value) => typeof value === 'string'));
            return written();
        });
    }

    /** All of the memory, until it grows. */
    bytes() {
        return new Uint8Array(this.#functions.memory.buffer);
    }

    /** An address of as many bytes, for free(); 0 where there is no memory. */
    allocate(bytes) {
        return this.#functions.malloc(bytes) >>> 0;
    }

    free(address) {
        this.#functions.vireoFree(address);
    }

    /** The bytes that a function hands out: call() takes [new Out('address'), new Out('uint')] for them. */
    ownBytes([address, length]) {
        const bytes = this.bytes().slice(address, address + length);
        this.free(address);
        return bytes;
    }

    /** As many structs as `write(address)` fills. */
    structs(name, count, write) {
        const { size } = layouts[name];
        const address = this.allocate(count * size);
        if (address === 0) throw noMemory();
        try {
            write(address);
            return Array.from({ length: count }, (_, index) => this.structAt(name, address + index * size));
        } finally {
            this.free(address);
        }
    }

    structAt(name, address) {
        const read = ({ name: member, type, offset }) => [member, this.#read(type, address + offset)];
        return Object.fromEntries(layouts[name].places.map(read));
    }

    /** Changes members of a struct that lies in memory. */
    writeStruct(name, address, members) {
        for (const { name: member, type, offset } of layouts[name].places) {
            if (member in members) types[type].write(this.#memory(), address + offset, members[member]);
        }
    }

    #failure(text) {
        const { sentence, status, offset, ...about } = this.structAt('VireoError', this.#functions.vireoLastError());
        const isInText = offset >= 0 && text !== undefined;
        const place = isInText ? decoder.decode(encoder.encode(text).subarray(0, offset)).length : -1;
        return new VireoError(sentence, { ...about, status: enumerations.status[status], offset: place });
    }

    #call(name, values, finish) {
        const blocks = [];
        const outs = [];
        const take = (bytes) => {
            const address = this.allocate(bytes);
            if (address === 0) throw noMemory();
            blocks.push(address);
            return address;
        };
        const passed = (value) => {
            if (typeof value === 'string') return this.#putText(value, take);
            if (value instanceof Struct) return this.#putStructs([value], take);
            if (value instanceof Uint8Array) return this.#putBytes(value, take(Math.max(value.length, 1)));
            if (Array.isArray(value)) return this.#putStructs(value, take);
            if (!(value instanceof Out)) return value;
            const address = value.type in layouts ? this.#putStructs([new Struct(value.type, {})], take) : take(8);
            outs.push(() => this.#written(value.type, address));
            return address;
        };
        const written = () => (outs.length > 1 ? outs.map((out) => out()) : outs[0]?.());
        try {
            return finish(this.#functions[name](...values.map(passed)), written);
        } finally {
            for (const block of blocks) this.free(block);
        }
    }

    /** The memory moves when it grows. */
    #memory() {
        const { buffer } = this.#functions.memory;
        if (this.#view.buffer !== buffer) this.#view = new DataView(buffer);
        return this.#view;
    }

    #read(type, address) {
        const value = types[type].read(this.#memory(), address);
        if (!type.endsWith('text')) return value;
        const text = this.#textAt(value);
        if (type === 'own text') this.free(value);
        return text;
    }

    #written(type, address) {
        return type in layouts ? this.structAt(type, address) : this.#read(type, address);
    }

    #textAt(address) {
        const bytes = this.bytes();
        const begin = address >>> 0;
        return decoder.decode(bytes.subarray(begin, bytes.indexOf(0, begin)));
    }

    #putBytes(bytes, address) {
        this.bytes().set(bytes, address);
        return address;
    }

    #putText(text, take) {
        const bytes = encoder.encode(`${text}\0`);
        return this.#putBytes(bytes, take(bytes.length));
    }

    /** Structs of one kind, one behind the other. */
    #putStructs(list, take) {
        const { size, places } = layouts[list[0].name];
        const address = take(size * list.length);
        this.bytes().fill(0, address, address + size * list.length);
        for (const [index, { name, members }] of list.entries()) {
            const stored = places[0].name === 'structSize' ? { structSize: size } : {};
            for (const [member, value] of Object.entries(members)) {
                stored[member] = typeof value === 'string' ? this.#putText(value, take) : value;
            }
            this.writeStruct(name, address + index * size, stored);
        }
        return address;
    }
}
