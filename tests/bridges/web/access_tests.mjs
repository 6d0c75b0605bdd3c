// SPDX-License-Identifier: MIT
// The page for those who do not see it, or not well: names, roles and contrast, by axe-core.
import assert from 'node:assert/strict';
import { createRequire } from 'node:module';

import { runWalks, walk } from './walks.mjs';

const axe = createRequire(import.meta.url).resolve('axe-core/axe.min.js');

/** Holds all that shows now to axe-core's rules. */
async function hold(page, what) {
    await page.evaluate(() => document.querySelector('.message').classList.remove('shown')); // fades
    const violations = await page.evaluate(async () => (await globalThis.axe.run()).violations);
    const told = violations.map(
        ({ id, help, nodes }) =>
            `${id}: ${help}\n${nodes.map(({ html, any }) => `  ${html} ${any[0]?.message ?? ''}`).join('\n')}`,
    );
    assert.deepEqual(told, [], what);
}

const address =
    '#f=Solarize:threshold=20@0f..smooth..200@40f,from=5f&off=ColorPass:color=red@0f..blue@9f&f=Levels&sample=clip&frame=9';

async function holdAll(page) {
    await page.addScriptTag({ path: axe });
    await page.focus('.key >> nth=1');
    await hold(page, 'key frames');
    await page.focus('.end');
    for (let closed = 2; closed > 0; --closed) await page.click('.card .title[aria-expanded=false] >> nth=0');
    await hold(page, 'all cards');
    await page.click('.variants button >> nth=1');
    await hold(page, 'two chains');
    for (const [open, dialog] of [
        ['.look', '.looks'],
        ['.add', '.picker'],
    ]) {
        await page.click(open);
        await page.waitForFunction(
            (name) => [...document.querySelectorAll(`${name} canvas`)].every(({ width }) => width > 9),
            dialog,
        );
        await hold(page, dialog);
        await page.keyboard.press('Escape');
    }
    for (const language of ['de', 'ja']) {
        await page.selectOption('.language', language);
        await page.waitForSelector(`html[lang=${language}]`);
        await hold(page, language);
    }
}

walk('axe-core finds nothing in the light', address, holdAll, { colorScheme: 'light' });
walk('axe-core finds nothing in the dark', address, holdAll, { colorScheme: 'dark' });
walk('axe-core finds nothing on a phone', address, holdAll, {
    viewport: { width: 390, height: 844 },
    isMobile: true,
    hasTouch: true,
});

runWalks('accessibility');
