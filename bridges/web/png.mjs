// SPDX-License-Identifier: MIT
// PNG files with the bytes of every pixel as they are. Browsers' own decoders and encoders lose colours where a
// picture is transparent, since canvases keep colours multiplied by alpha.

const signature = [0x89, 0x50, 0x4e, 0x47, 0x0d, 0x0a, 0x1a, 0x0a];
const channelsOfType = { 0: 1, 2: 3, 3: 1, 4: 2, 6: 4 };

const crcTable = Uint32Array.from({ length: 256 }, (_, n) => {
    for (let bit = 0; bit < 8; ++bit) n = n & 1 ? 0xedb88320 ^ (n >>> 1) : n >>> 1;
    return n;
});

function crc(bytes) {
    let sum = 0xffffffff;
    for (const byte of bytes) sum = crcTable[(sum ^ byte) & 0xff] ^ (sum >>> 8);
    return ~sum >>> 0;
}

async function through(transform, bytes) {
    return new Uint8Array(await new Response(new Blob([bytes]).stream().pipeThrough(transform)).arrayBuffer());
}

/** The part before the pixels of any PNG file: { width, height, depth, type, interlaced }; null for other files. */
export function readPngHeader(bytes) {
    if (bytes.length < 33 || signature.some((byte, i) => bytes[i] !== byte)) return null;
    const view = new DataView(bytes.buffer, bytes.byteOffset);
    return {
        width: view.getUint32(16),
        height: view.getUint32(20),
        depth: bytes[24],
        type: bytes[25],
        interlaced: bytes[28],
    };
}

function chunks(bytes) {
    const view = new DataView(bytes.buffer, bytes.byteOffset, bytes.byteLength);
    const found = { IDAT: [] };
    for (let at = 8; at + 12 <= bytes.length;) {
        const length = view.getUint32(at);
        const name = String.fromCharCode(...bytes.subarray(at + 4, at + 8));
        const content = bytes.subarray(at + 8, at + 8 + length);
        if (name === 'IDAT') found.IDAT.push(content);
        else found[name] = content;
        at += length + 12;
    }
    return found;
}

function paeth(left, up, corner) {
    const [toLeft, toUp, toCorner] = [Math.abs(up - corner), Math.abs(left - corner), Math.abs(left + up - 2 * corner)];
    if (toLeft <= toUp && toLeft <= toCorner) return left;
    return toUp <= toCorner ? up : corner;
}

/** Undoes the rows' filters in place; each row keeps the byte that names its filter. */
function unfilter(rows, rowBytes, height, pixelBytes) {
    for (let y = 0; y < height; ++y) {
        const begin = y * (rowBytes + 1) + 1;
        const filter = rows[begin - 1];
        if (filter > 4) throw new RangeError('the picture has a row of an unknown kind');
        for (let i = begin; filter > 0 && i < begin + rowBytes; ++i) {
            const isFirst = i - begin < pixelBytes;
            const left = isFirst ? 0 : rows[i - pixelBytes];
            const up = y === 0 ? 0 : rows[i - rowBytes - 1];
            const corner = isFirst || y === 0 ? 0 : rows[i - pixelBytes - rowBytes - 1];
            if (filter === 1) rows[i] += left;
            else if (filter === 2) rows[i] += up;
            else if (filter === 3) rows[i] += (left + up) >> 1;
            else rows[i] += paeth(left, up, corner);
        }
    }
}

/**
 * The picture { width, height, data } of a PNG file whose pixels are 8 bits a channel and may be transparent; null for
 * any other file, which the browser reads as well. Throws where the file is damaged.
 */
export async function readPng(bytes) {
    const header = readPngHeader(bytes);
    if (!header || header.depth !== 8 || header.interlaced) return null;
    const { width, height, type } = header;
    const { IDAT, PLTE, tRNS } = chunks(bytes);
    if (!(type === 4 || type === 6 || (type === 3 && tRNS && PLTE))) return null;

    const channels = channelsOfType[type];
    const rowBytes = width * channels;
    const rows = await through(new DecompressionStream('deflate'), await new Blob(IDAT).arrayBuffer());
    if (rows.length < (rowBytes + 1) * height) throw new RangeError('the picture ends too early');
    unfilter(rows, rowBytes, height, channels);

    const data = new Uint8ClampedArray(4 * width * height);
    for (let y = 0, to = 0; y < height; ++y) {
        let from = y * (rowBytes + 1) + 1;
        for (let x = 0; x < width; ++x, from += channels, to += 4) {
            if (type === 3) {
                const index = rows[from];
                for (let c = 0; c < 3; ++c) data[to + c] = PLTE[3 * index + c];
                data[to + 3] = tRNS[index] ?? 255;
            } else {
                for (let c = 0; c < 3; ++c) data[to + c] = rows[from + (type === 6 ? c : 0)];
                data[to + 3] = rows[from + channels - 1];
            }
        }
    }
    return { width, height, data };
}

function chunk(name, content) {
    const bytes = new Uint8Array(content.length + 12);
    const view = new DataView(bytes.buffer);
    view.setUint32(0, content.length);
    bytes.set(
        Array.from(name, (letter) => letter.charCodeAt(0)),
        4,
    );
    bytes.set(content, 8);
    view.setUint32(content.length + 8, crc(bytes.subarray(4, content.length + 8)));
    return bytes;
}

/** The pixels { width, height, data } as a PNG file holds them, of three or four channels. */
export function compressedPixels({ width, height, data }, channels) {
    const rowBytes = width * channels + 1;
    const rows = new Uint8Array(rowBytes * height);
    for (let y = 0, from = 0; y < height; ++y) {
        let to = y * rowBytes;
        rows[to++] = 1; // each byte as the difference from the pixel to the left
        for (let x = 0; x < width; ++x, from += 4) {
            for (let c = 0; c < channels; ++c) rows[to++] = data[from + c] - (x > 0 ? data[from + c - 4] : 0);
        }
    }
    return through(new CompressionStream('deflate'), rows);
}

function header(width, height, channels) {
    const bytes = new Uint8Array(13);
    const view = new DataView(bytes.buffer);
    view.setUint32(0, width);
    view.setUint32(4, height);
    bytes.set([8, channels === 4 ? 6 : 2, 0, 0, 0], 8);
    return chunk('IHDR', bytes);
}

const end = () => chunk('IEND', new Uint8Array(0));

/** The PNG file of a picture { width, height, data }, with alpha where a pixel needs it. */
export async function writePng(picture) {
    const channels = picture.data.some((byte, i) => (i & 3) === 3 && byte !== 255) ? 4 : 3;
    const parts = [
        Uint8Array.from(signature),
        header(picture.width, picture.height, channels),
        chunk('IDAT', await compressedPixels(picture, channels)),
        end(),
    ];
    return new Uint8Array(await new Blob(parts).arrayBuffer());
}

/** The parts of an animated PNG file that goes on for ever: its beginning, a part for each frame, its end. */
export class AnimatedPng {
    #size;
    #sequence = 0;

    constructor(width, height) {
        this.#size = [width, height];
    }

    begin(frames, channels) {
        const control = new Uint8Array(8);
        new DataView(control.buffer).setUint32(0, frames);
        return [Uint8Array.from(signature), header(...this.#size, channels), chunk('acTL', control)];
    }

    /** The part of a frame whose pixels are compressed already. */
    frame(compressed, milliseconds) {
        const control = new Uint8Array(26);
        const view = new DataView(control.buffer);
        [this.#sequence++, ...this.#size].forEach((value, i) => view.setUint32(4 * i, value));
        view.setUint16(20, Math.min(milliseconds, 0xffff));
        view.setUint16(22, 1000);
        if (this.#sequence === 1) return [chunk('fcTL', control), chunk('IDAT', compressed)];
        const content = new Uint8Array(compressed.length + 4);
        new DataView(content.buffer).setUint32(0, this.#sequence++);
        content.set(compressed, 4);
        return [chunk('fcTL', control), chunk('fdAT', content)];
    }

    end = () => [end()];
}
