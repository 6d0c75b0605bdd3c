// SPDX-License-Identifier: MIT
// Makes the screenshots of the browser page. Needs the web build, chromium, ffmpeg, and what npm ci installs.
//   node docs/screenshots/browser.mjs [FOLDER]   this folder unless named
import { execFileSync } from 'node:child_process';
import path from 'node:path';

import { launch, open, serve } from '../../tests/bridges/web/browser.mjs';

const folder = process.argv[2] ?? import.meta.dirname;
const desktop = { viewport: { width: 1200, height: 750 } };
const phone = { viewport: { width: 390, height: 780 }, isMobile: true, hasTouch: true };

/** Opens the dialog of all filters, whose pictures come one after another. */
async function addFilter(page) {
    await page.click('.add');
    await page.waitForFunction(() => [...document.querySelectorAll('.tile canvas')].every(({ width }) => width > 100));
}

async function showLooks(page) {
    await page.click('.look');
    await page.waitForFunction(() => [...document.querySelectorAll('.looks canvas')].every(({ width }) => width > 100));
}

/** Half a clip saved. */
async function saveVideo(page) {
    await page.evaluate(() => delete window.showSaveFilePicker);
    await page.click('.save-video');
    await page.click('.export .start');
    await page.waitForFunction(() => document.querySelector('.export progress').value > 0.5);
    await page.click('.export .hold');
    await page.waitForFunction(() => /paused/i.test(document.querySelector('.export output').textContent));
}

const shots = [
    {
        name: 'light',
        address:
            '#f=ColorReplace:similarity=20,targetcolor=%23709250,replacecolor=steelblue&f=AlphaGlow:glow=14,startcolor=gold&sample=cutout',
        ...desktop,
    },
    {
        name: 'dark',
        address: '#f=Levels:rgbgamma=130&f=Ghosting&f=Bend&sample=clip&frame=38',
        ...desktop,
        colorScheme: 'dark',
    },
    {
        name: 'keys',
        address:
            '#f=Levels:rgbgamma=90@0f..smooth..160@45f..110@74f,mix=0@0f..100@20f&f=ColorPass:similarity=20,color=%23d08030@0f..%23405090@60f,from=10f,to=68f&sample=clip&frame=30',
        ...desktop,
        work: (page) => page.focus('.key >> nth=1'),
    },
    {
        name: 'export',
        address: '#f=CameraBlur:percentblur=30&f=Levels:rgbgamma=130&f=CameraView:roll=4&sample=clip&frame=38',
        ...desktop,
        work: saveVideo,
    },
    { name: 'looks', address: '#f=Solarize&sample=fruit', ...desktop, work: showLooks },
    { name: 'filters', address: '#sample=fruit', ...desktop, work: addFilter },
    { name: 'phone', address: '#f=Solarize:threshold=60%&sample=fruit&language=ja', ...phone },
];

/** At most 256 colours, which a page of few colours hardly shows. */
function shrink(file, target) {
    execFileSync('ffmpeg', [
        '-v',
        'error',
        '-y',
        '-i',
        file,
        '-vf',
        'split[a][b];[a]palettegen[p];[b][p]paletteuse=dither=sierra2_4a',
        target,
    ]);
}

const [browser, server] = await Promise.all([launch(), serve()]);
for (const { name, address, work, ...options } of shots) {
    const page = await open(browser, server.url + address, options);
    await work?.(page);
    const file = path.join(folder, `browser-${name}.full.png`);
    await page.screenshot({ path: file });
    shrink(file, path.join(folder, `browser-${name}.png`));
    execFileSync('rm', [file]);
    await page.context().close();
}
await browser.close();
server.close();
