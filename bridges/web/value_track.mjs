// SPDX-License-Identifier: MIT
// Values that change along a clip, written as on the command line: "0@0s..254@5s..hold..10@8s".

const transitions = { hold: '..hold..', smooth: '..smooth..', linear: '..' };

/** Halves that times in seconds miss by a rounding error still go up. */
const roundingTolerance = 1e-9;

/** Frame times are sums of fractions: a frame this little before a moment stands at it. */
const timeTolerance = 1e-6;

function parseSeconds(text) {
    if (!/^(\d+:){0,2}\d+(\.\d*)?$/.test(text)) return null;
    const parts = text.split(':').map(Number);
    if (parts.slice(1).some((part) => part >= 60)) return null;
    return parts.reduce((seconds, part) => 60 * seconds + part, 0);
}

/** "5s", "2.5", "1:02:03.5" or "120f" as { text, seconds } or { text, frame }; null for anything else. */
export function parseTime(text) {
    text = text.trim();
    const frame = /^(\d+)\s*f$/.exec(text);
    if (frame) return { text, frame: Number(frame[1]) };
    const seconds = parseSeconds(text.replace(/\s*s$/, ''));
    return seconds === null ? null : { text, seconds };
}

const secondsOf = (time, rate) => time.seconds ?? time.frame / rate;

/** Whether the moment { frame, rate } has come to the time. */
export function isReached(time, moment) {
    if (time.frame !== undefined) return moment.frame >= time.frame;
    return moment.frame / moment.rate >= time.seconds - timeTolerance;
}

/** A number, or { keys: [{ value, time, toNext }] }; null when it is neither. `parseValue` gives null for bad values. */
export function parseTrack(text, parseValue) {
    if (!text.includes('@') && !text.includes('..')) return parseValue(text.trim());
    const pieces = text.split(/(\.\.(?:hold\.\.|smooth\.\.)?)/i);
    const keys = [];
    for (let i = 0; i < pieces.length; i += 2) {
        const [value, time, ...rest] = pieces[i].split('@');
        if (time === undefined || rest.length > 0) return null;
        const dots = pieces[i + 1]?.toLowerCase();
        const toNext = Object.keys(transitions).find((name) => transitions[name] === dots);
        keys.push({ value: parseValue(value.trim()), time: parseTime(time), toNext });
    }
    if (keys.some((key) => key.value === null || key.time === null)) return null;
    for (let i = 1; i < keys.length; ++i) {
        const [before, now] = [keys[i - 1].time, keys[i].time];
        const comparable = (before.frame === undefined) === (now.frame === undefined);
        if (comparable && secondsOf(now, 1) <= secondsOf(before, 1)) return null;
    }
    return { keys };
}

/** The track as it was written, with `valueText` for its values. */
export function trackText(track, valueText) {
    if (typeof track === 'number') return valueText(track);
    return track.keys.map((key) => `${valueText(key.value)}@${key.time.text}${transitions[key.toNext] ?? ''}`).join('');
}

function between(from, to, share, isColour) {
    const step = (a, b) => a + Math.floor((b - a) * share + 0.5 + roundingTolerance);
    if (!isColour) return step(from, to);
    const channel = (shift) => step((from >> shift) & 0xff, (to >> shift) & 0xff) << shift;
    return channel(16) | channel(8) | channel(0);
}

/** What a track comes to at a moment { frame, rate }. The first and last values hold outside. */
export function valueAt(track, moment, isColour) {
    if (typeof track === 'number') return track;
    const keys = track.keys;
    const times = keys.map((key) => secondsOf(key.time, moment.rate));
    const now = moment.frame / moment.rate;
    if (now <= times[0]) return keys[0].value;
    const next = times.findIndex((time) => time > now);
    if (next < 0) return keys.at(-1).value;
    const from = keys[next - 1];
    if (from.toNext === 'hold') return from.value;
    let share = (now - times[next - 1]) / (times[next] - times[next - 1]);
    if (from.toNext === 'smooth') share = share * share * (3 - 2 * share);
    return between(from.value, keys[next].value, share, isColour);
}
