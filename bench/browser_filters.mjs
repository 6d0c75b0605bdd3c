// SPDX-License-Identifier: MIT
// Times every filter as WebAssembly beside the same filter as machine code: the engine on one thread over the same
// picture of 1920 x 1080, rows from the top, copies into WebAssembly's memory and out of it left out. Needs the web build
// and the bench preset's. Prints a table for docs/performance.md.
//   node bench/browser_filters.mjs
import { execFileSync } from 'node:child_process';
import path from 'node:path';

const root = path.join(import.meta.dirname, '..');
const native = path.join(root, 'build/bench/bin/vireo_engine_bench');
const [width, height] = [1920, 1080];
const rounds = 40;

/** Milliseconds of each filter by its text, as machine code for an instruction set; the best one where none is named. */
function nativeTimes(instructionSet) {
    const env = { ...process.env, ...(instructionSet && { VIREO_ISA: instructionSet }) };
    const rows = execFileSync(native, ['filters'], { env, encoding: 'utf8' }).matchAll(/^\| (.+) \| ([\d.]+) \|$/gm);
    return new Map(Array.from(rows, ([, text, time]) => [text, Number(time)]));
}

/** The picture that the native program renders. */
function painted() {
    const data = new Uint8ClampedArray(4 * width * height);
    let noise = 1;
    for (let i = 0; i < data.length; ++i) {
        if (i % 4 === 3) {
            data[i] = 200;
            continue;
        }
        noise = (noise * 48271) % 2147483647;
        data[i] = Math.floor(i / 60000) + ((noise >> 12) % 32);
    }
    return { width, height, data, layout: 'bgra' };
}

/** How long the last frame took in the program. */
let rendered;
const { instantiate } = WebAssembly;
WebAssembly.instantiate = async (...options) => {
    const { instance } = await instantiate(...options);
    const vireoChainRender = (...values) => {
        const begin = performance.now();
        const status = instance.exports.vireoChainRender(...values);
        rendered = performance.now() - begin;
        return status;
    };
    return { instance: { exports: { ...instance.exports, vireoChainRender } } };
};
const { loadVireo } = await import('../build/web/vireo/index.mjs');
const vireo = await loadVireo();

const picture = painted();
const into = { ...picture, data: new Uint8ClampedArray(picture.data.length) };

function webTime(text) {
    const chain = vireo.chain(text);
    let best = Infinity;
    for (let i = 0; i < rounds; ++i) {
        chain.render(picture, { into });
        best = Math.min(best, rendered);
    }
    chain.dispose();
    return best;
}

const [best, baseline] = [nativeTimes(), nativeTimes('baseline')];
console.log('| 1920 × 1080 | WebAssembly, ms | × 128-bit machine code | × the best machine code |\n|---|---|---|---|');
for (const [text, time] of best) {
    const web = webTime(text);
    console.log(
        `| ${text} | ${web.toFixed(2)} | ${(web / baseline.get(text)).toFixed(2)} | ${(web / time).toFixed(2)} |`,
    );
}
