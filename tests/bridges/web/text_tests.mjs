// SPDX-License-Identifier: MIT
// The chain as text: what is linked, saved and handed over, and what the page says of what it cannot read.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readdirSync, readFileSync } from 'node:fs';
import { before, test } from 'node:test';

import { addressOf, parseAddress } from '../../../build/web/address.mjs';
import { parseFilterText, parseSettings, wholeText } from '../../../build/web/chain.mjs';
import { ffmpegLacks, ffmpegText, shellQuoted } from '../../../build/web/commands.mjs';
import { displayText, fromDisplay } from '../../../build/web/display_units.mjs';
import { loadVireo } from '../../../build/web/vireo/index.mjs';

const moment = { frame: 0, rate: 25 };

let engine;
let filters;

before(async () => {
    engine = await loadVireo();
    filters = engine.filters();
});

test('what cannot be read is told in the words of the page and the names of its language', () => {
    const filter = 'Solarisation';
    const said = {
        Sun: ['noFilter', { name: 'Sun' }],
        '': ['noFilter', { name: '' }],
        'Solarize;Ghosting': ['noFilter', { name: 'Solarize;Ghosting' }],
        'Solarize: fro =1s': ['noParameter', { filter, name: 'fro' }],
        'Levels:rgb=1': ['noParameter', { name: 'rgb' }],
        'Solarize:thr=255': ['badValue', { filter, name: 'Schwellenwert', value: '255' }],
        'Solarize:thr=1@5s..2@5s': ['badValue', { filter, value: '1@5s..2@5s' }],
        'Solarize:mix=101': ['badValue', { filter, name: 'mix', value: '101' }],
        'Solarize:thr': ['badPair', { text: 'thr' }],
        'Solarize:thr=1,threshold=2': ['givenTwice', { filter, name: 'Schwellenwert' }],
    };
    const file = (entry) => JSON.stringify({ vireo: 1, filters: [entry] });
    const saidOfFiles = {
        'no JSON': ['badSettings', { name: 'look.json' }],
        '{"vireo": 2, "filters": []}': ['badSettings', { name: 'look.json' }],
        [file({ filter: 'Solarize', colour: 1 })]: ['badSettings', { name: 'look.json' }],
        [file({ filter: 'Sun' })]: ['noFilter', { name: 'Sun' }],
        [file({ filter: 'Solarize', parameters: { Sun: 1 } })]: ['noParameter', { filter, name: 'Sun' }],
        [file({ filter: 'Solarize', mix: '' })]: ['badValue', { filter, name: 'mix', value: '' }],
        [file({ filter: 'Solarize', parameters: { Threshold: 1.5 } })]: ['badValue', { filter, value: '1.5' }],
    };
    const check = (work, typed, [text, values]) =>
        assert.throws(work, (error) => {
            assert.equal(error.text, text, typed);
            assert.deepEqual({ ...error.values, ...values }, error.values, typed);
            return true;
        });
    engine.setLanguage('de');
    for (const [typed, expected] of Object.entries(said)) {
        check(() => parseFilterText(engine, typed), typed, expected);
    }
    for (const [typed, expected] of Object.entries(saidOfFiles)) {
        check(() => parseSettings(engine, 'look.json', typed), typed, expected);
    }
    engine.setLanguage('en');
});

test('a filter is set, keyed, made constant and reset', () => {
    const use = parseFilterText(engine, 'Color Pass:color=#000000@0f..#ff8000@2f,from=1s,mix=50');
    const color = use.filter.parameters.findIndex(({ kind }) => kind === 'colour');
    const original = use.text();
    assert.equal(use.valueAt(color, { frame: 1, rate: 25 }), 0x804000);
    assert.deepEqual([use.isKeyed(color), use.isKeyed('mix'), use.isAnimated()], [true, false, true]);
    assert.throws(() => use.set(color, 'no colour'));
    assert.throws(() => use.set('mix', 101));
    assert.equal(use.text(), original);
    use.set(color, 0x804000);
    use.set('mix', 20);
    assert.equal(use.text(), 'Color Pass:Color=#804000,from=1s,mix=20%');
    use.reset();
    assert.equal(use.text(), 'Color Pass');
    assert.deepEqual([use.from, use.to, use.valueAt('mix', moment), use.isAnimated()], ['', '', 100, false]);
});

test('key frames that are out of order at a rate are told when they render, and shown all the same', () => {
    const use = parseFilterText(engine, 'Solarize:threshold=7@30f..9@1s');
    const chain = engine.chain(use.text());
    const picture = { width: 1, height: 1, data: new Uint8ClampedArray(4) };
    assert.equal(chain.needs().readsTime, true);
    chain.render(picture, { rate: 50 });
    assert.throws(() => chain.render(picture, { rate: 25 }), /1s does not come after 30f/);
    assert.equal(use.valueAt(0, { frame: 30, rate: 50 }), 7);
    assert.equal(use.valueAt(0, { frame: 30, rate: 25 }), use.filter.parameters[0].default);
});

test('settings files become addresses', () => {
    const parameters = { Similarity: 20, 'Target Color': '#ff0000', 'Solid Colors': true };
    const bend = { filter: 'Bend', parameters: { 'Horizontal Rate': '3@0s..smooth..9@2s' } };
    const grey = { filter: 'Black & White', from: '1:02.5', to: '90f' };
    const file = { vireo: 1, filters: [{ filter: 'Color Replace', parameters, mix: '50%' }, grey, bend] };
    const written = `${JSON.stringify(file, null, 2)}\n`;
    const uses = parseSettings(engine, 'look.json', written);
    assert.equal(engine.chain(wholeText(uses)).settings(), written);
    const address =
        '#f=ColorReplace:Similarity=20,TargetColor=%23ff0000,SolidColors=true,mix=50&f=BlackAndWhite:from=1:02.5,to=90f&f=Bend:HorizontalRate=3@0s..smooth..9@2s';
    assert.equal(addressOf({ chain: uses, sample: null, frame: 0 }), address);
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
    for (const address of typed) assert.equal(addressOf(parseAddress(address, engine)), written);
    for (const address of ['#Solarize', '#f=', '#frame=-1', '#x=1', '#f=Solarize&f=Solarize:thr=%']) {
        assert.throws(() => parseAddress(address, engine), { text: /^(no|bad)/ }, address);
    }
});

test('quoted words come through a shell as they are', () => {
    for (const word of ['plain.png', "it's", 'a b', '$HOME`x`', 'x;y&z', '*?[a]', '\\n"', 'Größe', '#f', '~']) {
        assert.equal(execFileSync('sh', ['-c', `printf %s ${shellQuoted(word)}`]).toString(), word);
    }
});

test('what is switched off is not handed over, and FFmpeg is told a known clip', () => {
    const { chain } = parseAddress('#off=Ghosting&f=HorizontalHold:offset=1048576&f=Solarize', engine);
    assert.equal(wholeText(chain), 'Horizontal Hold:Offset=1048576; Solarize');
    assert.equal(ffmpegText(chain, null, moment), 'frei0r=vireo_horizontal_hold:1,frei0r=vireo_solarize');
    assert.match(
        ffmpegText(chain, { rate: 25, frames: 75 }, moment),
        /^frei0r=vireo_horizontal_hold:1\|0\.5\d*\|\|s\|75,/,
    );
    const lacking = ['Solarize:thr=1@0s', 'Solarize:mix=99', 'Solarize:from=1s'];
    for (const text of ['Solarize:thr=1', ...lacking]) {
        assert.equal(ffmpegLacks([parseFilterText(engine, text)]), lacking.includes(text), text);
    }
});

test("the filters' pages link to their filters", () => {
    const folder = new URL('../../../docs/filters/', import.meta.url);
    const pages = readdirSync(folder).filter((name) => name.endsWith('.md') && name !== 'README.md');
    assert.equal(pages.length, filters.length);
    for (const page of pages) {
        const text = readFileSync(new URL(page, folder), 'utf8');
        const { chain } = parseAddress(/`index\.html(#[^`]+)`/.exec(text)[1], engine);
        assert.deepEqual(
            chain.map((use) => use.filter.englishName),
            [/^# (.+)$/m.exec(text)[1]],
        );
    }
});
