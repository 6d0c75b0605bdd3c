// SPDX-License-Identifier: MIT
// The chain for other programs: the command line, and FFmpeg.
import { fullMix } from './chain.mjs';

const isOn = (use) => use.isOn;

/** A word of a POSIX shell, in quotes where it needs them. */
export const shellQuoted = (word) => (/^[\w./:=@%,+-]+$/.test(word) ? word : `'${word.replaceAll("'", "'\\''")}'`);

/** A file of the working folder: a name that begins with a hyphen would be an option. */
const fileWord = (name) => shellQuoted(name.startsWith('-') ? `./${name}` : name);

/** The command that renders the file `input` to `output` through the chain; "" without filters. */
export function commandText(chain, input, output) {
    const filters = chain.filter(isOn).map((use) => `-f ${shellQuoted(use.text())}`);
    if (filters.length === 0) return '';
    return [`vireo render ${fileWord(input)} ${fileWord(output)}`, ...filters].join(' \\\n    ');
}

/** A number that frei0r rounds to the stored value again. */
const share = (parameter, value) =>
    String(Number(((value - parameter.minimum) / (parameter.maximum - parameter.minimum)).toFixed(9)));

function frei0rValue(parameter, value) {
    if (parameter.kind === 'boolean') return value !== 0 ? 'y' : 'n';
    return parameter.kind === 'colour' ? `0x${value.toString(16).padStart(6, '0')}` : share(parameter, value);
}

/** FFmpeg's frei0r filters, separated by commas. `clip` is { frames } where a clip is open, else null. */
export function ffmpegText(chain, clip, moment) {
    return chain
        .filter(isOn)
        .map((use) => {
            const { parameters, fileName, readsTime } = use.filter;
            const isTimed = readsTime && clip !== null;
            const lastSet = parameters.findLastIndex((_, index) => use.isSet(index));
            const values = parameters
                .slice(0, isTimed ? parameters.length : lastSet + 1)
                .map((parameter, index) => frei0rValue(parameter, use.valueAt(index, moment)));
            // Frames are counted: for some widths FFmpeg does not hand out their times.
            if (isTimed) values.push('', 's', String(clip.frames));
            return `frei0r=${[`vireo_${fileName}`, values.join('|')].filter(Boolean).join(':')}`;
        })
        .join(',');
}

/** Whether the chain holds what FFmpeg's frei0r filter cannot be told. */
export const ffmpegLacks = (chain) =>
    chain.filter(isOn).some((use) => use.isAnimated() || use.valueAt('mix', { frame: 0 }) !== fullMix);
