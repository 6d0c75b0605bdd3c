// SPDX-License-Identifier: MIT
// Stored values as people read and type them.

const scale = (parameter) =>
    (parameter.maximum - parameter.minimum) / (parameter.displayMaximum - parameter.displayMinimum);

/** The stored value nearest to one in display units, halves up. */
export const fromDisplay = (parameter, display) =>
    Math.floor(parameter.minimum + (display - parameter.displayMinimum) * scale(parameter) + 0.5);

/** A stored value in display units, with just the decimals that tell it from its neighbours. */
export function displayText(parameter, value) {
    const step = 1 / scale(parameter);
    const decimals = Math.max(0, Math.ceil(-Math.log10(Math.abs(step)) - 1e-9));
    return String(Number((parameter.displayMinimum + (value - parameter.minimum) * step).toFixed(decimals)));
}
