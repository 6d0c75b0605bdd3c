// SPDX-License-Identifier: MIT
// The page as an app: without a network, isolated, in newer versions, and given files by the system.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { cpSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, afterEach, before, describe, test } from 'node:test';

import { launch, open, pageFolder, pixels, serve } from './browser.mjs';

const cutOut = readFileSync(path.join(pageFolder, 'samples/cutout.png'));
const folder = mkdtempSync(path.join(tmpdir(), 'vireo-app-'));
const fileOf = (name) => path.join(folder, name);

const kept = (page) => page.evaluate(() => navigator.serviceWorker.ready.then(() => true));

/** Saves frames 30 to 35 of the sample as PNG files, and gives their pixels. */
async function savedFrames(page, name) {
    await page.evaluate(() => delete window.showSaveFilePicker);
    await page.evaluate(() => (location.hash = '#f=Ghosting&sample=clip'));
    await page.waitForSelector('.save-video:not([hidden])');
    await page.click('.save-video');
    await page.selectOption('.export [name=format]', 'png');
    await page.fill('.export [name=first]', '30');
    await page.fill('.export [name=last]', '35');
    const [download] = await Promise.all([page.waitForEvent('download'), page.click('.start')]);
    await download.saveAs(fileOf(`${name}.zip`));
    execFileSync('python3', ['-m', 'zipfile', '-e', `${name}.zip`, name], { cwd: folder });
    return pixels(fileOf(`${name}/clip-vireo-%04d.png`), '-start_number', '30');
}

describe('the app', () => {
    let browser;
    let server;
    const allowed = { serviceWorkers: 'allow' };
    before(async () => {
        browser = await launch();
    });
    afterEach(() => server.close());
    after(async () => {
        await browser.close();
        rmSync(folder, { recursive: true });
    });

    test('it can be installed, works offline, and shares memory there', async () => {
        server = await serve();
        const page = await open(browser, `${server.url}#f=Solarize&sample=cutout`, allowed);
        const client = await page.context().newCDPSession(page);
        const { errors } = await client.send('Page.getAppManifest');
        assert.deepEqual(errors, []);
        const { installabilityErrors } = await client.send('Page.getInstallabilityErrors');
        assert.deepEqual(installabilityErrors.filter(({ errorId }) => errorId !== 'in-incognito'), []);
        const apart = await savedFrames(page, 'apart');
        await kept(page);
        server.close();
        await page.reload();
        await page.waitForSelector('body.ready');
        assert.ok(await page.evaluate(() => crossOriginIsolated));
        const together = await savedFrames(page, 'together');
        assert.ok(together.length > 0 && together.equals(apart));
        assert.deepEqual(page.failures, []);
    });

    test('a newer version takes over with the next visit', async () => {
        const copy = fileOf('copy');
        cpSync(pageFolder, copy, { recursive: true });
        server = await serve(copy);
        const page = await open(browser, `${server.url}#f=Solarize&sample=cutout`, allowed);
        await kept(page);
        await page.reload();
        await page.waitForSelector('body.ready');
        const change = (name, from, to) =>
            writeFileSync(path.join(copy, name), readFileSync(path.join(copy, name), 'utf8').replace(from, to));
        change('page.css', '--page: #f4f4f0', '--page: #123456');
        change('service_worker.mjs', /cacheName = 'vireo-/, "cacheName = 'vireo-next-");
        await page.evaluate(async () => {
            const registration = await navigator.serviceWorker.ready;
            await registration.update();
            while (!registration.waiting) await new Promise((resolve) => setTimeout(resolve, 50));
        });
        const colour = () => page.evaluate(() => getComputedStyle(document.body).backgroundColor);
        assert.equal(await colour(), 'rgb(244, 244, 240)');
        await page.reload();
        await page.waitForFunction(() => getComputedStyle(document.body).backgroundColor === 'rgb(18, 52, 86)');
        await page.waitForSelector('body.ready');
        assert.deepEqual(await page.evaluate(() => caches.keys().then((names) => names.length)), 1);
    });

    test('files that are shared with it or opened with it are shown', async () => {
        server = await serve();
        const page = await open(browser, `${server.url}#f=Solarize&sample=fruit`, allowed);
        await kept(page);
        await page.evaluate(async () => {
            // The system's own way to hand a file over, which a browser without windows has none to start.
            const folder = await navigator.storage.getDirectory();
            const handle = await folder.getFileHandle('handed.png', { create: true });
            const writing = await handle.createWritable();
            await writing.write(await (await fetch('samples/cutout.png')).arrayBuffer());
            await writing.close();
        });
        await page.addInitScript(() => {
            const setConsumer = async (consume) => {
                const folder = await navigator.storage.getDirectory();
                consume({ files: [await folder.getFileHandle('handed.png')] });
            };
            Object.defineProperty(window, 'launchQueue', { value: { setConsumer } });
        });
        await page.reload();
        await page.waitForFunction(() => /handed\.png is open/.test(document.querySelector('.message').textContent));

        const other = await open(browser, `${server.url}#f=Solarize&sample=fruit`, allowed);
        await kept(other);
        await other.reload();
        await other.waitForSelector('body.ready');
        await other.setContent(
            `<form method="post" action="${server.url}?share" enctype="multipart/form-data"><input type="file" name="file"></form>`,
        );
        await other.setInputFiles('input', { name: 'été.png', mimeType: 'image/png', buffer: cutOut });
        await other.evaluate(() => document.querySelector('form').submit());
        await other.waitForFunction(() => /été\.png is open/.test(document.querySelector('.message')?.textContent));
        assert.equal(new URL(other.url()).search, '');
    });
});
