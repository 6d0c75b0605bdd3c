// SPDX-License-Identifier: MIT
// The chain as a list of cards: set, switched off, removed, and moved by hand or by keyboard.
import { filterControls } from './controls.mjs';
import { element, iconButton } from './dom.mjs';
import { say } from './language.mjs';
import { Scope } from './scope.mjs';

/** Filters that are set by eye, with a scope beside. */
const measuredFilters = ['Levels', 'Extract'];

export class ChainList {
    #list;
    #host;
    #chain = [];
    #cards = [];
    #open = new Set(); // uses whose controls show
    #showsScopes = true;

    /** `host` is { set(use, parameter, value), changed(), opened(), moment(), pick(take), tell(text) }; it answers changed() with
     * update(). */
    constructor(list, host) {
        this.#list = list;
        this.#host = host;
    }

    /** Shows a chain, which the list changes in place from now on, with these of its filters open. */
    show(chain, open = chain.slice(-1)) {
        this.#chain = chain;
        this.#open = new Set(open);
        this.rebuild();
    }

    /** The scopes that show, [{ use, scope }]. */
    get scopes() {
        return this.#cards.filter(({ scope }) => scope?.isOpen);
    }

    isOpen(use) {
        return this.#open.has(use);
    }

    add(use) {
        this.#chain.push(use);
        this.#open = new Set([use]);
        this.rebuild();
        this.#host.changed();
        this.#host.tell(say('added', { filter: use.filter.name }));
        this.#list.lastElementChild.scrollIntoView({ block: 'nearest' });
        this.#list.lastElementChild.querySelector('.title').focus();
    }

    rebuild() {
        this.#cards = this.#chain.map((use) => this.#card(use));
        this.#list.replaceChildren(...this.#cards.map((card) => card.root));
        this.update();
    }

    /** Shows the values of the moment, where they change along the clip or were set elsewhere. */
    update() {
        const moment = this.#host.moment();
        for (const card of this.#cards) card.update(moment);
    }

    #card(use) {
        const filter = use.filter.name;
        const isOpen = this.#open.has(use);
        const grip = iconButton('grip', say('move', { filter }));
        const title = element('button', { type: 'button', className: 'quiet title', 'aria-expanded': isOpen }, filter);
        const powerName = say('isOn', { filter });
        const power = element('input', { type: 'checkbox', role: 'switch', title: powerName, 'aria-label': powerName });
        power.checked = use.isOn;
        const remove = iconButton('remove', say('remove', { filter }));
        const root = element(
            'li',
            { className: use.isOn ? 'card' : 'card off' },
            element('header', {}, grip, title, power, remove),
        );

        title.onclick = () => {
            if (!this.#open.delete(use)) this.#open.add(use);
            this.#rebuildAt(use, '.title');
            this.#host.opened();
        };
        power.onchange = () => {
            use.isOn = power.checked;
            root.classList.toggle('off', !use.isOn);
            this.#host.changed();
        };
        remove.onclick = () => this.#remove(use);
        grip.onkeydown = (event) => {
            const step = { ArrowUp: -1, ArrowDown: 1 }[event.key];
            if (!step) return;
            event.preventDefault();
            this.#move(use, this.#chain.indexOf(use) + step);
        };
        grip.onpointerdown = (event) => this.#startDrag(use, event);

        if (!isOpen) return { root, update: () => {} };
        const controls = filterControls(use, {
            set: this.#host.set,
            changed: this.#host.changed,
            moment: this.#host.moment,
            pick: this.#host.pick,
        });
        const reset = element('button', { type: 'button', className: 'quiet reset' }, say('reset'));
        reset.onclick = () => {
            use.reset();
            this.#rebuildAt(use, '.reset');
            this.#host.changed();
        };
        controls.root.append(reset);
        root.append(controls.root);
        return { root, update: controls.update, use, scope: this.#scope(use, controls.root) };
    }

    #scope({ filter }, controls) {
        if (!measuredFilters.includes(filter.englishName)) return null;
        const scope = new Scope();
        scope.root.open = this.#showsScopes;
        scope.root.ontoggle = () => {
            this.#showsScopes = scope.isOpen;
            this.#host.opened();
        };
        controls.prepend(scope.root);
        return scope;
    }

    /** Builds the list again and keeps the keyboard at a part of a filter's card. */
    #rebuildAt(use, part) {
        this.rebuild();
        this.#list.children[this.#chain.indexOf(use)].querySelector(part).focus({ preventScroll: true });
    }

    #remove(use) {
        const index = this.#chain.indexOf(use);
        this.#chain.splice(index, 1);
        this.rebuild();
        const next = this.#list.children[Math.min(index, this.#chain.length - 1)];
        next?.querySelector('.title').focus();
        this.#host.changed();
        this.#host.tell(say('removed', { filter: use.filter.name }));
    }

    #move(use, to) {
        const from = this.#chain.indexOf(use);
        if (to < 0 || to >= this.#chain.length || to === from) return;
        this.#chain.splice(from, 1);
        this.#chain.splice(to, 0, use);
        this.#rebuildAt(use, '.grip');
        this.#host.changed();
        this.#host.tell(say('moved', { filter: use.filter.name, number: to + 1, count: this.#chain.length }));
    }

    /** The card follows the pointer past the middles of its neighbours. */
    #startDrag(use, event) {
        if (event.button !== 0) return;
        const stop = new AbortController();
        const move = ({ clientY }) => {
            const middles = [...this.#list.children].map((card) => {
                const box = card.firstElementChild.getBoundingClientRect();
                return box.top + box.height / 2;
            });
            const from = this.#chain.indexOf(use);
            if (from > 0 && clientY < middles[from - 1]) this.#move(use, from - 1);
            else if (from < middles.length - 1 && clientY > middles[from + 1]) this.#move(use, from + 1);
        };
        addEventListener('pointermove', move, { signal: stop.signal });
        for (const end of ['pointerup', 'pointercancel'])
            addEventListener(end, () => stop.abort(), { signal: stop.signal });
    }
}
