// SPDX-License-Identifier: MIT
// Moments of clips, as scripts say them.
import { Struct, VireoError } from './interface.mjs';

const largestFrame = 2 ** 30 - 1;
const fieldOrders = ['progressive', 'top', 'bottom'];

function checkFrame(number) {
    if (Number.isInteger(number) && number >= 0 && number <= largestFrame) return;
    throw new VireoError(`frames are counted from 0 to ${largestFrame}, not ${number}`);
}

/** The engine's struct of { frame, frames, rate, seconds, interlacing }, of which nothing need be given. */
export function timeOf({ frame = 0, frames = 0, rate = 0, seconds = -1, interlacing = 'progressive' }) {
    checkFrame(frame);
    checkFrame(frames);
    const order = fieldOrders.indexOf(interlacing);
    if (order < 0) throw new VireoError(`interlacing is one of ${fieldOrders.join(', ')}, not "${interlacing}"`);
    return new Struct('VireoTime', { frame, frames, rate, seconds, interlacing: order });
}
