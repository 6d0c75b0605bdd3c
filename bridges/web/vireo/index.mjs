// SPDX-License-Identifier: MIT
// The filters for scripts, in pages, in workers and in Node. What each member does stands in index.d.ts.
import { Chain, depthsOf } from './chain.mjs';
import { Disposable, Handle } from './handle.mjs';
import { enumerations, Out, Program, VireoError } from './interface.mjs';

export { VireoError };

const isNode = typeof process !== 'undefined' && Boolean(process.versions?.node);

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

async function readFile(address) {
    const files = 'node:fs/promises'; // not named in the import: bundlers would look for it
    const { readFile: read } = await import(/* webpackIgnore: true */ /* @vite-ignore */ files);
    return read(/^file:/.test(address) ? new URL(address) : address);
}

/** What WebAssembly.instantiate() takes, or a response. */
async function loaded(source) {
    if (typeof source !== 'string' && !(source instanceof URL)) return source;
    const isFile = isNode && !/^(https?|data|blob):/.test(source);
    return isFile ? readFile(source) : fetch(source);
}

async function instance(source, imports) {
    let program = await loaded(source);
    if (program[Symbol.toStringTag] === 'Response') {
        if (!program.ok) throw new Error(`${program.url} answers ${program.status} ${program.statusText}`);
        // Browsers compile while they load, where the server names the type that they want.
        const isTyped = program.headers.get('content-type')?.startsWith('application/wasm');
        program = await (isTyped ? WebAssembly.compileStreaming(program) : program.arrayBuffer());
    }
    const made = await WebAssembly.instantiate(program, imports);
    return made.instance ?? made;
}

export async function loadVireo(source = new URL('./vireo.wasm', import.meta.url)) {
    const asked = {};
    const earlierFrame = (user, number, target, time) => asked.earlierFrame(Number(number), target >>> 0, time >>> 0);
    const isCancelled = () => asked.isCancelled();
    let exports;
    try {
        ({ exports } = await instance(source, {
            vireo: { earlierFrame, isCancelled },
            env: { emscripten_notify_memory_growth() {} },
            wasi_snapshot_preview1: systemCalls(() => exports.memory.buffer),
        }));
    } catch (error) {
        throw new VireoError(`the filters cannot be loaded: ${error.message}`, { status: 'noModule', cause: error });
    }
    exports._initialize();
    return new Vireo(new Program(exports, asked));
}

class Vireo extends Disposable {
    #program;
    #filters = null;

    constructor(program) {
        const address = program.call('vireoOpen', 0, new Out('address'));
        super('engine', new Handle(address, (engine) => program.number('vireoClose', engine)));
        this.#program = program;
        this.version = program.text('vireoVersion');
        this.commit = program.text('vireoCommit');
        this.instructionSet = program.text('vireoInstructionSet');
    }

    setLanguage(language) {
        this.#call('vireoSetLanguage', language);
        this.#filters = null;
    }

    translate(key) {
        return this.#call('vireoTranslate', key, new Out('own text'));
    }

    filters() {
        const count = () => this.#program.number('vireoFilterCount', this.handle.address);
        this.#filters ??= Array.from({ length: count() }, (_, index) => this.#filter(index));
        return this.#filters;
    }

    filter(name) {
        return this.filters()[this.#call('vireoFindFilter', String(name), new Out('uint'))];
    }

    presets() {
        const count = this.#call('vireoPresetCount', new Out('uint'));
        return Array.from({ length: count }, (_, index) => {
            const { name, description } = this.#call('vireoDescribePreset', index, new Out('VireoPreset'));
            return { name, description };
        });
    }

    chain(...texts) {
        const chain = new Chain(this, this.#program, this.#call('vireoChainNew', new Out('address')));
        try {
            for (const text of texts) chain.add(text);
            return chain;
        } catch (error) {
            chain.dispose();
            throw error;
        }
    }

    #filter(index) {
        const found = this.#call('vireoDescribeFilter', index, new Out('VireoFilter'));
        const { structSize, parameterCount, readsTime, depths, ...filter } = found;
        const parameters = Array.from({ length: parameterCount }, (_, i) => this.#parameter(index, i));
        return { index, ...filter, readsTime: readsTime !== 0, depths: depthsOf(depths), parameters };
    }

    #parameter(filter, index) {
        const found = this.#call('vireoDescribeParameter', filter, index, new Out('VireoParameter'));
        const { structSize, kind, initial, takesPercent, choiceCount, ...parameter } = found;
        const word = (_, choice) => this.#call('vireoDescribeChoice', filter, index, choice, new Out('text'));
        return {
            ...parameter,
            kind: enumerations.kind[kind],
            takesPercent: takesPercent !== 0,
            default: initial,
            choices: Array.from({ length: choiceCount }, word),
        };
    }

    #call(name, ...values) {
        return this.#program.call(name, this.handle.address, ...values);
    }
}
