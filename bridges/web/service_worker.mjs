// SPDX-License-Identifier: MIT
// Keeps the page's files, so that it opens without a network; isolates the page, so that its workers may share memory;
// and takes the files that other programs share with it. No module, since not all browsers take one here.

// assemble.py fills in the page's files, and a name that changes with any of them.
const files = [];
const cacheName = '';

// Waits, since the newer one cannot take over while pages are asked for.
const again = `<!doctype html><script>
    navigator.serviceWorker.oncontrollerchange = () => location.reload();
    setTimeout(() => location.reload(), 1000);
</script>`;

const sharedCache = 'vireo-shared';

const isolation = {
    'Cross-Origin-Opener-Policy': 'same-origin',
    'Cross-Origin-Embedder-Policy': 'require-corp',
    'Cross-Origin-Resource-Policy': 'same-origin',
};

function isolated(response) {
    const headers = new Headers(response.headers);
    for (const [name, value] of Object.entries(isolation)) headers.set(name, value);
    return new Response(response.body, { status: response.status, statusText: response.statusText, headers });
}

async function keepFiles() {
    const cache = await caches.open(cacheName);
    await cache.addAll(files.map((file) => new Request(file, { cache: 'reload' })));
}

async function dropOthers() {
    const names = await caches.keys();
    const old = names.filter((name) => name.startsWith('vireo-') && name !== cacheName && name !== sharedCache);
    await Promise.all(old.map((name) => caches.delete(name)));
    await self.clients.claim();
}

/** The page finds it when it opens. */
async function takeShared(request) {
    const file = (await request.formData()).get('file');
    const headers = { 'Content-Type': file.type, 'X-Name': encodeURIComponent(file.name) };
    await (await caches.open(sharedCache)).put('shared', new Response(file, { headers }));
    return Response.redirect('./?shared', 303);
}

/** A newer page takes over with the next visit, once no other tab shows the old one. */
async function makesWay() {
    const { waiting } = self.registration;
    if (!waiting || (await self.clients.matchAll()).length > 1) return false;
    waiting.postMessage('take over');
    return true;
}

async function answer(request) {
    const isPage = request.mode === 'navigate';
    if (isPage && (await makesWay())) return new Response(again, { headers: { 'Content-Type': 'text/html' } });
    const kept = await (await caches.open(cacheName)).match(request, { ignoreSearch: isPage });
    return kept ? isolated(kept) : fetch(request);
}

self.addEventListener('install', (event) => event.waitUntil(keepFiles()));
self.addEventListener('activate', (event) => event.waitUntil(dropOthers()));
self.addEventListener('message', ({ data }) => {
    if (data === 'take over') self.skipWaiting();
});
self.addEventListener('fetch', (event) => {
    const { method, url } = event.request;
    if (method === 'POST' && new URL(url).search === '?share') event.respondWith(takeShared(event.request));
    else if (method === 'GET' && url.startsWith(self.registration.scope)) event.respondWith(answer(event.request));
});
