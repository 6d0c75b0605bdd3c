// SPDX-License-Identifier: MIT
// Controls for a filter's parameters, made from its list alone. Each is { root, update(moment) }.
import { fullMix } from './chain.mjs';
import { displayText, fromDisplay } from './display_units.mjs';
import { element, iconButton } from './dom.mjs';
import { say } from './language.mjs';

let lastId = 0;
const newId = () => `control-${++lastId}`;

/** A number entry in display units that hands over stored values. */
function numberEntry(parameter, properties, take) {
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
    const update = (value, isFixed) => {
        now = value;
        entry.value = shown(value);
        entry.disabled = isFixed;
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
    const update = (value, isFixed) => {
        number.update(value, isFixed);
        slider.value = value;
        slider.disabled = isFixed;
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
    const update = (value, isFixed) => {
        now = well.value = hex.value = `#${value.toString(16).padStart(6, '0')}`;
        well.disabled = hex.disabled = picker.disabled = isFixed;
    };
    const label = element('label', { htmlFor: id }, name);
    return { root: element('div', { className: 'colour control' }, label, hex, picker, well), update };
}

/** Says that a value changes along the clip, and offers to end that. */
function keyFrameNote(control, use, parameter, host) {
    const makeConstant = () => {
        use.set(parameter, use.valueAt(parameter, host.moment()));
        host.rebuild();
    };
    const button = element(
        'button',
        { type: 'button', className: 'quiet', onclick: makeConstant },
        say('makeConstant'),
    );
    const text = use.valueText(parameter);
    control.root = element(
        'div',
        { className: 'keyed' },
        control.root,
        element('p', {}, say('keyFrames', { text }), ' ', button),
    );
}

/** The control of a parameter; `host` is { changed(), rebuild(), moment(), pick(take) }. */
function parameterControl(use, index, name, host) {
    const parameter = use.filter.parameters[index];
    const take = (value) => {
        use.set(index, value);
        if (use.isKeyed(index)) host.rebuild();
        else host.changed();
    };
    const make = {
        number: () => numberControl(name, parameter, take),
        boolean: () => booleanControl(name, take),
        colour: () => colorControl(name, take, host.pick),
    };
    const control = make[parameter.kind]();
    const isKeyed = use.isKeyed(index);
    if (isKeyed) keyFrameNote(control, use, index, host);
    return { root: control.root, update: (moment) => control.update(use.valueAt(index, moment), isKeyed) };
}

const mixParameter = {
    minimum: 0,
    maximum: fullMix,
    displayMinimum: 0,
    displayMaximum: fullMix,
    takesPercent: true,
};

/** How much of the result lies over what went in. */
function mixControl(use, host) {
    const isKeyed = use.isKeyed('mix');
    const control = numberControl(say('mix'), mixParameter, (value) => {
        if (value === fullMix) use.unset('mix');
        else use.set('mix', value);
        host.changed();
    });
    if (isKeyed) keyFrameNote(control, use, 'mix', host);
    control.root.classList.add('mix');
    return { root: control.root, update: (moment) => control.update(use.valueAt('mix', moment), isKeyed) };
}

/** A matrix stands as one: nine numbers by their places. */
function matrixControl(use, indices, host) {
    const cells = indices.map((index) => {
        const parameter = use.filter.parameters[index];
        const cell = numberEntry(parameter, { 'aria-label': parameter.name }, (value) => {
            use.set(index, value);
            host.changed();
        });
        const isKeyed = use.isKeyed(index);
        return { entry: cell.entry, update: (moment) => cell.update(use.valueAt(index, moment), isKeyed) };
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
    if (use.from || use.to) {
        const values = { from: use.from || say('begin'), to: use.to || say('end') };
        root.append(element('p', { className: 'note' }, say('stretch', values)));
    }
    add(mixControl(use, host));
    return { root, update: (moment) => controls.forEach((control) => control.update(moment)) };
}
