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
    },
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
    VireoRenderOptions: { structSize: 'uint', earlierFrame: 'address', isCancelled: 'address', user: 'address' },
};

export const constants = {
    VireoUnknownFilter: 5,
    VireoUnknownParameter: 6,
    VireoBadValue: 7,
    VireoBadText: 8,
    VireoBadSettings: 9,
    VireoNumber: 0,
    VireoBoolean: 1,
    VireoColor: 2,
    VireoSpellingFull: 0,
    VireoSpellingCompact: 1,
    VireoFrom: -1,
    VireoTo: -2,
    VireoMix: -3,
    VireoRgba: 1,
};

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
types.address = types.text = types.uint;

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

/** What the engine says of a failure: its sentence, its status, and what the sentence is about, else empty texts. */
export class EngineError extends Error {
    constructor({ sentence, status, filter, parameter, value }) {
        super(sentence);
        Object.assign(this, { status, filter, parameter, value });
    }
}

/** An argument that is a struct; members that are not named are zero. */
export class Struct {
    constructor(name, members) {
        this.name = name;
        this.members = members;
    }
}

/** An argument that the function writes to: a struct by its name, or a type; "own text" is a text to be freed. */
export class Out {
    constructor(type) {
        this.type = type;
    }
}

const decoder = new TextDecoder();
const encoder = new TextEncoder();

/** The program, which has the interface's functions as its exports. */
export class Program {
    #functions;
    #view;

    constructor(functions) {
        this.#functions = functions;
        this.#view = new DataView(functions.memory.buffer);
    }

    /** Calls a function that answers with a number; Struct and text may be among the arguments. */
    number(name, ...values) {
        return this.#call(name, values, (answer) => answer);
    }

    /** The same of one that answers with a text. */
    text(name) {
        return this.#textAt(this.#functions[name]());
    }

    /** Calls a function that answers with a status, and gives what it wrote to Out. Throws EngineError. */
    call(name, ...values) {
        return this.#call(name, values, (status, written) => {
            if (status !== 0) throw new EngineError(this.structAt('VireoError', this.#functions.vireoLastError()));
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

    structAt(name, address) {
        const read = ({ name: member, type, offset }) => [member, this.#read(type, address + offset)];
        return Object.fromEntries(layouts[name].places.map(read));
    }

    #call(name, values, finish) {
        const blocks = [];
        let written = () => {};
        const take = (bytes) => {
            const address = this.allocate(bytes);
            if (address === 0) throw new Error('there is not enough memory');
            blocks.push(address);
            return address;
        };
        const passed = (value) => {
            if (typeof value === 'string') return this.#putText(value, take);
            if (value instanceof Struct) return this.#putStruct(value, take);
            if (!(value instanceof Out)) return value;
            const address = value.type in layouts ? this.#putStruct(new Struct(value.type, {}), take) : take(8);
            written = () => this.#written(value.type, address);
            return address;
        };
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
        return type === 'text' ? this.#textAt(value) : value;
    }

    #written(type, address) {
        if (type in layouts) return this.structAt(type, address);
        if (type !== 'own text') return this.#read(type, address);
        const text = this.#read('text', address);
        this.free(this.#read('address', address));
        return text;
    }

    #textAt(address) {
        const bytes = this.bytes();
        const begin = address >>> 0;
        return decoder.decode(bytes.subarray(begin, bytes.indexOf(0, begin)));
    }

    #putText(text, take) {
        const bytes = encoder.encode(text);
        const address = take(bytes.length + 1);
        this.bytes().set(bytes, address);
        this.bytes()[address + bytes.length] = 0;
        return address;
    }

    #putStruct({ name, members }, take) {
        const { size, places } = layouts[name];
        const address = take(size);
        this.bytes().fill(0, address, address + size);
        for (const [member, value] of Object.entries({ structSize: size, ...members })) {
            const { type, offset } = places.find((place) => place.name === member);
            const stored = typeof value === 'string' ? this.#putText(value, take) : value;
            types[type].write(this.#memory(), address + offset, stored);
        }
        return address;
    }
}
