// SPDX-License-Identifier: MIT
// Times the browser page: from a slider's move until its result stands in the page's canvas. Needs the web build,
// chromium, ffmpeg, and what npm ci installs. Prints a table for docs/performance.md.
//   node bench/browser_latency.mjs
import { execFileSync } from 'node:child_process';
import path from 'node:path';

import { drop, launch, open, pageFolder, serve, shown } from '../tests/bridges/web/browser.mjs';

const moves = 60;
const fullRuns = 5;

/** Filters with the parameter that moves; the first group computes each pixel from itself alone. */
const pointwise = [
    'Solarize:Threshold',
    'Levels:RGBGamma',
    'ColorBalance:Red',
    'GammaCorrection:Gamma',
    'ColorPass:Similarity',
    'ColorReplace:Similarity',
    'Extract:Softness',
];
const others = [
    'EdgeFeather:Amount',
    'ConvolutionKernel:Offset',
    'Replicate:Count',
    'LensDistortion:Curvature',
    'CameraView:Roll',
    'Bend:HorizontalIntensity',
    'AlphaGlow:Glow',
    'CameraBlur:PercentBlur',
];

const quantile = (values, share) => values.toSorted((a, b) => a - b)[Math.floor(share * (values.length - 1))];
const shownTime = (value) => value.toFixed(1);

/** Runs in the page: moves the slider `count` times and gives the milliseconds until each result of a kind is shown. */
async function timeMoves({ name, count, isPreview }) {
    const compact = (text) => text.replace(/[\s()]/g, '').toLowerCase();
    const labels = () => [...document.querySelectorAll('.number label')];
    const find = () => labels().find((node) => compact(node.textContent) === compact(name.replace(/^RGB/, '')));
    while (!find()) await new Promise((resolve) => requestAnimationFrame(resolve));
    const slider = find().control;
    const span = slider.max - slider.min;
    const times = [];
    for (let i = 0; i < count; ++i) {
        const share = 0.3 + (0.4 * (i % 20)) / 20;
        await new Promise((resolve) => requestAnimationFrame(resolve));
        const begin = performance.now();
        const done = new Promise((resolve) => {
            const listener = ({ detail }) => {
                if (detail.isPreview !== isPreview) return;
                document.removeEventListener('shown', listener);
                resolve();
            };
            document.addEventListener('shown', listener);
        });
        slider.value = Number(slider.min) + Math.round(share * span);
        slider.dispatchEvent(new Event('input', { bubbles: true }));
        await done;
        times.push(performance.now() - begin);
    }
    return times;
}

const picture = execFileSync(
    'ffmpeg',
    [
        '-v',
        'error',
        '-i',
        path.join(pageFolder, 'samples/fruit.jpg'),
        '-vf',
        'scale=1920:1080',
        '-c:v',
        'png',
        '-f',
        'image2pipe',
        '-',
    ],
    { maxBuffer: 1 << 28 },
);
const [browser, server] = await Promise.all([launch(), serve()]);
const page = await open(browser, server.url);
await shown(page, () => drop(page, 'picture.png', 'image/png', picture));
console.log('| Moved | preview, ms | 95 % below | whole picture, ms |\n|---|---|---|---|');
for (const moved of [...pointwise, ...others]) {
    const [filter, name] = moved.split(':');
    await shown(page, () => page.evaluate((hash) => (location.hash = hash), `#f=${filter}`));
    await page.evaluate(timeMoves, { name, count: 10, isPreview: true });
    const previews = await page.evaluate(timeMoves, { name, count: moves, isPreview: true });
    const wholes = await page.evaluate(timeMoves, { name, count: fullRuns, isPreview: false });
    const rest = 150; // what the page waits before it renders the whole picture
    console.log(
        `| ${filter} | ${shownTime(quantile(previews, 0.5))} | ${shownTime(quantile(previews, 0.95))} | ${shownTime(quantile(wholes, 0.5) - rest)} |`,
    );
}
await browser.close();
server.close();
