// SPDX-License-Identifier: MIT
// What a scope shows of a picture, counted.

export const levels = 256;
export const waveColumns = 256;

/** How often a channel has each level, [red, green, blue, luma], and the pixels that count: transparent ones do not. */
export function histogramOf({ data }) {
    const counts = [0, 1, 2, 3].map(() => new Uint32Array(levels));
    let pixels = 0;
    for (let at = 0; at < data.length; at += 4) {
        if (data[at + 3] === 0) continue;
        ++pixels;
        ++counts[0][data[at]];
        ++counts[1][data[at + 1]];
        ++counts[2][data[at + 2]];
        ++counts[3][lumaAt(data, at)];
    }
    return { counts, pixels };
}

const lumaAt = (data, at) => (77 * data[at] + 150 * data[at + 1] + 29 * data[at + 2] + 128) >> 8;

/** How often each column has each luma: rows of levels, bright ones on top. */
export function waveformOf({ width, height, data }) {
    const counts = new Uint32Array(waveColumns * levels);
    for (let y = 0, at = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x, at += 4) {
            if (data[at + 3] === 0) continue;
            const column = Math.floor((x * waveColumns) / width);
            ++counts[(levels - 1 - lumaAt(data, at)) * waveColumns + column];
        }
    }
    return counts;
}

/** The level below which a share of the pixels lies. */
export function levelAt(counts, pixels, share) {
    let seen = 0;
    for (let level = 0; level < levels; ++level) {
        seen += counts[level];
        if (seen > share * pixels) return level;
    }
    return levels - 1;
}

/** All that a scope shows of a picture: its rows are what a full column of the waveform counts. */
export function measured(picture) {
    return { histogram: histogramOf(picture), waveform: waveformOf(picture), rows: picture.height };
}
