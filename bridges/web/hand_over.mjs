// SPDX-License-Identifier: MIT
// The chain for other programs: the command line, its settings files, and FFmpeg.
import { FilterUse, fullMix, findFilter } from './chain.mjs';
import { PageError } from './texts.mjs';

const fileVersion = 1;

const switchedOn = (chain) => chain.filter((use) => use.isOn);

/** A word of a POSIX shell, in quotes where it needs them. */
export const shellQuoted = (word) => (/^[\w./:=@%,+-]+$/.test(word) ? word : `'${word.replaceAll("'", "'\\''")}'`);

/** A file of the working folder: a name that begins with a hyphen would be an option. */
const fileWord = (name) => shellQuoted(name.startsWith('-') ? `./${name}` : name);

/** The command that renders the file `input` to `output` through the chain; "" without filters. */
export function commandText(chain, input, output) {
    const filters = switchedOn(chain).map((use) => `-f ${shellQuoted(use.text())}`);
    if (filters.length === 0) return '';
    return [`vireo render ${fileWord(input)} ${fileWord(output)}`, ...filters].join(' \\\n    ');
}

/** A constant as JSON's own kind of value, key frames and colours as their text. */
function jsonValue(parameter, track, text) {
    if (typeof track !== 'number' || parameter.kind === 'colour') return text;
    return parameter.kind === 'boolean' ? track !== 0 : track;
}

/** The settings file of the chain, byte for byte as --save-settings writes it. */
export function settingsText(chain) {
    const filters = switchedOn(chain).map((use) => {
        const pairs = use.pairs();
        const entry = { filter: use.filter.englishName };
        const parameters = [...use.assigned].map(([index, track], place) => {
            const [name, text] = pairs[place];
            return [name, jsonValue(use.filter.parameters[index], track, text)];
        });
        if (parameters.length > 0) entry.parameters = Object.fromEntries(parameters);
        return Object.assign(entry, Object.fromEntries(pairs.slice(parameters.length)));
    });
    return `${JSON.stringify({ vireo: fileVersion, filters }, null, 2)}\n`;
}

/** The chain of a settings file; throws PageError. */
export function parseSettings(filters, name, text) {
    const refuse = () => {
        throw new PageError('badSettings', { name });
    };
    let document;
    try {
        document = JSON.parse(text);
    } catch {
        refuse();
    }
    if (document?.vireo !== fileVersion || !Array.isArray(document.filters) || document.filters.length === 0) refuse();
    return document.filters.map((entry) => {
        if (typeof entry?.filter !== 'string') refuse();
        const { filter, parameters = {}, ...words } = entry;
        if (typeof parameters !== 'object' || parameters === null || Array.isArray(parameters)) refuse();
        if (Object.keys(words).some((word) => !['from', 'to', 'mix'].includes(word))) refuse();
        const use = new FilterUse(findFilter(filters, filter));
        for (const [word, value] of [...Object.entries(parameters), ...Object.entries(words)]) {
            if (!['string', 'number', 'boolean'].includes(typeof value)) refuse();
            use.assign(word, String(value));
        }
        return use;
    });
}

const pluginName = (filter) =>
    `vireo_${filter.englishName.replace('&', 'and').replace('(RGB)', '').trim().replace(/\s+/g, '_').toLowerCase()}`;

/** A number that frei0r rounds to the stored value again. */
const share = (parameter, value) =>
    String(Number(((value - parameter.minimum) / (parameter.maximum - parameter.minimum)).toFixed(9)));

function frei0rValue(parameter, value) {
    if (parameter.kind === 'boolean') return value !== 0 ? 'y' : 'n';
    return parameter.kind === 'colour' ? `0x${value.toString(16).padStart(6, '0')}` : share(parameter, value);
}

/** FFmpeg's frei0r filters, separated by commas. `clip` is { rate, frames } where a clip is open, else null. */
export function ffmpegText(chain, clip, moment) {
    return switchedOn(chain)
        .map((use) => {
            const { filter } = use;
            const isTimed = filter.usesTime && clip !== null;
            const count = isTimed ? filter.parameters.length : Math.max(-1, ...use.assigned.keys()) + 1;
            const values = filter.parameters
                .slice(0, count)
                .map((parameter, index) => frei0rValue(parameter, use.valueAt(index, moment)));
            if (isTimed) values.push(String(clip.rate), 'ms', String(clip.frames));
            return `frei0r=${[pluginName(filter), values.join('|')].filter(Boolean).join(':')}`;
        })
        .join(',');
}

/** Whether the chain holds what FFmpeg's frei0r filter cannot be told. */
export const ffmpegLacks = (chain) =>
    switchedOn(chain).some((use) => use.isAnimated() || use.mixAt({ frame: 0, rate: 1 }) !== fullMix);
