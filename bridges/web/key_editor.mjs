// SPDX-License-Identifier: MIT
// What is selected under the picture, to be typed: a key frame, or when a filter works.
import { colorText, numberEntry } from './controls.mjs';
import { displayText } from './display_units.mjs';
import { element } from './dom.mjs';
import { say } from './language.mjs';

const transitions = ['linear', 'hold', 'smooth'];

const labelled = (name, input) => element('label', {}, element('span', {}, name), input);

export class KeyEditor {
    #root;
    #take;

    /** `take` is { moved(frame), set(value), transition(word), copy(), paste(), remove(), stretch(end, text) }. */
    constructor(root, take) {
        this.#root = root;
        this.#take = take;
    }

    /** A value as people read it. */
    valueText(parameter, value) {
        if (parameter.kind === 'colour') return colorText(value);
        return displayText(parameter, value) + (parameter.takesPercent ? ' %' : '');
    }

    /** Goes to what is typed first. */
    focus() {
        this.#root.querySelector('input, select')?.focus();
    }

    get hasFocus() {
        return this.#root.contains(document.activeElement);
    }

    showNothing() {
        this.#show('nothing', element('p', { className: 'note' }, say('trackHint')));
    }

    showStretch(filter, from, to) {
        const entry = (word, text) => {
            const input = element('input', {
                type: 'text',
                className: 'time',
                value: text,
                placeholder: say(word === 'from' ? 'begin' : 'end'),
            });
            input.dataset.part = word;
            input.onchange = () => this.#take.stretch(word, input.value);
            return labelled(say(word), input);
        };
        this.#show(`stretch ${filter}`, element('strong', {}, filter), entry('from', from), entry('to', to));
    }

    showKey(filter, parameter, key, frame, canPaste) {
        const at = element('input', { type: 'number', className: 'at', min: 0, step: 1, value: frame });
        at.dataset.part = 'frame';
        at.onchange = () => {
            const isFrame = /^\d{1,9}$/.test(at.value.trim());
            if (isFrame) this.#take.moved(Number(at.value));
            else at.value = frame;
        };
        const select = element(
            'select',
            { className: 'transition' },
            ...transitions.map((word) => element('option', { value: word }, say(word))),
        );
        select.value = key.transition;
        select.dataset.part = 'transition';
        select.onchange = () => this.#take.transition(select.value);
        const button = (name, text, isEnabled = true) => {
            const made = element('button', { type: 'button', className: 'quiet', disabled: !isEnabled }, say(text));
            made.dataset.part = name;
            made.onclick = () => this.#take[name]();
            return made;
        };
        this.#show(
            `key ${filter} ${parameter.name}`,
            element('strong', {}, parameter.name),
            labelled(say('frame'), at),
            labelled(say('value'), this.#valueInput(parameter, key.value)),
            labelled(say('transition'), select),
            button('copy', 'copy'),
            button('paste', 'paste', canPaste),
            button('remove', 'delete'),
        );
    }

    #valueInput(parameter, value) {
        const take = (taken) => this.#take.set(taken);
        if (parameter.kind === 'number') {
            const number = numberEntry(parameter, {}, take);
            number.update(value);
            number.entry.dataset.part = 'value';
            return number.entry;
        }
        const input = element('input', { type: 'color', value: colorText(value) });
        input.dataset.part = 'value';
        input.onchange = () => take(input.value);
        return input;
    }

    /** Keeps the keyboard at the part where it is. */
    #show(kind, ...parts) {
        const { activeElement } = document;
        const focused =
            this.#root.contains(activeElement) && this.#root.dataset.kind === kind ? activeElement.dataset.part : null;
        this.#root.dataset.kind = kind;
        this.#root.replaceChildren(...parts);
        if (focused) this.#root.querySelector(`[data-part="${focused}"]`)?.focus({ preventScroll: true });
    }
}
