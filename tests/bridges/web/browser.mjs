// SPDX-License-Identifier: MIT
// The built page in a real browser, for tests and measurements.
import { execFileSync } from 'node:child_process';
import { createReadStream, existsSync } from 'node:fs';
import { readFile } from 'node:fs/promises';
import { createServer } from 'node:http';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

import { chromium } from 'playwright-core';

export const root = fileURLToPath(new URL('../../..', import.meta.url));
export const pageFolder = path.join(root, 'build/web');

const arguments_ = [
    '--headless',
    '--no-sandbox',
    '--disable-gpu',
    '--disable-quic',
    '--no-first-run',
    '--disable-background-networking',
    '--disable-component-update',
    '--disable-sync',
    '--use-fake-ui-for-media-stream',
    '--use-fake-device-for-media-stream',
];

const types = {
    '.html': 'text/html',
    '.mjs': 'text/javascript',
    '.js': 'text/javascript',
    '.css': 'text/css',
    '.wasm': 'application/wasm',
    '.svg': 'image/svg+xml',
    '.webmanifest': 'application/manifest+json',
};

/** Serves the built page, or another folder, as any static server would. */
export async function serve(folder = pageFolder) {
    const server = createServer((request, response) => {
        const name = decodeURIComponent(new URL(request.url, 'http://localhost').pathname).slice(1) || 'index.html';
        const file = path.join(folder, name);
        if (!file.startsWith(folder) || !existsSync(file)) {
            response.writeHead(404).end();
            return;
        }
        response.writeHead(200, { 'Content-Type': types[path.extname(file)] ?? 'application/octet-stream' });
        createReadStream(file).pipe(response);
    });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    return { url: `http://127.0.0.1:${server.address().port}/`, close: () => (server.close(), server.closeAllConnections()) };
}

export const launch = () => chromium.launch({ executablePath: '/usr/bin/chromium', args: arguments_ });

/** Opens the page at an address and waits until it is ready and rests at full size. Any error of a script fails. */
export async function open(browser, url, options = {}) {
    const usual = { viewport: { width: 1360, height: 820 }, locale: 'en-US', serviceWorkers: 'block' };
    const context = await browser.newContext({ ...usual, ...options });
    const page = await context.newPage();
    page.on('pageerror', (error) => page.failures.push(error.message));
    return visit(page, url);
}

/** The same in a page that is open already, which takes half the time. */
export async function visit(page, url) {
    page.failures = [];
    await page.goto('about:blank');
    await page.goto(url);
    await page.waitForSelector('body.ready');
    await rest(page);
    return page;
}

/** Waits until what was asked for is shown at full size. */
export const rest = (page) => page.waitForSelector('.stage[data-shown=full]');

/** Does something and waits until its result is shown at full size. */
export async function shown(page, work) {
    await page.evaluate(() => delete document.querySelector('.stage').dataset.shown);
    await work();
    await rest(page);
}

/** What a drop or the clipboard brings: one file. */
export const transferOf = (page, name, type, bytes) =>
    page.evaluateHandle(
        ([fileName, fileType, base64]) => {
            const content = Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));
            const made = new DataTransfer();
            made.items.add(new File([content], fileName, { type: fileType }));
            return made;
        },
        [name, type, Buffer.from(bytes).toString('base64')],
    );

/** Drops a file on the page. */
export async function drop(page, name, type, bytes) {
    await page.dispatchEvent('body', 'drop', { dataTransfer: await transferOf(page, name, type, bytes) });
}

/** The bytes that a click downloads, and their name. */
export async function downloaded(page, selector) {
    const [download] = await Promise.all([page.waitForEvent('download'), page.click(selector)]);
    return { name: download.suggestedFilename(), bytes: await readFile(await download.path()) };
}

/** What a tab of the hand-over holds. */
export async function handedOver(page, kind) {
    await page.click(`#tab-${kind}`);
    return page.textContent('.output');
}

/** The pixels of a picture file as RGBA, or of several. */
export const pixels = (file, ...options) =>
    execFileSync('ffmpeg', ['-v', 'error', ...options, '-i', file, '-f', 'rawvideo', '-pix_fmt', 'rgba', '-'], {
        maxBuffer: 1 << 28,
    });
