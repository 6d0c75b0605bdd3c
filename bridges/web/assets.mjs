// SPDX-License-Identifier: MIT
// Where the page's own files are: beside it, or inside it where the page is one file.

const inside = globalThis.vireoFiles ?? {};

export const isOneFile = 'vireoFiles' in globalThis;

const bytesOf = (base64) => Uint8Array.from(atob(base64), (letter) => letter.charCodeAt(0));

/** An address of one of the page's files that this page may fetch. */
export function assetUrl(name) {
    const file = inside[name];
    if (!file) return new URL(name, document.baseURI).href;
    file.url ??= URL.createObjectURL(new Blob([bytesOf(file.base64)], { type: file.type }));
    return file.url;
}

/** Some browsers let a page from a folder fetch nothing, so a file is handed over as its bytes. */
export async function assetBytes(name) {
    if (inside[name]) return bytesOf(inside[name].base64);
    return new Uint8Array(await (await fetch(assetUrl(name))).arrayBuffer());
}

let program;

/** What the engine is loaded from, compiled once for the page and its workers. */
export const engineProgram = () => (program ??= assetBytes('vireo/vireo.wasm').then(WebAssembly.compile));

/** One file holds the worker as a plain script, since pages from a folder may start no other. */
export const startWorker = () =>
    new Worker(assetUrl('worker.mjs'), { type: inside['worker.mjs'] ? 'classic' : 'module' });
