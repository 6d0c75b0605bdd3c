// SPDX-License-Identifier: MIT
// The dialog that shows every filter over the picture at hand.
import { element } from './dom.mjs';
import { drawTiles, openDialog, tile } from './gallery.mjs';
import { say } from './language.mjs';

export class FilterPicker {
    #dialog;
    #choose;

    /** `choose(filter)` hears of the choice. */
    constructor(dialog, choose) {
        this.#dialog = dialog;
        this.#choose = choose;
    }

    /** `thumbnails` gives the pictures of the filters in their order, one after another. */
    open(filters, thumbnails) {
        const tiles = filters.map((filter) =>
            tile(filter.name, filter.category, () => {
                this.#dialog.close();
                this.#choose(filter);
            }),
        );
        const order = [...filters.keys()].sort((a, b) =>
            filters[a].name.localeCompare(filters[b].name, document.documentElement.lang),
        );
        const list = element('ul', {}, ...order.map((index) => tiles[index].root));
        openDialog(this.#dialog, 'picker-title', say('add'), list);
        return drawTiles(this.#dialog, tiles, thumbnails);
    }
}
