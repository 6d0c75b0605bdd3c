// SPDX-License-Identifier: MIT
// Times the browser page's Save video with one worker and with one a core. Needs the web build, chromium, ffmpeg, and
// what npm ci installs. Prints a table for docs/performance.md.
//   node bench/browser_export.mjs
import { execFileSync } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { cpus, tmpdir } from 'node:os';
import path from 'node:path';

import { launch, open, pageFolder, serve, shown } from '../tests/bridges/web/browser.mjs';

const frames = 50;
const runs = 3;
const chains = {
    'Camera View, Lens Distortion, Camera Blur': 'f=CameraView:roll=5&f=LensDistortion&f=CameraBlur:percentblur=20',
    Solarize: 'f=Solarize',
};
const formats = { vp9: 'VP9', png: 'PNG files' };

const folder = mkdtempSync(path.join(tmpdir(), 'vireo-bench-'));
const clip = path.join(folder, 'clip.mp4');
const sample = ['-i', path.join(pageFolder, 'samples/clip.mp4'), '-vf', 'scale=1920:1080', '-frames:v', frames];
execFileSync('ffmpeg', ['-v', 'error', ...sample, '-c:v', 'libx264', '-preset', 'ultrafast', clip]);

const median = (values) => values.toSorted((a, b) => a - b)[values.length >> 1];

/** The seconds from the button until the file is there. */
async function timeExport(page, format, workers) {
    await page.evaluate((cores) => {
        Object.defineProperty(navigator, 'hardwareConcurrency', { get: () => cores, configurable: true });
    }, workers);
    await page.click('.save-video');
    await page.selectOption('.export [name=format]', format);
    await page.waitForSelector('.export .start:enabled');
    const begin = performance.now();
    await Promise.all([page.waitForEvent('download', { timeout: 300_000 }), page.click('.start')]);
    const seconds = (performance.now() - begin) / 1000;
    await page.waitForSelector('.export', { state: 'hidden' });
    return seconds;
}

const [browser, server] = await Promise.all([launch(), serve()]);
const page = await open(browser, server.url);
await page.evaluate(() => delete window.showSaveFilePicker);
await shown(page, () => page.setInputFiles('.file', clip));
console.log(`| Chain | To | One worker, frames a second | ${cpus().length} workers | Ratio |\n|---|---|---|---|---|`);
for (const [name, chain] of Object.entries(chains)) {
    await shown(page, () => page.evaluate((hash) => (location.hash = hash), `#${chain}`));
    for (const [format, written] of Object.entries(formats)) {
        const seconds = { one: [], all: [] };
        for (let i = 0; i < runs; ++i) {
            seconds.one.push(await timeExport(page, format, 1));
            seconds.all.push(await timeExport(page, format, cpus().length));
        }
        const [one, all] = [median(seconds.one), median(seconds.all)];
        console.log(
            `| ${name} | ${written} | ${(frames / one).toFixed(1)} | ${(frames / all).toFixed(1)} | ${(one / all).toFixed(2)} |`,
        );
    }
}
await browser.close();
server.close();
rmSync(folder, { recursive: true });
