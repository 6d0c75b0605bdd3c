// SPDX-License-Identifier: MIT
// The npm package as its users have it: packed, installed from the file, and called in Node and in a browser.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { cpSync, mkdirSync, mkdtempSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';
import { pathToFileURL } from 'node:url';

import { build } from 'vite';

import { launch, pageFolder, pixels, root, serve } from './browser.mjs';

const folder = mkdtempSync(path.join(tmpdir(), 'vireo-package-'));
const app = path.join(folder, 'app');
const installed = path.join(app, 'node_modules/vireo-filters');
const inApp = (command, ...options) => execFileSync(command, options, { cwd: app, encoding: 'utf8' });
const native = (...options) => inApp(path.join(root, 'build/linux/bin/vireo'), ...options, '--quiet', '--overwrite');

const fromRaw = (size, file, ...to) =>
    inApp('ffmpeg', '-v', 'error', '-f', 'rawvideo', '-pix_fmt', 'rgba', '-s', size, '-i', file, ...to);

mkdirSync(app);
writeFileSync(path.join(app, 'package.json'), '{"private": true, "type": "module"}');
const offline = ['--offline', '--no-audit', '--no-fund', '--cache', path.join(folder, 'cache')];
const [packed] = JSON.parse(inApp('npm', 'pack', path.join(pageFolder, 'vireo'), '--json', ...offline));
inApp('npm', 'install', packed.filename, ...offline);
cpSync(path.join(root, 'tests/bridges/web/package'), app, { recursive: true });
after(() => rmSync(folder, { recursive: true }));

/** The package's program, what scripts hold of its memory, and how much that it handed out came back. */
let program;
const held = new Set();
let handedBack = 0;
const { instantiate } = WebAssembly;
WebAssembly.instantiate = async (...options) => {
    program = (await instantiate(...options)).instance.exports;
    const malloc = (bytes) => {
        const address = program.malloc(bytes);
        held.add(address >>> 0);
        return address;
    };
    const vireoFree = (address) => {
        if (!held.delete(address >>> 0)) ++handedBack;
        program.vireoFree(address);
    };
    return { instance: { exports: { ...program, malloc, vireoFree } } };
};
const { loadVireo, VireoError } = await import(pathToFileURL(path.join(installed, 'index.mjs')));
const vireo = await loadVireo();
WebAssembly.instantiate = instantiate;

/** Noise over slopes that move, of any alpha. */
function clipOf(width, height, frames, channels = 4) {
    let state = 1;
    const random = () => ((state = (Math.imul(state, 1664525) + 1013904223) >>> 0), state >>> 27);
    const sample = (frame) => (_, i) => (7 * i + 40 * frame + random()) & 255;
    return Array.from({ length: frames }, (_, frame) => {
        const data = Uint8Array.from({ length: channels * width * height }, sample(frame));
        return { width, height, data };
    });
}

const bytesOf = (pictures) => Buffer.concat(pictures.map(({ data }) => data));
const documented = readFileSync(path.join(root, 'docs/javascript.md'), 'utf8').match(/(?<=```js\n).*?(?=```)/gs);

test('holds what users need, and nothing else', () => {
    const names = packed.files.map((file) => file.path);
    const scripts = readdirSync(path.join(root, 'bridges/web/vireo'));
    const licenses = ['emscripten', 'musl', 'nlohmann-json'].map((name) => `licenses/${name}.txt`);
    assert.deepEqual(names.sort(), [...scripts, 'LICENSE', 'README.md', 'vireo.wasm', ...licenses].sort());
    assert.equal(packed.version, vireo.version);
    assert.match(readFileSync(path.join(installed, 'LICENSE'), 'utf8'), /^MIT License/);
});

test('is loaded from whatever holds the program', async () => {
    const file = path.join(installed, 'vireo.wasm');
    const bytes = readFileSync(file);
    const response = (type) => new Response(bytes, { headers: { 'content-type': type } });
    const answers = [Promise.resolve(response('application/wasm')), response('text/plain')];
    for (const source of [file, pathToFileURL(file).href, bytes, new WebAssembly.Module(bytes), ...answers]) {
        assert.equal((await loadVireo(source)).filters().length, 22);
    }
    await assert.rejects(loadVireo(new Response('', { status: 404 })), { status: 'noModule', message: /404/ });
});

test('does what its documentation shows', () => {
    const [begin, , filter, clip] = documented;
    writeFileSync(path.join(app, 'begin.mjs'), `${begin}\nconst clip = Array(20).fill(picture);\n${filter}\n${clip}`);
    writeFileSync(path.join(app, 'in.rgba'), Buffer.of(200, 64, 32, 255, 10, 20, 30, 255));
    fromRaw('2x1', 'in.rgba', 'in.png');
    native('render', 'in.png', 'out.png', '-f', 'Levels:(rgb) gamma=130', '-f', 'Solarize:threshold=60%');
    const expected = [...pixels(path.join(app, 'out.png'))];
    const said = inApp('node', 'begin.mjs');
    assert.deepEqual(said.match(/\[([^\]]*)\]/)[1].split(',').map(Number), expected);
    assert.match(said, /Levels:\(RGB\) Gamma=140,\(RGB\) Black Input Level=0@0s..smooth..40@2s,mix=50% 20\n/);
});

test('filters a whole clip between two of FFmpeg, as its documentation shows', () => {
    const lossless = ['-c:v', 'ffv1', '-pix_fmt', 'bgr0'];
    inApp('ffmpeg', '-v', 'error', '-f', 'lavfi', '-i', 'testsrc2=s=320x240:r=25:d=1.2', ...lossless, 'in.mkv');
    writeFileSync(path.join(app, 'clip.mjs'), documented[4]);
    inApp('node', 'clip.mjs');
    native('render', 'in.mkv', 'expected.mkv', '--encoder', 'ffv1', '--pixel-format', 'bgr0', '-f', 'Ghosting', '-f',
        'Solarize:threshold=0%@0s..60%@1s');
    const [ours, theirs] = ['out.mkv', 'expected.mkv'].map((name) => pixels(path.join(app, name)));
    assert.equal(ours.length, 30 * 4 * 320 * 240);
    assert.ok(ours.equals(theirs));
});

test('renders pictures, streams and earlier frames with the pixels of the command line', async () => {
    const cutOut = path.join(pageFolder, 'samples/cutout.png');
    const text = 'Lens Distortion:curvature=40; Extract:mix=70; Alpha Glow';
    native('render', cutOut, 'cutout.png', ...text.split('; ').flatMap((filter) => ['-f', filter]));
    const picture = { width: 960, height: 720, data: pixels(cutOut) };
    assert.ok(pixels(path.join(app, 'cutout.png')).equals(vireo.chain(text).render(picture).data));

    const clip = clipOf(62, 38, 12);
    writeFileSync(path.join(app, 'clip.rgba'), bytesOf(clip));
    fromRaw('62x38', 'clip.rgba', '-c:v', 'png', 'clip.mkv');
    native('render', 'clip.mkv', 'vhs.mkv', '--preset', 'vhs', '--alpha', '--encoder', 'png');
    const expected = pixels(path.join(app, 'vhs.mkv'));
    const chain = vireo.chain().addPreset('vhs');
    const moment = { rate: 25, frames: clip.length };
    const later = async function* () { yield* clip; };
    const awaited = [];
    for await (const picture of chain.stream(later(), moment)) awaited.push(picture);
    const single = (picture, frame) => chain.render(picture, { ...moment, frame, earlier: (number) => clip[number] });
    for (const results of [[...chain.stream(clip, moment)], awaited, clip.map(single)]) {
        assert.ok(expected.equals(bytesOf(results)));
    }
    assert.ok(!expected.equals(bytesOf(clip.map((picture, frame) => chain.render(picture, { ...moment, frame })))));

    const stream = chain.startStream({ ...moment, interlacing: 'bottom' });
    const fields = clip.map((picture) => Buffer.from(stream.render(picture).data));
    assert.ok(!Buffer.concat(fields).equals(expected));
    stream.restart();
    assert.ok(fields[0].equals(stream.render(clip[0]).data));
    for (const [frame, picture] of clip.entries()) {
        const options = { ...moment, frame, interlacing: 'bottom', earlier: (number) => clip[number] };
        assert.ok(fields[frame].equals(chain.render(picture, options).data), `fields of frame ${frame}`);
    }
});

test('takes and gives every layout and depth', () => {
    const chain = vireo.chain('Color Balance (RGB):red=180; Extract:mix=60');
    const [picture] = clipOf(21, 5, 1);
    const { data } = chain.render(picture);
    const reordered = (samples, layout) =>
        Uint8Array.from({ length: 21 * 5 * layout.length }, (_, i) => {
            const channel = 'rgba'.indexOf(layout[i % layout.length]);
            return channel < 0 ? 255 : samples[4 * Math.floor(i / layout.length) + channel];
        });
    for (const layout of ['bgra', 'rgba', 'argb', 'abgr', 'bgrx', 'rgbx', 'xrgb', 'xbgr', 'bgr', 'rgb']) {
        assert.deepEqual(chain.render(picture, { layout }).data, reordered(data, layout), `to ${layout}`);
        if (!layout.includes('a')) continue;
        const given = { ...picture, layout, data: reordered(picture.data, layout) };
        assert.deepEqual(chain.render(given, { layout: 'rgba' }).data, data, `from ${layout}`);
        assert.equal(chain.render(given, { into: given }), given);
        assert.deepEqual(given.data, reordered(data, layout), `in place, ${layout}`);
    }
    const grey = { width: 3, height: 1, data: Uint8Array.of(9, 99, 199) };
    assert.deepEqual(vireo.chain('Horizontal Flip').render(grey).data, Uint8Array.of(199, 99, 9));
    const multiplied = { width: 1, height: 1, data: Uint8Array.of(50, 25, 0, 128), premultiplied: true };
    const into = { width: 1, height: 1, data: new Uint8Array(4) };
    assert.deepEqual(vireo.chain('Solarize:mix=0').render(multiplied, { into }).data, Uint8Array.of(100, 50, 0, 128));
    for (const Samples of [Uint16Array, Float32Array]) {
        const two = { width: 2, height: 1, data: Samples.of(0, 1, 0, 1, 1, 0, 0, 1) };
        assert.deepEqual(vireo.chain('Horizontal Flip').render(two).data, Samples.of(1, 0, 0, 1, 0, 1, 0, 1));
    }
});

test('chains are built, changed, saved and read again', () => {
    const chain = vireo.chain('Levels:(rgb) gamma=130', 'Bend; Ghosting').addFilter('sol').move(3, 0).remove(2);
    assert.deepEqual(Array.from(chain, ({ filter }) => filter.key), ['Solarize', 'Levels', 'Ghosting']);
    assert.equal(chain.at(-1).text(), 'Ghosting');
    assert.equal(chain.at(3), undefined);
    const levels = chain.at(1).set('mix', '40%').set('(r) gamma', '90@0f..hold..150@1s').set('from', '2f');
    assert.deepEqual([levels.get('mix'), levels.isKeyed('mix')], ['40%', false]);
    assert.deepEqual([24, 25].map((frame) => levels.value('(r) gamma', { frame })), [90, 150]);
    assert.deepEqual([1, 2].map((frame) => levels.covers({ frame })), [false, true]);
    const keys = levels.keys('(r) gamma');
    assert.deepEqual(keys, [
        { frame: 0, value: 90, transition: 'hold' },
        { seconds: 1, value: 150, transition: 'linear' },
    ]);
    const copy = chain.copy();
    copy.at(1).unset('(r) gamma').setKeys('(r) gamma', keys);
    assert.equal(`${copy}`, `${chain}`);
    assert.equal(`${vireo.chain(chain.text('compact'))}`, `${chain}`);

    const written = chain.settings().replace(/\n/g, '\r\n');
    assert.equal(vireo.chain().addSettings(written, 'look.json').settings(), written);
    const bytes = vireo.chain('Solarize:threshold=77').at(0).bytes();
    assert.equal(vireo.chain('Solarize').at(0).setBytes(bytes).value('threshold'), 77);
    const file = vireo.chain('Levels:(g) gamma=55').at(0).levels();
    assert.equal(vireo.chain().addLevels(file).at(0).value('(g) gamma'), 55);

    const needs = chain.needs();
    assert.deepEqual(needs, { earlierFrames: 8, readsTime: true, depths: [8] });
    assert.ok(vireo.chain('Solarize:mix=0').isIdentity() && !chain.isIdentity({ frame: 9 }));
    const files = readdirSync(path.join(root, 'engine/presets')).filter((name) => name.endsWith('.json'));
    assert.deepEqual(vireo.presets().map(({ name }) => `${name}.json`), files.sort());
});

test('what fails tells why and where, and changes nothing', async () => {
    const chain = vireo.chain('Ghosting');
    const [picture] = clipOf(4, 3, 1);
    const late = { frame: 20, frames: 30 };
    const other = { ...picture, layout: 'bgra' };
    const thrown = new Error('this disk is gone');
    const failures = [
        [() => chain.add('Solarize:größe=1'), { status: 'unknownParameter', offset: 9, parameter: 'größe' }],
        [() => chain.add('Größe'), { status: 'unknownFilter', offset: 0 }],
        [() => chain.add('Levels; Größe'), { status: 'unknownFilter', offset: 8 }],
        [() => chain.at(0).set('mix', 101), { status: 'badValue' }],
        [() => chain.at(0).set('mix', 1.5), { status: 'badValue' }],
        [() => chain.addPreset('v8'), { status: 'unknownPreset' }],
        [() => chain.addSettings('{', 'look.json'), { status: 'badSettings', message: /look\.json/ }],
        [() => chain.at(0).setKeys('mix', []), { status: 'usage' }],
        [() => chain.check({ width: 2, height: 2, depth: 16 }), { status: 'unsupported' }],
        [() => chain.render(picture, { layout: 'hsv' }), { status: 'usage', message: /hsv/ }],
        [() => chain.render(picture, { frame: 0.5 }), { status: 'usage' }],
        [() => chain.render({ ...picture, width: 5 }), { status: 'usage', message: /samples/ }],
        [() => chain.render({ ...picture, data: [...picture.data] }), { status: 'usage', message: /Uint8Array/ }],
        [() => chain.render(picture, { into: clipOf(3, 4, 1)[0] }), { status: 'usage', message: /size/ }],
        [() => chain.render(picture, { ...late, earlier: () => clipOf(3, 4, 1)[0] }), { message: /as large/ }],
        [() => chain.render(picture, { ...late, earlier: () => other }), { message: /layout/ }],
        [() => chain.render(picture, { ...late, earlier: () => null }), { status: 'noFrame' }],
        [() => chain.render(picture, { ...late, isCancelled: () => true }), { status: 'cancelled' }],
    ];
    for (const [work, expected] of failures) assert.throws(work, { name: 'VireoError', ...expected }, String(work));
    const gone = () => {
        throw thrown;
    };
    assert.throws(() => chain.render(picture, { ...late, earlier: gone }), thrown);
    await assert.rejects(loadVireo(new URL('nowhere.wasm', import.meta.url)), { status: 'noModule' });
    assert.equal(`${chain}`, 'Ghosting');

    // A script may render while it is asked.
    const clip = clipOf(4, 3, 21);
    const ghosting = vireo.chain('Ghosting');
    const smeared = (frame) => ghosting.render(clip[frame], { frame, earlier: (number) => clip[number] });
    const results = clip.map((_, number) => smeared(number));
    const [inside, before] = [smeared, (number) => results[number]].map((earlier) =>
        chain.render(picture, { ...late, earlier }));
    assert.deepEqual(inside, before);
    const stream = chain.startStream();
    chain.dispose();
    chain.dispose();
    assert.throws(() => chain.text(), (error) => error instanceof VireoError && /disposed/.test(error.message));
    stream.render(picture);
    stream[Symbol.dispose]();
    assert.throws(() => stream.render(picture), /disposed/);
});

test('a thousand frames are copied once in and once out, and leave nothing behind', () => {
    const [picture] = clipOf(320, 180, 1);
    const chain = vireo.chain('Levels:(rgb) gamma=130; Ghosting; Camera Blur:percent blur=2');
    const stream = chain.startStream({ rate: 25 });
    const into = { ...picture, data: new Uint8Array(picture.data.length) };
    for (let i = 0; i < 20; ++i) stream.render(picture, { into });
    const { set } = Uint8Array.prototype;
    const copies = { in: 0, out: 0 };
    const memory = program.memory.buffer.byteLength;
    Uint8Array.prototype.set = function (source, ...rest) {
        if (source.length > 1000) ++copies[this.buffer === program.memory.buffer ? 'in' : 'out'];
        return set.call(this, source, ...rest);
    };
    try {
        for (let i = 0; i < 1000; ++i) stream.render(picture, { into });
    } finally {
        Uint8Array.prototype.set = set;
    }
    assert.deepEqual(copies, { in: 1000, out: 1000 });
    const before = handedBack;
    for (let i = 0; i < 3000; ++i) {
        const other = vireo.chain().addPreset('vhs');
        assert.throws(() => other.add('Nowhere'));
        assert.equal(other.at(0).text().length + other.at(0).bytes().length, 16);
        other.dispose();
    }
    assert.deepEqual([held.size, handedBack - before], [0, 6000]);
    assert.equal(program.memory.buffer.byteLength, memory);
});

test('its declarations are right, as a strict compiler and Node see them', () => {
    inApp('tsc', '--strict', '--target', 'es2022', '--lib', 'es2022,dom', '--module', 'node16', 'example.mts');
    const [names, ...rest] = JSON.parse(inApp('node', 'example.mjs'));
    assert.deepEqual(names.slice(0, 3), ['Levels', 'Ghosting', 'Solarize']);
    assert.deepEqual(rest, [true, 8, true, 'bgrx', 'function', 'unknownFilter', 'function']);
});

describe('in a browser', () => {
    const text = 'Camera Blur:percent blur=9; Bend:horizontal intensity=20';
    const [{ data, ...size }] = clipOf(40, 30, 1);
    const samples = data.map((sample, i) => (i % 4 === 3 ? 255 : sample));
    const expected = [...vireo.chain(text).render({ ...size, data: samples }).data];
    let browser;
    before(async () => (browser = await launch()));
    after(() => browser.close());

    /** Renders in the page of a folder, which holds main.mjs or what a bundler made of it. */
    async function check(served) {
        const server = await serve(served);
        try {
            const page = await browser.newPage();
            await page.goto(server.url);
            await page.waitForFunction(() => globalThis.rendered);
            const result = await page.evaluate(([chain, picture]) => globalThis.rendered(chain, picture), [
                text,
                { ...size, samples: [...samples] },
            ]);
            assert.deepEqual(result, { isImage: true, page: expected, worker: expected });
            const mirrored = await page.evaluate(() => globalThis.mirrored());
            assert.deepEqual(mirrored, { left: [0, 0, 3, 4], right: [3, 0, 0, 4], state: 'ended' });
        } finally {
            server.close();
        }
    }

    const html = '<!doctype html><script type="module" src="./main.mjs"></script>';

    test('as files, in the page and in a worker', async () => {
        const plain = path.join(folder, 'plain');
        cpSync(installed, path.join(plain, 'vireo'), { recursive: true });
        for (const name of ['main.mjs', 'worker.mjs']) {
            const script = readFileSync(path.join(app, name), 'utf8').replace("'vireo-filters'", "'./vireo/index.mjs'");
            writeFileSync(path.join(plain, name), script);
        }
        writeFileSync(path.join(plain, 'index.html'), html);
        await check(plain);
    });

    test('bundled', async () => {
        writeFileSync(path.join(app, 'index.html'), html);
        await build({ root: app, configFile: false, logLevel: 'error', base: './', worker: { format: 'es' } });
        const assets = readdirSync(path.join(app, 'dist/assets'));
        assert.equal(assets.filter((name) => name.endsWith('.wasm')).length, 1);
        await check(path.join(app, 'dist'));
    });
});
