// SPDX-License-Identifier: MIT
// The controls of two chains: which one is at hand, and what stands to the left of the divider.
import { element } from './dom.mjs';
import { say } from './language.mjs';

const names = ['A', 'B'];

export class Variants {
    #buttons;
    #select;
    #tags;
    #isB = false;

    /** `root` holds the page's parts; `swap()` goes to the other chain, `compare(isBeside)` shows it beside. */
    constructor(root, { swap, compare }) {
        this.#buttons = names.map((name, index) => {
            const button = element('button', { type: 'button', className: 'quiet' }, name);
            button.onclick = () => index === Number(this.#isB) || swap();
            return button;
        });
        root.querySelector('.variants').append(...this.#buttons);
        this.#select = root.querySelector('.compare-with');
        this.#select.onchange = () => compare(this.#select.value === '1');
        this.#tags = ['before', 'after'].map((side) => root.querySelector(`.tag.${side}`));
    }

    /** { isB, hasOther, isBeside }: whether the chain at hand is B, there is another, and it stands beside. */
    show({ isB, hasOther, isBeside }) {
        this.#isB = isB;
        for (const [index, button] of this.#buttons.entries()) {
            button.setAttribute('aria-pressed', index === Number(isB));
            button.setAttribute('aria-label', say('chainNamed', { name: names[index] }));
        }
        const [own, other] = isB ? names.toReversed() : names;
        const options = [say('original'), say('chainNamed', { name: other })];
        this.#select.hidden = !hasOther;
        this.#select.replaceChildren(...options.map((text, value) => element('option', { value }, text)));
        this.#select.value = Number(isBeside);
        const told = isBeside ? [other, own] : [say('before'), say('after')];
        for (const [index, tag] of this.#tags.entries()) tag.textContent = told[index];
    }
}
