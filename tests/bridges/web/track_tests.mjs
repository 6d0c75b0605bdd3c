// SPDX-License-Identifier: MIT
// Key frames under the picture: set, moved, copied and taken away by mouse, touch and keyboard, and back again.
import assert from 'node:assert/strict';
import { readFileSync, writeFileSync } from 'node:fs';
import { test } from 'node:test';

import { frameOf, indexAt, snapped, withKey, withMoved } from '../../../build/web/keys.mjs';
import { History } from '../../../build/web/history.mjs';
import { downloaded, handedOver, pageFolder, shown } from './browser.mjs';
import { chainText, fileOf, run, runWalks, walk } from './walks.mjs';

/** A lane by its name. */
const lane = (page, name) => page.locator(`.lane[aria-label="${name}"]`);

/** Where a frame of the sample clip is in a lane. */
async function placeOf(page, name, frame) {
    const box = await lane(page, name).boundingBox();
    return { x: box.x + (frame / 74) * box.width, y: box.y + box.height / 2 };
}

/** The middle of the key at a frame. */
async function keyAt(page, name, frame) {
    const box = await lane(page, name).locator(`.key[aria-valuenow="${frame}"]`).boundingBox();
    return { x: box.x + box.width / 2, y: box.y + box.height / 2 };
}

async function drag(page, from, to) {
    await page.mouse.move(from.x, from.y);
    await page.mouse.down();
    await page.mouse.move(to.x, to.y, { steps: 5 });
    await page.mouse.up();
}

const threshold = 'Solarize: Threshold';

walk('key frames by mouse', '#f=Solarize:threshold=100&sample=clip', async (page) => {
    await page.click('.keys');
    await page.locator('.scrub').fill('10');
    const mark = page.locator('.mark').first();
    await mark.click();
    assert.equal(await chainText(page), 'Solarize:Threshold=100@10f');
    const later = await placeOf(page, threshold, 50);
    await page.mouse.dblclick(later.x, later.y);
    assert.equal(await chainText(page), 'Solarize:Threshold=100@10f..100@50f');

    const key = await keyAt(page, threshold, 50);
    await drag(page, key, { x: key.x + 2, y: key.y - 80 }); // half of all values
    assert.match(await chainText(page), /^Solarize:Threshold=100@10f\.\.22[678]@50f$/);
    await page.fill('.key-editor [data-part=value]', '40');
    await page.keyboard.press('Enter');
    await page.selectOption('.key-editor .transition', 'hold');
    await drag(page, await keyAt(page, threshold, 50), await placeOf(page, threshold, 30.2));
    assert.equal(await chainText(page), 'Solarize:Threshold=100@10f..102@30f');
    await drag(page, await keyAt(page, threshold, 30), await placeOf(page, threshold, 3)); // past the other
    assert.equal(await chainText(page), 'Solarize:Threshold=102@3f..hold..100@10f');

    await page.locator('.scrub').fill('60');
    await page.click('.key-editor [data-part=copy]');
    await page.click('.key-editor [data-part=paste]');
    assert.equal(await chainText(page), 'Solarize:Threshold=102@3f..hold..100@10f..102@60f');

    const mix = await placeOf(page, 'Solarize: Mix', 20);
    await page.mouse.dblclick(mix.x, mix.y);
    await page.fill('.key-editor [data-part=value]', '0');
    await page.keyboard.press('Enter');
    const near = await placeOf(page, 'Solarize: Mix', 59.7);
    await drag(page, await keyAt(page, 'Solarize: Mix', 20), near); // snaps to the other track's
    assert.match(await chainText(page), /mix=0%@60f$/);
    await drag(
        page,
        await placeOf(page, 'Solarize: when it works', 0),
        await placeOf(page, 'Solarize: when it works', 5),
    );
    assert.match(await chainText(page), /,from=5f,mix=0%@60f$/);
    await page.locator('.end.to').focus();
    await page.fill('.key-editor [data-part=to]', '2.5s');
    await page.keyboard.press('Enter');
    assert.match(await chainText(page), /,from=5f,to=2\.5s,/);
});

walk(
    'key frames by keyboard, and all of it back and forth again',
    '#f=Solarize:threshold=20@0f..200@1.6s..90@60f&f=ColorPass&sample=clip&frame=70',
    async (page) => {
        const first = async () => (await chainText(page)).split(" 'Color")[0];
        const states = [await first()];
        const press = async (keys, expected) => {
            for (const key of keys) await page.keyboard.press(key);
            states.push(
                await page.evaluate(
                    () => document.querySelector('.output').textContent.split('-f ')[1].split(' \\')[0],
                ),
            );
            assert.equal(states.at(-1), expected);
        };
        await page.focus('.key >> nth=1');
        await press(['Shift+ArrowLeft'], 'Solarize:Threshold=20@0f..200@1.2s..90@60f');
        await press(['ArrowLeft'], 'Solarize:Threshold=20@0f..200@1.16s..90@60f');
        await press(['s'], 'Solarize:Threshold=20@0f..200@1.16s..smooth..90@60f');
        await press(['ArrowDown'], 'Solarize:Threshold=20@0f..197@1.16s..smooth..90@60f');
        await press(['Control+c', 'Control+v'], 'Solarize:Threshold=20@0f..197@1.16s..smooth..90@60f..197@70f');
        await press(['Home'], 'Solarize:Threshold=197@0f..smooth..197@1.16s..smooth..90@60f');
        await press(['Delete'], 'Solarize:Threshold=197@1.16s..smooth..90@60f');
        for (const state of states.slice(0, -1).toReversed()) {
            await page.keyboard.press('Control+z');
            assert.equal(await first(), state);
        }
        for (const state of states.slice(1)) {
            await page.keyboard.press('Control+Shift+z');
            assert.equal(await first(), state);
        }
    },
);

walk(
    'key frames by touch',
    '#f=Solarize:threshold=0@10f..200@50f&sample=clip',
    async (page) => {
        const from = await keyAt(page, threshold, 50);
        const to = await placeOf(page, threshold, 40);
        const session = await page.context().newCDPSession(page);
        const touch = (type, touchPoints) => session.send('Input.dispatchTouchEvent', { type, touchPoints });
        await touch('touchStart', [from]);
        for (const share of [0.3, 0.6, 1])
            await touch('touchMove', [{ x: from.x + share * (to.x - from.x), y: from.y }]);
        await touch('touchEnd', []);
        assert.equal(await chainText(page), 'Solarize:Threshold=0@10f..200@40f');
        const handed = (text) =>
            // a tap's click comes a little later
            page.waitForFunction((part) => document.querySelector('.output').textContent.includes(part), `=${text}`);
        await page.locator('.mark').first().tap();
        await handed('0@0f..0@10f..200@40f');
        await page.locator('.undo').tap();
        await handed('0@10f..200@40f');
    },
    { viewport: { width: 390, height: 844 }, isMobile: true, hasTouch: true },
);

walk(
    'a slider moves a value that has key frames at the frame on show',
    '#f=Solarize:threshold=0@0f..100@50f,mix=50&sample=clip&frame=25',
    async (page) => {
        await page.fill('.number input[type=number] >> nth=0', '80');
        await page.keyboard.press('Enter');
        assert.equal(await chainText(page), 'Solarize:Threshold=0@0f..203@25f..100@50f,mix=50%');
        await page.click('.keyed button >> nth=0');
        assert.equal(await chainText(page), 'Solarize:Threshold=203,mix=50%');
        await page.click('.undo');
        await page.click('.undo');
        assert.equal(await chainText(page), 'Solarize:Threshold=0@0f..100@50f,mix=50%');
        assert.ok(await page.isDisabled('.undo'));
        await page.click('.redo');
        assert.equal(await chainText(page), 'Solarize:Threshold=0@0f..203@25f..100@50f,mix=50%');
    },
);

walk('a clip that plays stops for a key frame', '#f=Solarize:threshold=0@0f..100@70f&sample=clip', async (page) => {
    await page.click('.play');
    await page.waitForFunction(() => Number(document.querySelector('.scrub').value) > 2);
    await page.locator('.number input[type=range]').first().fill('200');
    assert.equal(await page.getAttribute('.play', 'title'), 'Play');
    const frame = await page.inputValue('.scrub');
    assert.equal(await chainText(page), `Solarize:Threshold=0@0f..200@${frame}f..100@70f`);
});

walk(
    'the command line writes what the page wrote',
    '#f=ColorReplace:targetcolor=%23203040@0s..hold..%23ff8000@1.5s..red@70f,solidcolors=on,mix=0@0f..smooth..100@1:00&f=Bend:from=0:01.2,to=60f,horizontalrate=3@4f&sample=clip',
    async (page) => {
        await page.focus('.key >> nth=0');
        await page.keyboard.press('ArrowRight');
        await page.click('#tab-settings');
        const { bytes } = await downloaded(page, '.take-along .download');
        const command = await handedOver(page, 'command');
        writeFileSync(fileOf(page, 'look.json'), bytes);
        await run(page, 'ffmpeg -v error -f lavfi -i color=gray:32x24:r=25:d=0.2 clip.mp4');
        await run(
            page,
            `${command} --quiet --save-settings a.json; vireo render clip.mp4 b.mp4 --settings look.json --quiet --save-settings b.json`,
        );
        for (const name of ['a.json', 'b.json'])
            assert.equal(readFileSync(fileOf(page, name), 'utf8'), bytes.toString());
        const link = await handedOver(page, 'link');
        await page.evaluate((hash) => (location.hash = hash), '#f=Solarize');
        await page.waitForFunction(() => document.querySelectorAll('.card').length === 1);
        await shown(page, () => page.evaluate((hash) => (location.hash = hash), new URL(link).hash));
        assert.equal(await handedOver(page, 'command'), command);
    },
);

walk(
    'the single file has key frames and looks too',
    `file://${pageFolder}/vireo.html#f=Solarize&sample=cutout`,
    async (page) => {
        await page.click('.keys');
        await page.locator('.mark').first().click();
        assert.match(await chainText(page), /^Solarize:Threshold=\d+@0f$/);
        await page.click('.look');
        await shown(page, () => page.click('.looks .tile:has-text("vhs")'));
        await page.keyboard.press('Control+z');
        await page.keyboard.press('Control+z');
        assert.equal(await chainText(page), 'Solarize');
    },
);

test('keys keep their kind of time, take the place of what is there, and snap', () => {
    const keys = [
        { seconds: 0, value: 1, transition: 'smooth' },
        { seconds: 2, value: 5, transition: 'linear' },
    ];
    const more = withKey(keys, { value: 3 }, 30, 29.97);
    assert.deepEqual(more[1], { seconds: 1.001001, value: 3, transition: 'smooth' });
    assert.ok(Math.abs(frameOf(more[1], 29.97) - 30) < 1e-4);
    assert.equal(indexAt(more, 30, 29.97), 1);
    assert.deepEqual(
        withKey(more, { value: 4 }, 30, 29.97).map(({ value }) => value),
        [1, 4, 5],
    );
    assert.deepEqual(
        withMoved(more, 0, 60, 29.97).map(({ value }) => value),
        [3, 1],
    );
    assert.deepEqual([snapped(9.6, [12], 2), snapped(10.4, [12], 2), snapped(5, [], 2)], [10, 12, 5]);
});

test('what a hand does in one go is one step', () => {
    const history = new History();
    history.record('a');
    history.record('b', { number: 1, isHeld: true }, 0);
    history.record('c', { number: 1, isHeld: true }, 5000);
    history.record('d', { number: 2, isHeld: false }, 5100);
    history.record('e', { number: 2, isHeld: false }, 7100);
    assert.deepEqual([history.undo(), history.undo(), history.undo(), history.undo()], ['d', 'c', 'a', undefined]);
    assert.equal(history.redo(), 'c');
    history.record('f');
    assert.deepEqual([history.canRedo, history.undo()], [false, 'c']);
});

runWalks('key frames');
