// SPDX-License-Identifier: MIT
// The engine in Node and in a browser, held byte for byte to the command line.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { createHash } from 'node:crypto';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';
import { promisify } from 'node:util';

import { loadEngine } from '../../../build/web/engine.mjs';
import { writePng } from '../../../bridges/web/png.mjs';
import { launch, root, serve } from './browser.mjs';

const program = path.join(root, 'build/linux/bin/vireo');
const frames = 10;
const languages = ['en', 'fr', 'de', 'ja', 'es', 'it', 'ko'];

/** The program of an engine that is loaded meanwhile. */
let wasm;
const { instantiate } = WebAssembly;
WebAssembly.instantiate = async (...options) => {
    const loaded = await instantiate(...options);
    wasm = loaded.instance.exports;
    return loaded;
};
const engine = await loadEngine();
WebAssembly.instantiate = instantiate;
const filters = engine.filters();
const filterNamed = (name) => filters.find((filter) => filter.englishName === name);
const hash = (bytes) => createHash('sha256').update(bytes).digest('hex');

/** Numbers from 0 up to 1, the same for the same seed. */
function randomNumbers(seed) {
    let state = seed >>> 0;
    return () => {
        state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
        return ((state ^ (state >>> 15)) >>> 0) / 2 ** 32;
    };
}

/** Slopes with noise, which move from frame to frame: a third opaque, a third transparent, a third between. */
function clipOf(width, height) {
    return Array.from({ length: frames }, (_, frame) => {
        const random = randomNumbers(1000 + frame);
        const data = new Uint8ClampedArray(4 * width * height);
        for (let y = 0, i = 0; y < height; ++y) {
            for (let x = 0; x < width; ++x) {
                const slope = 3 * x + 5 * y + 17 * frame;
                for (const factor of [1, 2, 3]) data[i++] = Math.abs(((factor * slope + 40 * random()) % 511) - 255);
                const alpha = Math.floor((3 * x) / width);
                data[i++] = alpha === 0 ? 255 : alpha === 2 ? 0 : 256 * random();
            }
        }
        return { width, height, data };
    });
}

const clips = { middling: clipOf(131, 77), single: clipOf(1, 1), wide: clipOf(402, 30) };

function randomValue({ kind, minimum, maximum }, random) {
    const [least, most] = { number: [minimum, maximum], boolean: [0, 1], colour: [0, 0xffffff] }[kind];
    return least + Math.floor(random() * (most - least + 1));
}

const randomUse = (filter, seed) => {
    const random = randomNumbers(1000 * filter.id + seed);
    return { filter: filter.id, values: filter.parameters.map((parameter) => randomValue(parameter, random)), mix: 100 };
};
const defaultUse = (filter, mix = 100) => ({ filter: filter.id, values: filter.parameters.map((p) => p.default), mix });

const cases = filters.flatMap((filter) => [
    { name: `${filter.englishName} at first`, clip: 'middling', chain: [defaultUse(filter)] },
    { name: `${filter.englishName} on one pixel`, clip: 'single', chain: [randomUse(filter, 1)] },
    { name: `${filter.englishName} somehow`, clip: 'middling', chain: [randomUse(filter, 2)] },
    { name: `${filter.englishName} otherwise, half`, clip: 'wide', chain: [{ ...randomUse(filter, 3), mix: 50 }] },
]);
cases.push({
    name: 'a chain that looks back twice',
    clip: 'middling',
    chain: [
        defaultUse(filterNamed('Horizontal Hold'), 70),
        defaultUse(filterNamed('Ghosting')),
        defaultUse(filterNamed('Solarize'), 0),
        randomUse(filterNamed('Extract'), 4),
        defaultUse(filterNamed('Ghosting'), 33),
    ],
});
cases.push({
    name: 'key frames and stretches',
    clip: 'middling',
    chain: [
        'Solarize:threshold=0@0f..hold..100@3f..254@0.3s,from=2f,mix=0@1f..smooth..100@8f',
        'Color Pass:color=#000000@0f..#ff8000@9f,to=0.35s',
        'Ghosting:to=7f,from=0.1s',
    ].join('; '),
});

/** The chain as the command line takes it. */
function commandOptions(chain) {
    if (typeof chain === 'string') return chain.split('; ').flatMap((text) => ['-f', text]);
    return chain.flatMap(({ filter: id, values, mix }) => {
        const { parameters } = filters.find((filter) => filter.id === id);
        const text = (kind, value) => (kind === 'colour' ? `#${value.toString(16).padStart(6, '0')}` : value);
        const pairs = parameters.map(({ englishName, kind }, i) => `${englishName}=${text(kind, values[i])}`);
        return ['-f', `${id}:${[...pairs, `mix=${mix}`].join(',')}`];
    });
}

const run = promisify(execFile);

async function vireo(...options) {
    const { stdout } = await run(program, options, { encoding: 'buffer', maxBuffer: 2 ** 28 });
    return stdout;
}

/** Checksums of every frame that the command line makes of a case. */
async function commandHashes({ clip, chain }, folder) {
    const { width, height } = clips[clip][0];
    const raw = ['--format', 'rawvideo', '--encoder', 'rawvideo', '--pixel-format', 'rgba', '--alpha', '--quiet'];
    const bytes = await vireo('render', path.join(folder, `${clip}%d.png`), '-', ...raw, ...commandOptions(chain));
    assert.equal(bytes.length, 4 * width * height * frames);
    return Array.from({ length: frames }, (_, i) => hash(bytes.subarray(4 * width * height * i, 4 * width * height * (i + 1))));
}

/** The same of the engine. Earlier frames are asked for when a filter wants them. */
const engineHashes = ({ clip, chain }) =>
    clips[clip].map((picture, frame) =>
        hash(engine.render(chain, picture, { frame, frames, fetch: (n) => clips[clip][n] }).data));

/** Runs in the browser. */
async function hashesInBrowser([clipsAsText, allCases]) {
    const { loadEngine: load } = await import('/engine.mjs');
    const browserEngine = await load();
    const pictures = Object.fromEntries(Object.entries(clipsAsText).map(([name, clip]) => [name, clip.map(({ base64, ...size }) =>
        ({ ...size, data: Uint8ClampedArray.from(atob(base64), (letter) => letter.charCodeAt(0)) }))]));
    const hex = async (bytes) =>
        Array.from(new Uint8Array(await crypto.subtle.digest('SHA-256', bytes)), (byte) => byte.toString(16).padStart(2, '0')).join('');
    const hashes = [];
    for (const { clip, chain } of allCases) {
        const results = pictures[clip].map((picture, frame, all) =>
            browserEngine.render(chain, picture, { frame, frames: all.length, fetch: (n) => all[n] }).data);
        hashes.push(await Promise.all(results.map(hex)));
    }
    return hashes;
}

/** A page of the engine's server in a browser, while `work` goes on. */
async function inBrowser(work) {
    const server = await serve();
    const browser = await launch();
    try {
        return await work(await browser.newPage(), server.url);
    } finally {
        await browser.close();
        server.close();
    }
}

describe('bytes', () => {
    const expected = new Map();
    const folder = mkdtempSync(path.join(tmpdir(), 'vireo-engine-'));

    before(async () => {
        for (const [name, clip] of Object.entries(clips)) {
            for (const [i, picture] of clip.entries()) writeFileSync(path.join(folder, `${name}${i}.png`), await writePng(picture));
        }
        const left = [...cases];
        const worker = async () => {
            for (let next; (next = left.shift()); ) expected.set(next, await commandHashes(next, folder));
        };
        await Promise.all([worker(), worker()]);
    });
    after(() => rmSync(folder, { recursive: true }));

    test('are the command line\'s in Node', () => {
        for (const one of cases) assert.deepEqual(engineHashes(one), expected.get(one), one.name);
    });

    test('are the command line\'s in a browser', async () => {
        const clipsAsText = Object.fromEntries(Object.entries(clips).map(([name, clip]) =>
            [name, clip.map(({ data, ...size }) => ({ ...size, base64: Buffer.from(data).toString('base64') }))]));
        const hashes = await inBrowser(async (page, url) => {
            await page.goto(`${url}engine.mjs`);
            return page.evaluate(hashesInBrowser, [clipsAsText, cases]);
        });
        for (const [i, one] of cases.entries()) assert.deepEqual(hashes[i], expected.get(one), one.name);
    });
});

test('the page that the documentation shows does what it says', async () => {
    const text = readFileSync(path.join(root, 'docs/browser.md'), 'utf8');
    const example = /```html\n(.*?)```/s.exec(text)[1];
    const shown = await inBrowser(async (page, url) => {
        await page.route(`${url}example.html`, (route) => route.fulfill({ contentType: 'text/html', body: example }));
        await page.goto(`${url}example.html`);
        await page.waitForFunction(() => {
            const canvas = document.querySelector('canvas').getContext('2d');
            return canvas.getImageData(0, 0, 1, 1).data[3] < 255;
        });
        return page.evaluate(() => [...document.querySelector('canvas').getContext('2d').getImageData(160, 120, 1, 1).data]);
    });
    const colour = new Uint8ClampedArray([0xc0, 0x40, 0x20, 255]);
    const solarize = { filter: filterNamed('Solarize').id, values: [100] };
    assert.deepEqual(shown, [...engine.render([solarize], { width: 1, height: 1, data: colour }).data]);
});

test('every filter is listed as the command line lists it, in every language', async () => {
    for (const language of languages) {
        engine.setLanguage(language);
        const listed = JSON.parse(await vireo('list', '--json', '--language', language));
        const names = engine.filters().map(({ id, name, category, matchName, parameters }) =>
            ({ id, name, category, matchName, parameters: parameters.length }));
        assert.deepEqual(names, listed, language);
    }
    for (const { id, parameters } of engine.filters()) {
        const info = JSON.parse(await vireo('info', String(id), '--json', '--language', 'ko'));
        const own = parameters.map(({ englishName, label, unit, choices, takesPercent, inPixels, ...rest }) => rest);
        for (const parameter of info.parameters) {
            if (parameter.kind === 'colour') parameter.default = Number.parseInt(parameter.default.slice(1), 16);
            if (parameter.kind === 'boolean') parameter.default = Number(parameter.default);
        }
        assert.deepEqual(own, info.parameters);
    }
    engine.setLanguage('en');
});

test('texts come from the catalogue, else from the key', () => {
    const title = '$$$/Strata/VireoFilters/Levels/Title=Levels Settings';
    engine.setLanguage('de');
    assert.notEqual(engine.text(title), 'Levels Settings');
    assert.equal(engine.text('$$$/Nowhere/Save=Sîchern…'), 'Sîchern…');
    engine.setLanguage('en');
    assert.equal(engine.text(title), 'Levels Settings');
    assert.throws(() => engine.setLanguage('xx'), /"xx"/);
});

test('what cannot be rendered is told in a sentence, and the next picture comes out', () => {
    const picture = clips.middling[0];
    const solarize = defaultUse(filterNamed('Solarize'));
    const ghosting = [defaultUse(filterNamed('Ghosting'))];
    const beforehand = hash(engine.render([solarize], picture).data);
    const empty = (width, height) => ({ width, height, data: new Uint8ClampedArray(4 * width * height) });
    const clock = { frame: 9, frames: 10 };
    for (const [work, sentence] of [
        [() => engine.render([solarize], empty(20000, 20000)), /memory/],
        [() => engine.render([defaultUse(filterNamed('Color Replace'))], empty(9000, 2)), /Color Replace takes rows of up to 32767 bytes/],
        [() => engine.render([solarize, defaultUse(filterNamed('Vertical Hold'))], empty(1, 40000)), /Vertical Hold takes frames up to 32768 pixels high/],
        [() => engine.render([{ ...solarize, values: [255] }], picture), /Threshold of Solarize takes whole numbers from 0 to 254, not "255"$/],
        [() => engine.render([{ ...solarize, values: [1.5] }], picture), /Threshold/],
        [() => engine.render([{ ...solarize, values: [NaN] }], picture), /Threshold/],
        [() => engine.render([{ ...solarize, values: [] }], picture), /takes 1 values/],
        [() => engine.render([{ ...solarize, mix: 101 }], picture), /mix of Solarize takes whole per cents from 0 to 100/],
        [() => engine.render([{ filter: 1 }], picture), /no filter 1/],
        [() => engine.render([solarize], { width: 0, height: 5, data: new Uint8ClampedArray(0) }), /0 x 5/],
        [() => engine.render([solarize], { ...picture, width: picture.width + 1 }), /samples/],
        [() => engine.render([solarize], picture, { frame: -1 }), /-1/],
        [() => engine.render(ghosting, picture, { ...clock, fetch: () => clips.wide[0] }), /as large/],
        [() => engine.render(ghosting, picture, { ...clock, fetch: () => { throw new Error('this disk is gone'); } }), /^Error: this disk is gone$/],
    ]) {
        assert.throws(work, (error) => sentence.test(String(error)), String(sentence));
        assert.equal(hash(engine.render([solarize], picture).data), beforehand);
    }
});

test('many renderings need no more memory than one', () => {
    const chain = filters.map((filter) => defaultUse(filter, 60));
    const clock = { frame: 9, frames, fetch: (n) => clips.wide[n] };
    engine.render(chain, clips.wide[9], clock);
    const size = wasm.memory.buffer.byteLength;
    for (let i = 0; i < 20; ++i) engine.render(chain, clips.wide[9], clock);
    assert.equal(wasm.memory.buffer.byteLength, size);
});
