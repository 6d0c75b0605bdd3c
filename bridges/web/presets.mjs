// SPDX-License-Identifier: MIT
// Presets: those that come with the engine, and those that this browser keeps, as settings files by their names.

const place = 'presets';

function kept() {
    try {
        const found = JSON.parse(localStorage.getItem(place) ?? '[]');
        return found.filter(({ name, settings }) => typeof name === 'string' && typeof settings === 'string');
    } catch {
        return []; // nothing is kept here, or it was damaged
    }
}

/** Whether the browser keeps them. */
function keep(presets) {
    try {
        localStorage.setItem(place, JSON.stringify(presets));
        return true;
    } catch {
        return false;
    }
}

/** [{ name, description, isOwn, chain }], the user's own first, `chain` as its text. Damaged ones are left out. */
export function allPresets(engine) {
    const textOf = (fill) => {
        const chain = engine.chain();
        try {
            fill(chain);
            return chain.text();
        } catch {
            return null;
        } finally {
            chain.dispose();
        }
    };
    const own = kept().map(({ name, settings }) => ({
        name,
        description: '',
        isOwn: true,
        chain: textOf((chain) => chain.addSettings(settings, name)),
    }));
    const shipped = engine.presets().map(({ name, description }) => ({
        name,
        description,
        isOwn: false,
        chain: textOf((chain) => chain.addPreset(name)),
    }));
    return [...own, ...shipped].filter(({ chain }) => chain !== null);
}

/** Keeps a settings file under a name, in place of one of the user's that has it; says whether the browser does. */
export const keepPreset = (name, settings) =>
    keep([...kept().filter((preset) => preset.name !== name), { name, settings }]);

export const dropPreset = (name) => keep(kept().filter((preset) => preset.name !== name));
