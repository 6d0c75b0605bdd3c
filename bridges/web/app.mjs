// SPDX-License-Identifier: MIT
// The page as an app: kept for use without a network, and given files by the system.
import { isOneFile } from './assets.mjs';

/** Keeps the page's files. Only a page from a server can be kept. */
export async function keepForLater() {
    if (isOneFile || !navigator.serviceWorker) return;
    try {
        await navigator.serviceWorker.register('service_worker.mjs');
    } catch {
        // The browser keeps nothing here, in a private window perhaps; the page works without.
    }
}

/** The file that another program shared with the page, once; null where there is none. */
async function sharedFile() {
    if (location.search !== '?shared') return null;
    history.replaceState(null, '', location.pathname + location.hash);
    const cache = await caches.open('vireo-shared');
    const found = await cache.match('shared');
    if (!found) return null;
    await cache.delete('shared');
    const type = found.headers.get('Content-Type');
    return new File([await found.blob()], decodeURIComponent(found.headers.get('X-Name')), { type });
}

/** Hands over what the page was opened with: shared files, and those that it is the system's program for. */
export async function takeFiles(open) {
    const shared = await sharedFile();
    if (shared) await open(shared);
    globalThis.launchQueue?.setConsumer(async ({ files }) => {
        if (files.length > 0) await open(await files[0].getFile());
    });
}
