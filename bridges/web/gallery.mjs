// SPDX-License-Identifier: MIT
// Tiles with a picture each, which come one after another.
import { element, iconButton } from './dom.mjs';
import { say } from './language.mjs';

/** A dialog that closes by a click beside it; `closed()` hears of each closing. */
export function openDialog(dialog, titleId, title, ...content) {
    const close = iconButton('remove', say('close'));
    close.onclick = () => dialog.close();
    dialog.onclick = (event) => {
        if (event.target === dialog) dialog.close();
    };
    dialog.replaceChildren(element('header', {}, element('h2', { id: titleId }, title), close), ...content);
    if (!dialog.open) dialog.showModal();
}

/** A tile { root, draw(picture) }: a button with a name and a note beneath it. `extra` stands beside the button. */
export function tile(name, note, choose, extra = null) {
    const canvas = element('canvas', { width: 4, height: 3 });
    const names = element('span', {}, name, element('small', {}, note));
    const button = element('button', { type: 'button', className: 'tile', onclick: choose }, canvas, names);
    const draw = (picture) => {
        Object.assign(canvas, { width: picture.width, height: picture.height });
        canvas.getContext('2d').putImageData(new ImageData(picture.data, picture.width), 0, 0);
    };
    return { root: element('li', {}, button, extra), draw };
}

/** Draws the pictures as they come, as long as the dialog shows these tiles. */
export async function drawTiles(dialog, tiles, pictures) {
    let index = 0;
    for await (const picture of pictures) {
        const { root, draw } = tiles[index++];
        if (!dialog.open || !dialog.contains(root)) return;
        draw(picture);
    }
}
