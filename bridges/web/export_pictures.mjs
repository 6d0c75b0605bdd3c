// SPDX-License-Identifier: MIT
// A clip rendered into pictures without loss: PNG files in one archive, or an animated PNG.
import { renderedFrames } from './export_video.mjs';
import { makeZip } from './media.mjs';
import { AnimatedPng } from './png.mjs';

/** Programs that show animated pictures keep all of them in memory. */
export const mostAnimated = 1000;

export const pictureFormats = {
    png: { name: 'PNG', extension: '.zip', type: 'application/zip' },
    apng: { name: 'APNG', extension: '.png', type: 'image/png', most: mostAnimated },
};

async function* files(job, stem) {
    const digits = Math.max(4, String(job.reader.frames - 1).length);
    for await (const { frame, bytes } of renderedFrames(job, await job.reader.times(), 'png')) {
        yield { name: `${stem}-${String(frame).padStart(digits, '0')}.png`, input: bytes };
    }
}

/** Writes each frame of a stretch as a PNG file, named by its number in the clip, into an archive. */
export async function exportPngs(job, target) {
    const stem = target.name.replace(/\.[^.]*$/, '');
    const reading = makeZip(files(job, stem)).getReader();
    try {
        for (let part; !(part = await reading.read()).done;) await target.write(part.value);
    } finally {
        await reading.cancel().catch(() => {});
    }
}

/** Writes a stretch as one animated picture. */
export async function exportAnimatedPng(job, target) {
    const { reader, stretch, alpha } = job;
    const animation = new AnimatedPng(reader.width, reader.height);
    const channels = alpha ? 4 : 3;
    const write = async (parts) => {
        for (const part of parts) await target.write(part);
    };
    await write(animation.begin(stretch.last - stretch.first + 1, channels));
    for await (const { bytes, duration } of renderedFrames(job, await reader.times(), 'pixels', channels)) {
        await write(animation.frame(bytes, Math.round(1000 * (duration || 1 / reader.rate))));
    }
    await write(animation.end());
}
