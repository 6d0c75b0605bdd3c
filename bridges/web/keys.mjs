// SPDX-License-Identifier: MIT
// Key frames { frame or seconds, value, transition } on the frames of a clip.

/** Where a key frame stands, in frames; those that are given in seconds may stand between two. */
export const frameOf = (key, rate) => key.frame ?? key.seconds * rate;

const microseconds = 1e6;

/** The time of a frame, in seconds where `like` has such and in frames where not. */
export const timeAt = (frame, rate, like) =>
    like?.seconds === undefined ? { frame } : { seconds: Math.round((frame / rate) * microseconds) / microseconds };

/** Where the key frame of a frame is in a list, else -1. */
export const indexAt = (keys, frame, rate) => keys.findIndex((key) => Math.abs(frameOf(key, rate) - frame) < 0.5);

/** The keys with one more at a frame, which takes the place of one that is there. Times are of the track's kind. */
export function withKey(keys, key, frame, rate) {
    const there = keys[indexAt(keys, frame, rate)];
    const others = keys.filter((other) => other !== there);
    const before = others.filter((other) => frameOf(other, rate) < frame);
    const transition = key.transition ?? there?.transition ?? before.at(-1)?.transition ?? 'linear';
    const time = timeAt(frame, rate, key.frame === undefined && key.seconds === undefined ? (there ?? keys[0]) : key);
    return [...before, { ...time, value: key.value, transition }, ...others.slice(before.length)];
}

/** The keys with the one at an index at another frame. */
export const withMoved = (keys, index, frame, rate) =>
    withKey(
        keys.filter((_, other) => other !== index),
        keys[index],
        frame,
        rate,
    );

/** The nearest of some frames that is at most `reach` away, else the frame. */
export function snapped(frame, targets, reach) {
    const nearest = targets.reduce(
        (best, target) => (Math.abs(target - frame) < Math.abs(best - frame) ? target : best),
        Infinity,
    );
    return Math.abs(nearest - frame) <= reach ? Math.round(nearest) : Math.round(frame);
}

/** From which frame on something is so, of something that is so from some frame on; `frames` where never. */
export function firstFrame(frames, isSo) {
    let [first, last] = [0, frames];
    while (first < last) {
        const middle = Math.floor((first + last) / 2);
        if (isSo(middle)) last = middle;
        else first = middle + 1;
    }
    return first;
}
