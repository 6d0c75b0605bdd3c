// SPDX-License-Identifier: MIT
// A histogram and a waveform of a picture, beside the filters that people set by eye.
import { element } from './dom.mjs';
import { say } from './language.mjs';
import { levelAt, levels, waveColumns } from './picture_levels.mjs';

const histogramSize = { width: levels, height: 72 };
const waveSize = { width: waveColumns, height: levels / 2 };

const colors = ['#e5484d', '#30a46c', '#3e63dd'];

function drawHistogram(canvas, { histogram: { counts } }) {
    const context = canvas.getContext('2d');
    const { width, height } = histogramSize;
    context.clearRect(0, 0, width, height);
    // The ends often hold far more than the rest, which would then be flat.
    const most = Math.max(1, ...counts.slice(0, 3).flatMap((channel) => [...channel.subarray(1, levels - 1)]));
    context.globalCompositeOperation = 'screen';
    for (const [channel, color] of colors.entries()) {
        context.beginPath();
        context.moveTo(0, height);
        counts[channel].forEach((count, level) =>
            context.lineTo(level + 0.5, height * (1 - Math.min(1, Math.sqrt(count / most)))),
        );
        context.lineTo(width, height);
        context.fillStyle = color;
        context.fill();
    }
}

function drawWaveform(canvas, { waveform: counts, rows }) {
    const { width, height } = waveSize;
    const image = new ImageData(width, height);
    const full = rows / 24; // so many pixels of a column on one level are bright
    for (let y = 0; y < height; ++y) {
        for (let x = 0; x < width; ++x) {
            const count = counts[2 * y * width + x] + counts[(2 * y + 1) * width + x];
            const at = 4 * (y * width + x);
            const share = Math.min(1, Math.sqrt(count / full));
            image.data[at] = 150;
            image.data[at + 1] = 220;
            image.data[at + 2] = 160;
            image.data[at + 3] = Math.round(255 * share);
        }
    }
    canvas.getContext('2d').putImageData(image, 0, 0);
}

export class Scope {
    #sides; // what goes into the filter, what comes out: panes { kind, canvas, draw }

    constructor() {
        const pane = (kind, size, draw) => ({
            kind,
            canvas: element('canvas', { ...size, role: 'img', 'aria-label': kind }),
            draw,
        });
        const side = (word) => [
            pane(`${say('histogram')}, ${say(word)}`, histogramSize, drawHistogram),
            pane(`${say('waveform')}, ${say(word)}`, waveSize, drawWaveform),
        ];
        const words = ['intoFilter', 'outOfFilter'];
        this.#sides = words.map(side);
        const figures = this.#sides.map((panes, index) =>
            element('figure', {}, element('figcaption', {}, say(words[index])), ...panes.map(({ canvas }) => canvas)),
        );
        this.root = element(
            'details',
            { className: 'scope' },
            element('summary', {}, say('scope')),
            element('div', {}, ...figures),
        );
    }

    get isOpen() {
        return this.root.open;
    }

    /** Shows what was measured of the picture that goes into the filter and of the one that comes out. */
    show(sides) {
        for (const [side, measured] of sides.entries()) {
            const { histogram } = measured;
            const at = (share) => levelAt(histogram.counts[3], histogram.pixels, share);
            for (const { kind, canvas, draw } of this.#sides[side]) {
                draw(canvas, measured);
                canvas.setAttribute(
                    'aria-label',
                    say('scopeTold', { kind, low: at(0), middle: at(0.5), high: at(1 - 1e-9) }),
                );
            }
        }
        this.root.dataset.shown = 'yes';
    }
}
