// SPDX-License-Identifier: MIT
// The dialog that shows every preset over the picture at hand, and keeps the chain as one more.
import { element, iconButton } from './dom.mjs';
import { drawTiles, openDialog, tile } from './gallery.mjs';
import { say } from './language.mjs';
import { allPresets, dropPreset, keepPreset } from './presets.mjs';

export class Looks {
    #dialog;
    #host;

    /** `host` is { engine(), settings(), thumbnails(chains), take(name, chain), tell(text, isError) }; settings() is "" without a chain. */
    constructor(dialog, host) {
        this.#dialog = dialog;
        this.#host = host;
    }

    open() {
        const presets = allPresets(this.#host.engine());
        const tiles = presets.map((preset) => this.#tile(preset));
        const list = element('ul', {}, ...tiles.map(({ root }) => root));
        openDialog(this.#dialog, 'looks-title', say('looks'), this.#form(), list);
        list.querySelector('button')?.focus();
        return drawTiles(this.#dialog, tiles, this.#host.thumbnails(presets.map(({ chain }) => chain)));
    }

    #tile({ name, description, isOwn, chain }) {
        const choose = () => {
            this.#dialog.close();
            this.#host.take(name, chain);
        };
        if (!isOwn) {
            return tile(name, element('span', { lang: 'en' }, description), choose);
        }
        const remove = iconButton('remove', say('deletePreset', { name }));
        remove.onclick = () => {
            dropPreset(name);
            this.open();
        };
        return tile(name, say('ownPreset'), choose, remove);
    }

    #form() {
        const settings = this.#host.settings();
        const name = element('input', {
            type: 'text',
            required: true,
            maxLength: 60,
            placeholder: say('presetName'),
            'aria-label': say('presetName'),
        });
        const button = element('button', { disabled: settings === '' }, say('savePreset'));
        const form = element('form', { className: 'save-preset' }, name, button);
        form.onsubmit = (event) => {
            event.preventDefault();
            const chosen = name.value.trim();
            if (chosen === '') return;
            if (keepPreset(chosen, settings)) this.#host.tell(say('presetSaved', { name: chosen }));
            else this.#host.tell(say('presetNotKept'), true);
            this.open();
        };
        return form;
    }
}
