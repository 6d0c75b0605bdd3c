// SPDX-License-Identifier: MIT
// Controls for a filter's parameters, made from its list alone. Each is { root, update(moment) }.
import { fullMix } from './chain.mjs';
import { displayText, fromDisplay } from './display_units.mjs';
import { element, iconButton } from './dom.mjs';
import { say } from './language.mjs';

let lastId = 0;
const newId = () => `control-${++lastId}`;

/** A number entry in display units that hands over stored values. */
export function numberEntry(parameter, properties, take) {
    const shown = (value) => displayText(parameter, value);
    const entry = element('input', {
        type: 'number',
        min: parameter.displayMinimum,
        max: parameter.displayMaximum,
        step: 'any',
        inputMode: 'decimal',
        ...properties,
    });
    let now;
    entry.onchange = () => {
        const isNumber = entry.value.trim() !== '' && Number.isFinite(Number(entry.value));
        const value = isNumber ? fromDisplay(parameter, Number(entry.value)) : now;
        take(Math.min(Math.max(value, parameter.minimum), parameter.maximum));
    };
    const update = (value) => {
        now = value;
        entry.value = shown(value);
    };
    return { entry, update, shown };
}

/** `now()` is the stored value, `take(value)` hears of another one. */
function numberControl(name, parameter, take) {
    const id = newId();
    const unit = parameter.takesPercent ? '%' : '';
    const number = numberEntry(parameter, { 'aria-label': name }, take);
    const slider = element('input', { type: 'range', id, min: parameter.minimum, max: parameter.maximum, step: 1 });
    slider.oninput = () => take(Number(slider.value));
    const update = (value) => {
        number.update(value);
        slider.value = value;
        slider.setAttribute('aria-valuetext', number.shown(value) + unit);
        slider.style.setProperty('--share', (value - parameter.minimum) / (parameter.maximum - parameter.minimum));
    };
    const label = element('label', { htmlFor: id }, name);
    const entry = element('span', { className: 'entry' }, number.entry, element('span', { className: 'unit' }, unit));
    return { root: element('div', { className: 'number control' }, label, entry, slider), update };
}

function booleanControl(name, take) {
    const box = element('input', { type: 'checkbox' });
    box.onchange = () => take(box.checked ? 1 : 0);
    const update = (value) => {
        box.checked = value !== 0;
    };
    return { root: element('label', { className: 'boolean control' }, box, name), update };
}

export const colorText = (value) => `#${value.toString(16).padStart(6, '0')}`;

function colorControl(name, take, pick) {
    const id = newId();
    const well = element('input', { type: 'color', id });
    const hex = element('input', {
        type: 'text',
        className: 'hex',
        spellcheck: false,
        'aria-label': say('hex', { name }),
    });
    const picker = iconButton('pick', say('pick', { name }));
    let now;
    well.oninput = () => take(well.value);
    hex.onchange = () => {
        try {
            take(hex.value.trim());
        } catch {
            hex.value = now;
        }
    };
    picker.onclick = () => pick(take);
    const update = (value) => {
        now = well.value = hex.value = colorText(value);
    };
    const label = element('label', { htmlFor: id }, name);
    return { root: element('div', { className: 'colour control' }, label, hex, picker, well), update };
}

/** Says, where a value changes along the clip, how, and offers to end that. Gives what shows it as it is now. */
function keyFrameNote(control, use, parameter, host) {
    const makeConstant = () => {
        use.set(parameter, use.valueAt(parameter, host.moment()));
        host.changed();
    };
    const text = element('span');
    const button = element(
        'button',
        { type: 'button', className: 'quiet', onclick: makeConstant },
        say('makeConstant'),
    );
    const note = element('p', {}, text, ' ', button);
    control.root = element('div', { className: 'keyed' }, control.root, note);
    return () => {
        note.hidden = !use.isKeyed(parameter);
        if (!note.hidden) text.textContent = say('keyFrames', { text: use.valueText(parameter) });
    };
}

/** The control of a parameter; `host` is { set(use, parameter, value), changed(), moment(), pick(take) }. */
function parameterControl(use, index, name, host) {
    const parameter = use.filter.parameters[index];
    const take = (value) => {
        host.set(use, index, value);
        host.changed();
    };
    const make = {
        number: () => numberControl(name, parameter, take),
        boolean: () => booleanControl(name, take),
        colour: () => colorControl(name, take, host.pick),
    };
    const control = make[parameter.kind]();
    const showNote = keyFrameNote(control, use, index, host);
    const update = (moment) => {
        control.update(use.valueAt(index, moment));
        showNote();
    };
    return { root: control.root, update };
}

export const mixParameter = {
    minimum: 0,
    maximum: fullMix,
    displayMinimum: 0,
    displayMaximum: fullMix,
    takesPercent: true,
};

/** How much of the result lies over what went in. */
function mixControl(use, host) {
    const control = numberControl(say('mix'), mixParameter, (value) => {
        if (value === fullMix && !use.isKeyed('mix')) use.unset('mix');
        else host.set(use, 'mix', value);
        host.changed();
    });
    const showNote = keyFrameNote(control, use, 'mix', host);
    control.root.classList.add('mix');
    const update = (moment) => {
        control.update(use.valueAt('mix', moment));
        showNote();
    };
    return { root: control.root, update };
}

/** A matrix stands as one: nine numbers by their places. */
function matrixControl(use, indices, host) {
    const cells = indices.map((index) => {
        const parameter = use.filter.parameters[index];
        const cell = numberEntry(parameter, { 'aria-label': parameter.name }, (value) => {
            host.set(use, index, value);
            host.changed();
        });
        return { entry: cell.entry, update: (moment) => cell.update(use.valueAt(index, moment)) };
    });
    const root = element('div', { className: 'matrix control' }, ...cells.map((cell) => cell.entry));
    return { root, update: (moment) => cells.forEach((cell) => cell.update(moment)) };
}

/** "(R) Gamma" as the group "R" and the rest "Gamma". */
function groupOf(parameter) {
    const parts = /^\((.+?)\)\s*(.+)$/.exec(parameter.name);
    return parts ? { group: parts[1], name: parts[2] } : { group: null, name: parameter.name };
}

const isMatrixCell = (parameter) => /^M[1-3][1-3]$/.test(parameter.englishName);

/** All controls of a filter in a chain as one { root, update(moment) }. */
export function filterControls(use, host) {
    const root = element('div', { className: 'controls' });
    const controls = [];
    const add = (control, to = root) => {
        controls.push(control);
        to.append(control.root);
    };
    const { parameters } = use.filter;
    const cells = parameters.map((_, index) => index).filter((index) => isMatrixCell(parameters[index]));
    if (cells.length > 0) add(matrixControl(use, cells, host));

    let group = null;
    parameters.forEach((parameter, index) => {
        if (cells.includes(index)) return;
        const { group: title, name } = groupOf(parameter);
        if (title !== null && group?.title !== title) {
            const details = element('details', { open: group === null }, element('summary', {}, title));
            group = { title, details };
            root.append(details);
        }
        add(parameterControl(use, index, name, host), title === null ? root : group.details);
    });
    if (parameters.length === 0) root.append(element('p', { className: 'note' }, say('nothingToSet')));
    const stretch = element('p', { className: 'note' });
    const showStretch = () => {
        stretch.hidden = use.from === '' && use.to === '';
        stretch.textContent = say('stretch', { from: use.from || say('begin'), to: use.to || say('end') });
    };
    add({ root: stretch, update: showStretch });
    add(mixControl(use, host));
    return { root, update: (moment) => controls.forEach((control) => control.update(moment)) };
}
