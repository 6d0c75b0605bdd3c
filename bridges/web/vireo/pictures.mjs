// SPDX-License-Identifier: MIT
// Pictures of scripts on their way through the program's memory: one copy in and one out.
import { numberOf, Struct, VireoError } from './interface.mjs';

/** Five times these bytes fit the memory that the program may have, as much as a chain's pictures take at once. */
const mostBytes = 400e6;
const noMemory = () => new VireoError('there is not enough memory for this picture', { status: 'noMemory' });

/** Arrays of samples by the name that they have in every window. */
const arrays = {
    Uint8ClampedArray: { type: Uint8ClampedArray, depth: 8 },
    Uint8Array: { type: Uint8Array, depth: 8 },
    Uint16Array: { type: Uint16Array, depth: 16 },
    Float32Array: { type: Float32Array, depth: 32 },
};
const usualLayouts = { 1: 'grey', 3: 'rgb', 4: 'rgba' };
const channelsOf = (layout) => (layout === 'grey' ? 1 : layout.length);

/** What a picture is, checked: { width, height, layout, premultiplied, array, depth, bytes }. */
function shapeOf({ width, height, data, layout, premultiplied = false }) {
    const isSize = (side) => Number.isInteger(side) && side > 0 && side < 2 ** 31;
    if (!isSize(width) || !isSize(height)) throw new VireoError(`a picture cannot have ${width} x ${height} pixels`);
    const array = arrays[data?.[Symbol.toStringTag]];
    if (!array) throw new VireoError(`a picture's data is one of ${Object.keys(arrays).join(', ')}`);
    const shown = layout ?? usualLayouts[data.length / (width * height)] ?? 'rgba';
    numberOf('layout', shown);
    const samples = width * height * channelsOf(shown);
    if (data.length !== samples) {
        throw new VireoError(
            `a picture of ${width} x ${height} pixels has ${samples} samples as ${shown}, not ${data.length}`,
        );
    }
    return { width, height, layout: shown, premultiplied, array, depth: array.depth, bytes: data.byteLength };
}

const bytesOf = ({ buffer, byteOffset, byteLength }) => new Uint8Array(buffer, byteOffset, byteLength);

const frameOf = ({ width, height, layout, premultiplied, depth, bytes }, pixels) =>
    new Struct('VireoFrame', {
        width,
        height,
        layout: numberOf('layout', layout),
        depth,
        premultiplied: Number(premultiplied),
        pixels,
        stride: bytes / height,
    });

/** A picture without pixels, as vireoChainAccepts() takes it. */
export const frameWithout = ({ width, height, depth = 8 }) => new Struct('VireoFrame', { width, height, depth });

/** A new picture of the samples in `buffer`, an ImageData where the source was one. */
function pictureOf(source, { width, height, layout, premultiplied, array }, buffer) {
    const data = new array.type(buffer);
    if (layout === 'rgba' && typeof ImageData !== 'undefined' && source instanceof ImageData) {
        return new ImageData(data, width, height, { colorSpace: source.colorSpace });
    }
    return { width, height, data, layout, premultiplied };
}

/**
 * The picture that `render(source, result)` makes of another, both frames in memory.
 *   layout, into: the result's layout, or the picture that takes it
 *   buffers: how many pictures the chain keeps aside meanwhile
 */
export function rendered(program, picture, { layout, into }, buffers, render) {
    const source = shapeOf(picture);
    const result = into ? shapeOf(into) : { ...source, layout: layout ?? source.layout };
    result.bytes = (source.bytes / channelsOf(source.layout)) * channelsOf(result.layout);
    if (into && into.data.byteLength !== result.bytes) {
        throw new VireoError('a result has the size and the depth of its source');
    }
    numberOf('layout', result.layout);
    const paddedBytes = Math.ceil((source.width * source.depth) / 2 / 64) * 64 * source.height;
    if (paddedBytes > mostBytes) throw noMemory();
    const pixels = program.allocate(Math.max(source.bytes, result.bytes));
    try {
        // Filters say nothing where there is no room for what they keep aside.
        const room = pixels === 0 ? 0 : program.allocate(buffers * paddedBytes);
        if (room === 0) throw noMemory();
        program.free(room);
        program.bytes().set(bytesOf(picture.data), pixels);
        render(frameOf(source, pixels), frameOf(result, pixels));
        const memory = program.bytes();
        if (!into) return pictureOf(picture, result, memory.slice(pixels, pixels + result.bytes).buffer);
        bytesOf(into.data).set(memory.subarray(pixels, pixels + result.bytes));
        return into;
    } finally {
        program.free(pixels);
    }
}

/** Writes an earlier frame where the engine wants it, alike to the picture that is rendered. */
function put(program, earlier, picture, number, target) {
    const [shape, wanted] = [shapeOf(earlier), shapeOf(picture)];
    const unlike = ['width', 'height', 'layout', 'depth', 'premultiplied'].find((of) => shape[of] !== wanted[of]);
    if (unlike) {
        const isSize = unlike === 'width' || unlike === 'height';
        const what = isSize ? 'is not as large as' : `has another ${unlike} than`;
        throw new VireoError(`frame ${number} ${what} the others`);
    }
    const { pixels, stride } = program.structAt('VireoFrame', target);
    const [bytes, rowBytes] = [bytesOf(earlier.data), shape.bytes / shape.height];
    for (let y = 0; y < shape.height; ++y) {
        program.bytes().set(bytes.subarray(y * rowBytes, (y + 1) * rowBytes), pixels + y * stride);
    }
}

/**
 * Lets the engine ask a script while it works: for earlier frames, and whether to go on. `work` gets the options of
 * that; what the script throws comes out in place of the engine's sentence.
 */
export function withScript(program, picture, { earlier, isCancelled }, work) {
    const { asked, callbacks } = program;
    const outer = { ...asked };
    const thrown = [];
    const attempt = (ask, failed) => {
        try {
            return ask();
        } catch (error) {
            thrown.push(error);
            return failed;
        }
    };
    asked.earlierFrame = (number, target, time) =>
        attempt(() => {
            const found = earlier(number);
            if (!found) throw new VireoError(`frame ${number} is not there`, { status: 'noFrame' });
            put(program, found, picture, number, target);
            if (found.seconds !== undefined) program.writeStruct('VireoTime', time, { seconds: found.seconds });
            return 0;
        }, 1);
    asked.isCancelled = () => attempt(() => Number(Boolean(isCancelled())), 1);
    try {
        return work(
            new Struct('VireoRenderOptions', {
                earlierFrame: earlier ? callbacks.earlierFrame : 0,
                isCancelled: isCancelled ? callbacks.isCancelled : 0,
            }),
        );
    } catch (error) {
        throw thrown[0] ?? error;
    } finally {
        Object.assign(asked, outer);
    }
}
