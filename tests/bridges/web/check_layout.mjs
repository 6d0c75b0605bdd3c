// SPDX-License-Identifier: MIT
// Writes a source that compiles only where the tables of interface.mjs are those of the header.
//   node check_layout.mjs FILE
import { writeFileSync } from 'node:fs';

import { constants, enumerations, layouts } from '../../../bridges/web/vireo/interface.mjs';

const checks = Object.entries(constants).map(([name, value]) => [`${name} == ${value}`, name]);
const capitalised = (word) => (word === 'colour' ? 'Color' : word[0].toUpperCase() + word.slice(1));
for (const [enumeration, words] of Object.entries(enumerations)) {
    const prefix = enumeration === 'spelling' ? 'VireoSpelling' : 'Vireo';
    for (const [number, word] of words.entries()) {
        checks.push([`${prefix}${capitalised(word)} == ${number}`, word]);
    }
}
for (const [struct, { places, size }] of Object.entries(layouts)) {
    for (const { name, offset, bytes } of places) {
        checks.push([`offsetof(${struct}, ${name}) == ${offset}`, `${struct}.${name}`]);
        checks.push([`sizeof(((${struct}*)0)->${name}) == ${bytes}`, `${struct}.${name}`]);
    }
    checks.push([`sizeof(${struct}) == ${size}`, struct]);
}
const lines = checks.map(([check, what]) => `_Static_assert(${check}, "interface.mjs has another ${what}");\n`);
writeFileSync(process.argv[2], `#include "vireo/vireo.h"\n\n${lines.join('')}`);
