// SPDX-License-Identifier: MIT
// The page's state behind the "#" of its address: "f=Solarize:threshold=60%&f=Ghosting&frame=12".
import { parseFilterText } from './chain.mjs';
import { PageError } from './texts.mjs';

/** An "&" parts only where one of these words and "=" follow, so that "Black & White" may be written as it is. */
const words = ['f', 'off', 'sample', 'frame', 'language'];
const separator = new RegExp(`&(?=(?:${words.join('|')})=)`);

/** "%" counts as itself where no two hexadecimal digits of a character follow. */
function decoded(text) {
    return text.replace(/(?:%[0-9a-f]{2})+/gi, (escape) => {
        try {
            return decodeURIComponent(escape);
        } catch {
            return escape;
        }
    });
}

/** Escapes what an address or the text around it would trip over. */
const encoded = (text) => encodeURIComponent(text).replace(/%(?:3A|3D|2C|40|2F)/g, decodeURIComponent);

/**
 * { chain, sample, frame, language } of an address; `sample` and `language` are null where it names none.
 * Throws PageError where a part cannot be read.
 */
export function parseAddress(hash, engine) {
    const state = { chain: [], sample: null, frame: 0, language: null };
    const parts = hash.replace(/^#/, '').split(separator);
    for (const part of parts.filter((text) => text.trim() !== '')) {
        const equals = part.indexOf('=');
        const word = part.slice(0, Math.max(equals, 0));
        const value = decoded(part.slice(equals + 1)).trim();
        if (word === 'f' || word === 'off') {
            const use = parseFilterText(engine, value);
            use.isOn = word === 'f';
            state.chain.push(use);
        } else if (word === 'frame' && /^\d{1,9}$/.test(value)) {
            state.frame = Number(value);
        } else if (word === 'sample' || word === 'language') {
            state[word] = value;
        } else {
            throw new PageError('badAddress', { text: decoded(part) });
        }
    }
    return state;
}

/** The address of a state, "#" included. `sample` is null for pictures of one's own. */
export function addressOf({ chain, sample, frame }) {
    const parts = chain.map((use) => `${use.isOn ? 'f' : 'off'}=${encoded(use.compactText())}`);
    if (sample) parts.push(`sample=${encoded(sample)}`);
    if (frame > 0) parts.push(`frame=${frame}`);
    return `#${parts.join('&')}`;
}
