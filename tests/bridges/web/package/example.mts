// SPDX-License-Identifier: MIT
// What the declarations must allow, and, where an error is expected, must not. It is compiled, and then run.
import { Chain, Key, Layout, loadVireo, Picture, Stream, VireoError } from 'vireo-filters';

const vireo = await loadVireo();
const chain: Chain = vireo.chain('Levels', 'Ghosting:mix=50').addFilter('Solarize').addPreset('noir');
const names: string[] = [...chain].map(({ filter }) => filter.englishName);
const kinds = vireo.filters().flatMap(({ parameters }) => parameters.map(({ kind }) => kind));
const keys: Key[] = [{ frame: 0, value: 100, transition: 'smooth' }, { seconds: 2, value: 130 }];
chain.at(0)?.set('(rgb) gamma', 130).setKeys('(rgb) gamma', keys).value('(rgb) gamma', { frame: 3, rate: 25 });

const deep: Picture = { width: 2, height: 1, data: new Uint16Array(6), layout: 'rgb' };
const flip = vireo.chain('Horizontal Flip');
const words: Uint16Array = flip.render({ width: 2, height: 1, data: new Uint16Array(8) }).data;
const into = { width: 2, height: 1, data: new Uint8Array(6), mine: true };
const mine: boolean = chain.render(into, { into, earlier: () => into, isCancelled: () => false }).mine;
const layout: Layout | undefined = chain.render(into, { layout: 'bgrx' }).layout;
for (const { data } of chain.stream([into, into], { rate: 25, interlacing: 'top' })) data.subarray(1);
const later = async function* () { yield into; };
for await (const { data } of chain.stream(later())) data.subarray(1);
const stream: Stream = chain.startStream({ rate: 50 });
const onCanvas = (image: ImageData): ImageData => stream.render(image);
stream[Symbol.dispose]();
const onCamera = (camera: MediaStream): MediaStream => chain.live(camera, { rate: 25 }).stream;
stream.dispose();

let status: VireoError['status'] | undefined;
try {
    chain.add('Nowhere');
} catch (error) {
    if (error instanceof VireoError) status = error.status;
}
// @ts-expect-error: there is no such layout
(): Picture => flip.render(deep, { layout: 'hsv' });
// @ts-expect-error: what comes later is awaited
() => [...chain.stream(later())];
// @ts-expect-error: a key stands at a frame or at a time
(): Key => ({ value: 3 });
console.log(JSON.stringify([names, kinds.length > 50, words.length, mine, layout, typeof onCanvas, status, typeof onCamera]));
