// SPDX-License-Identifier: MIT
// Walks through the page: what people do, done in a browser.
import assert from 'node:assert/strict';
import { execFile } from 'node:child_process';
import { mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';
import { promisify } from 'node:util';

import { handedOver, launch, open, root, serve, visit } from './browser.mjs';

const bin = path.join(root, 'build/linux/bin');

const walks = [];

/** A test with a page and a folder of its own; `work(page)` begins at an address. A script that failed fails the test. */
export function walk(name, address, work, options) {
    walks.push({ name, address, work, options });
}

export const fileOf = (page, name) => path.join(page.folder, name);

/** Runs a command that the page handed over, in the page's folder. */
export const run = promisify((page, command, done) => {
    const environment = {
        ...process.env,
        PATH: `${bin}:${process.env.PATH}`,
        FREI0R_PATH: path.join(bin, '../frei0r-1'),
    };
    execFile('sh', ['-ec', command], { cwd: page.folder, env: environment }, done);
});

export const message = (page) => page.textContent('.message');
export const cardTitles = (page) => page.locator('.card .title').allTextContents();
export const chainText = async (page) => (await handedOver(page, 'command')).split(' \\\n    -f ').slice(1).join(' ');

/** Does all walks, several at once. */
export function runWalks(title) {
    describe(title, { concurrency: 2 }, () => {
        let browser;
        let server;
        const idle = []; // pages of walks that ended well and asked for nothing of their own
        before(async () => {
            [browser, server] = await Promise.all([launch(), serve()]);
        });
        after(async () => {
            await browser.close();
            server.close();
        });
        for (const { name, address, work, options } of walks) {
            test(name, async () => {
                const url = address.startsWith('file:') ? address : server.url + address;
                const isUsual = options === undefined && !address.startsWith('file:');
                const known = isUsual ? idle.pop() : undefined;
                const page = known ? await visit(known, url) : await open(browser, url, options);
                page.folder = mkdtempSync(path.join(tmpdir(), 'vireo-page-'));
                try {
                    await work(page);
                    assert.deepEqual(page.failures, []);
                    if (isUsual) idle.push(page);
                } finally {
                    if (!idle.includes(page)) await page.context().close();
                    rmSync(page.folder, { recursive: true });
                }
            });
        }
    });
}
