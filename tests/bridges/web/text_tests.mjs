// SPDX-License-Identifier: MIT
// The chain as text: what is typed, linked, saved and handed over.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readdirSync, readFileSync } from 'node:fs';
import { before, test } from 'node:test';

import { addressOf, parseAddress } from '../../../bridges/web/address.mjs';
import { displayText, fromDisplay, parseFilterText } from '../../../bridges/web/chain.mjs';
import { ffmpegText, settingsText, shellQuoted } from '../../../bridges/web/hand_over.mjs';
import { loadEngine } from '../../../build/web/engine.mjs';

let filters;

before(async () => {
    filters = (await loadEngine()).filters();
});

const textOf = (typed) => parseFilterText(filters, typed).text();

test('filters and parameters are taken by any name that is clear', () => {
    const same = {
        solarize: 'Solarize',
        ' SOL ': 'Solarize',
        10049: 'Solarize',
        'QULN Convolution Kernel New': 'Convolution Kernel',
        LensDistort: 'Lens Distortion',
        'color balance rgb:red=1': 'Color Balance (RGB):Red=1',
        'levels: rgb gamma = 7 , (g) gamma=8': 'Levels:(RGB) Gamma=7,(G) Gamma=8',
        'Color Replace:target=rgb(1, 2, 3),sim=100%,solid=YES':
            'Color Replace:Target Color=#010203,Similarity=127,Solid Colors=true',
        'bend:mix=30,to=1:02:03.5,from=12f,fill=#ABCDEF': 'Bend:Fill Color=#abcdef,from=12f,to=1:02:03.5,mix=30%',
        'horizontal hold:offset=-65536': 'Horizontal Hold:Offset=-65536',
    };
    for (const [typed, text] of Object.entries(same)) assert.equal(textOf(typed), text);
});

test('what is unclear or out of range is refused', () => {
    const refused = [
        'Sun',
        'color',
        '',
        'Solarize:thr',
        'Solarize:=1',
        'Solarize:thr=',
        'Solarize:thr=255',
        'Solarize:thr=1.5',
        'Solarize:thr=101%',
        'Camera View:zoom=10%',
        'Levels:black=1',
        'Levels:rgb black=1',
        'Color Pass:color=#12345',
        'Color Pass:color=rgb(1,2,256)',
        'Color Pass:rev=maybe',
        'Solarize:mix=101',
        'Solarize:from=5x',
        'Solarize:thr=1@5s..2@5s',
        'Solarize:thr=1@5s..2',
        'Solarize:fro=1s',
    ];
    for (const typed of refused)
        assert.throws(() => textOf(typed), { name: 'Error', text: /^(no|bad)/ }, `${typed} is taken`);
});

test('key frames hold, go straight or ease, by seconds or frames, colours by channel', () => {
    const cases = [
        ['Solarize:thr=0@0s..254@5s', 25, { 0: 0, 62: 126, 63: 128, 125: 254, 900: 254 }],
        [
            'Solarize:thr=10@10f..hold..20@20f..smooth..120@30f',
            25,
            { 9: 10, 19: 10, 20: 20, 22: 30, 25: 70, 28: 110, 30: 120 },
        ],
        ['Color Pass:color=#000000@0f..#ff8000@2f', 25, { 1: 0x804000 }],
        ['Horizontal Hold:offset=-5@0f..0@2f', 25, { 1: -2 }],
    ];
    for (const [typed, rate, values] of cases) {
        const use = parseFilterText(filters, typed);
        const [index] = use.assigned.keys();
        for (const [frame, value] of Object.entries(values)) {
            assert.equal(use.valueAt(index, { frame: Number(frame), rate }), value, `${typed} at ${frame}`);
        }
    }
});

test('shown numbers lead back to each stored value', () => {
    for (const parameter of filters.flatMap((filter) => filter.parameters).filter(({ kind }) => kind === 'number')) {
        for (const share of [0, 0.123, 0.5, 0.77, 1]) {
            const value = Math.floor(parameter.minimum + share * (parameter.maximum - parameter.minimum));
            assert.equal(fromDisplay(parameter, Number(displayText(parameter, value))), value, parameter.name);
        }
    }
});

test('addresses may be written by hand, escaped or not', () => {
    const written =
        '#f=BlackAndWhite&off=Solarize:Threshold=152,mix=50&f=ColorPass:Color=%23ff0000&sample=clip&frame=7';
    const typed = [
        written,
        'f=Black & White&off=Solarize:threshold=60%,mix=50%&f=Color Pass:color=#ff0000&frame=7&sample=clip',
        '#f=Black%20%26%20White&off=Solarize%3Athreshold%3D60%25%2Cmix%3D50&f=Color%20Pass:color=rgb(255,0,0)&sample=clip&frame=7&language=ko',
    ];
    for (const address of typed) assert.equal(addressOf(parseAddress(address, filters)), written);
    for (const address of ['#Solarize', '#f=', '#frame=-1', '#x=1', '#f=Solarize&f=Solarize:thr=%']) {
        assert.throws(() => parseAddress(address, filters), { text: /^(no|bad)/ }, address);
    }
});

test('quoted words come through a shell as they are', () => {
    for (const word of ['plain.png', "it's", 'a b', '$HOME`x`', 'x;y&z', '*?[a]', '\\n"', 'Größe', '#f', '~']) {
        assert.equal(execFileSync('sh', ['-c', `printf %s ${shellQuoted(word)}`]).toString(), word);
    }
});

test('what is switched off is not handed over, and FFmpeg is told a known clip', () => {
    const { chain } = parseAddress('#off=Ghosting&f=HorizontalHold:offset=1048576&f=Solarize', filters);
    assert.deepEqual(
        JSON.parse(settingsText(chain)).filters.map(({ filter }) => filter),
        ['Horizontal Hold', 'Solarize'],
    );
    const moment = { frame: 0, rate: 25 };
    assert.equal(ffmpegText(chain, null, moment), 'frei0r=vireo_horizontal_hold:1,frei0r=vireo_solarize');
    assert.match(
        ffmpegText(chain, { rate: 25, frames: 75 }, moment),
        /^frei0r=vireo_horizontal_hold:1\|0\.5\d*\|25\|ms\|75,/,
    );
});

test("the filters' pages link to their filters", () => {
    const folder = new URL('../../../docs/filters/', import.meta.url);
    const pages = readdirSync(folder).filter((name) => name.endsWith('.md') && name !== 'README.md');
    assert.equal(pages.length, filters.length);
    for (const page of pages) {
        const text = readFileSync(new URL(page, folder), 'utf8');
        const { chain } = parseAddress(/`index\.html(#[^`]+)`/.exec(text)[1], filters);
        assert.deepEqual(
            chain.map((use) => use.filter.englishName),
            [/^# (.+)$/m.exec(text)[1]],
        );
    }
});
