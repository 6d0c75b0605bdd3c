// SPDX-License-Identifier: MIT
// Looks, two chains side by side, and scopes.
import assert from 'node:assert/strict';
import { test } from 'node:test';

import { histogramOf, levelAt, levels, waveformOf } from '../../../build/web/picture_levels.mjs';
import { shown } from './browser.mjs';
import { cardTitles, chainText, message, runWalks, walk } from './walks.mjs';

const drawn = (page) =>
    page.waitForFunction(() => [...document.querySelectorAll('.looks .tile canvas')].every(({ width }) => width > 100));

/** The mean of a canvas of the stage. */
const meanOf = (page, index) =>
    page.evaluate((at) => {
        const canvas = document.querySelectorAll('.stage canvas')[at];
        const { data } = canvas.getContext('2d').getImageData(0, 0, canvas.width, canvas.height);
        return [0, 1, 2].map(
            (channel) =>
                data.filter((_, i) => i % 4 === channel).reduce((sum, value) => sum + value, 0) / (data.length / 4),
        );
    }, index);

walk(
    'a look is seen, taken, taken back, and kept under a name',
    '#f=Solarize:threshold=0&sample=fruit',
    async (page) => {
        await page.click('.look');
        await drawn(page);
        assert.equal(await page.locator('.looks .tile').count(), 11);
        const different = await page.evaluate(
            () =>
                new Set([...document.querySelectorAll('.looks .tile canvas')].map((canvas) => canvas.toDataURL())).size,
        );
        assert.equal(different, 11);
        await shown(page, () => page.click('.looks .tile:has-text("noir")'));
        assert.ok((await cardTitles(page)).includes('Black & White'));
        assert.match(await message(page), /noir stands in place/);
        const noir = await chainText(page);
        await page.click('.look');
        await page.fill('.save-preset input', 'Mine <b>');
        await page.keyboard.press('Enter');
        await page.waitForSelector('.looks small:text-is("Yours")');
        await page.keyboard.press('Escape');
        await page.click('.undo');
        assert.equal(await chainText(page), 'Solarize:Threshold=0');

        await page.reload();
        await page.waitForSelector('body.ready');
        await page.click('.look');
        await shown(page, () => page.click('.looks .tile:has-text("Mine <b>")'));
        assert.equal(await chainText(page), noir);
        await page.click('.look');
        await page.click('.looks [aria-label="Delete the preset Mine <b>"]');
        assert.equal(await page.locator('.looks .tile').count(), 11);
    },
);

walk('two chains are made and compared', '#f=BlackAndWhite&sample=cutout', async (page) => {
    const other = page.locator('.variants button').nth(1);
    const original = await meanOf(page, 0);
    await shown(page, () => other.click());
    assert.deepEqual(await cardTitles(page), ['Black & White']);
    await shown(page, () => page.uncheck('.card [role=switch]'));
    await shown(page, () => page.selectOption('.compare-with', '1'));
    assert.deepEqual(await page.locator('.tag').allTextContents(), ['A', 'B']);
    const [grey, colours] = [await meanOf(page, 0), await meanOf(page, 1)];
    assert.deepEqual(colours, original);
    assert.ok(grey[0] === grey[1] && grey[1] === grey[2], `not grey: ${grey}`);
    await shown(page, () => page.locator('.variants button').first().click());
    assert.equal(await chainText(page), "'Black & White'");
    await shown(page, () => page.selectOption('.compare-with', '0'));
    assert.deepEqual(await meanOf(page, 0), original);
    for (let i = 0; i < 4 && !(await page.isDisabled('.undo')); ++i) await page.click('.undo');
    assert.ok(await page.isHidden('.compare-with'));
});

walk(
    'the scope follows Levels',
    '#f=Levels:rgbblackoutputlevel=40,rgbwhiteoutputlevel=200&sample=fruit',
    async (page) => {
        const told = async () =>
            Number(/darkest (\d+)/.exec(await page.getAttribute('.scope figure:last-child canvas', 'aria-label'))?.[1]);
        await page.waitForSelector('.scope[data-shown]');
        await page.waitForFunction(() =>
            document.querySelector('.scope figure:last-child canvas').ariaLabel.includes('darkest 4'),
        );
        const before = await told();
        await shown(page, () =>
            page.getByLabel('Black Output Level').and(page.locator('[type=range]')).first().fill('90'),
        );
        await page.waitForFunction(() =>
            document.querySelector('.scope figure:last-child canvas').ariaLabel.includes('darkest 9'),
        );
        assert.ok((await told()) - before > 40);
        assert.match(
            await page.getAttribute('.scope figure:first-child canvas', 'aria-label'),
            /^Histogram, Into the filter: darkest \d,/,
        );
    },
);

test('scopes count what is there', () => {
    const data = Uint8ClampedArray.from([255, 0, 0, 255, 0, 0, 0, 255, 9, 9, 9, 0, 255, 255, 255, 128]);
    const picture = { width: 2, height: 2, data };
    const { counts, pixels } = histogramOf(picture);
    assert.deepEqual(
        [pixels, counts[0][255], counts[0][0], counts[1][0], counts[3][77], counts[0][9]],
        [3, 2, 1, 2, 1, 0],
    );
    assert.deepEqual(
        [0, 0.5, 1 - 1e-9].map((share) => levelAt(counts[3], pixels, share)),
        [0, 77, 255],
    );
    const wave = waveformOf(picture);
    assert.equal(
        wave.reduce((sum, count) => sum + count),
        3,
    );
    assert.deepEqual([wave[(levels - 1 - 77) * 256], wave[128], wave[255 * 256 + 128]], [1, 1, 1]);
});

runWalks('looks');
