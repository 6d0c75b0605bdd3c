// SPDX-License-Identifier: MIT
// The dialog that shows every filter over the picture at hand.
import { element, iconButton } from './dom.mjs';
import { say } from './language.mjs';

export class FilterPicker {
    #dialog;
    #choose;
    #turn = 0;

    /** `choose(filter)` hears of the choice. */
    constructor(dialog, choose) {
        this.#dialog = dialog;
        this.#choose = choose;
        dialog.addEventListener('click', (event) => {
            if (event.target === dialog) dialog.close();
        });
        dialog.addEventListener('close', () => ++this.#turn);
    }

    /** `thumbnails` gives the pictures of the filters in their order, one after another. */
    async open(filters, thumbnails) {
        const turn = ++this.#turn;
        const canvases = new Map();
        const tile = (filter) => {
            const canvas = element('canvas', { width: 4, height: 3 });
            canvases.set(filter, canvas);
            const choose = () => {
                this.#dialog.close();
                this.#choose(filter);
            };
            const names = element('span', {}, filter.name, element('small', {}, filter.category));
            return element(
                'li',
                {},
                element('button', { type: 'button', className: 'tile', onclick: choose }, canvas, names),
            );
        };
        const sorted = filters.toSorted((a, b) => a.name.localeCompare(b.name, document.documentElement.lang));
        const close = iconButton('remove', say('close'));
        close.onclick = () => this.#dialog.close();
        const title = element('h2', { id: 'picker-title' }, say('add'));
        this.#dialog.replaceChildren(element('header', {}, title, close), element('ul', {}, ...sorted.map(tile)));
        this.#dialog.showModal();

        let index = 0;
        for await (const picture of thumbnails) {
            if (turn !== this.#turn) return;
            const canvas = canvases.get(filters[index++]);
            Object.assign(canvas, { width: picture.width, height: picture.height });
            canvas.getContext('2d').putImageData(new ImageData(picture.data, picture.width), 0, 0);
        }
    }
}
