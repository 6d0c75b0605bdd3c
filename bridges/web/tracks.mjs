// SPDX-License-Identifier: MIT
// Key frames under the picture: a track for each value over the clip's time, and a bar for when a filter works.
import { mixParameter } from './controls.mjs';
import { element, iconButton } from './dom.mjs';
import { KeyEditor } from './key_editor.mjs';
import { frameOf, indexAt, snapped, timeAt, withKey, withMoved } from './keys.mjs';
import { say } from './language.mjs';

const snapReach = 7; // in pixels
const dragStart = 4; // from here on a press is a drag, in pixels
const valueHeight = 160; // pixels of a drag across all values
const curvePoints = 64;
const bigStep = 10; // of keys with Shift

const limited = (value, least, most) => Math.min(Math.max(value, least), most);

/** The parameter of a use by its index or "mix". */
export const parameterOf = (use, index) =>
    index === 'mix' ? { ...mixParameter, kind: 'number', name: say('mix') } : use.filter.parameters[index];

export class Tracks {
    #root;
    #rows;
    #host;
    #editor;
    #shown = ''; // what the rows were made for
    #tracks = []; // { use, index, lane, mark }
    #selected = null; // { use, index, frame } of a key, { use, end } of an end of a stretch
    #copied = null; // { kind, value, transition }
    #wanted = null; // the focus after the next rebuilding

    /**
     * `host` is { chain(), isOpen(use), clip(), frame(), seek(frame), changed(), tell(text) }, where clip() is
     * { frames, rate }. It answers changed() with update().
     */
    constructor(root, host) {
        this.#root = root;
        this.#host = host;
        this.#rows = root.querySelector('.rows');
        this.#editor = new KeyEditor(root.querySelector('.key-editor'), {
            moved: (frame) => this.#moveKey(frame),
            set: (value) => this.#setValue(value),
            transition: (transition) => this.#change((key) => ({ ...key, transition })),
            copy: () => this.#copy(),
            paste: () => this.#paste(),
            remove: () => this.#remove(),
            stretch: (end, text) => this.#setEnd(end, text),
        });
    }

    /** Shows the chain as it is now. */
    update() {
        if (this.#root.hidden) return;
        const { frames, rate } = this.#host.clip();
        const chain = this.#host.chain();
        const parts = chain.map((use) => `${use.filter.name}${this.#host.isOpen(use)}${use.isOn}${use.text()}`);
        const shown = [frames, rate, document.documentElement.lang, ...parts].join('\n');
        if (shown !== this.#shown || this.#wanted !== null) {
            this.#shown = shown;
            this.#rebuild(chain);
        }
        this.#rows.style.setProperty('--at', this.#place(this.#host.frame()));
        for (const track of this.#tracks) this.#showMark(track);
    }

    get #last() {
        return Math.max(this.#host.clip().frames - 1, 1);
    }

    #place(frame) {
        return limited(frame / this.#last, 0, 1);
    }

    #moment(frame) {
        return { frame: limited(Math.round(frame), 0, 2 ** 30 - 1), rate: this.#host.clip().rate };
    }

    #rebuild(chain) {
        const focused =
            this.#wanted ?? (this.#rows.contains(document.activeElement) ? document.activeElement.dataset.id : null);
        this.#wanted = null;
        if (this.#selected && !chain.includes(this.#selected.use)) this.#selected = null;
        this.#tracks = [];
        this.#rows.replaceChildren(...chain.map((use, position) => this.#group(use, position)));
        this.#rows.classList.toggle('none', chain.length === 0);
        this.#showEditor();
        if (focused && !this.#editor.hasFocus) this.#rows.querySelector(`[data-id="${focused}"]`)?.focus();
    }

    /** A filter's stretch, and the tracks of what is keyed, or of all its values where its card is open. */
    #group(use, position) {
        const filter = use.filter.name;
        const { parameters } = use.filter;
        const values = [...[...parameters.keys()].filter((index) => parameters[index].kind !== 'boolean'), 'mix'];
        const isOpen = this.#host.isOpen(use);
        const shown = values.filter((index) => isOpen || use.isKeyed(index));
        return element(
            'div',
            { className: use.isOn ? 'group' : 'group off', role: 'group', 'aria-label': filter },
            this.#stretchRow(use, position),
            ...shown.map((index) => this.#row(use, index, position)),
        );
    }

    #lane(label, properties, ...children) {
        const lane = element(
            'div',
            { className: 'lane', role: 'group', 'aria-label': label, ...properties },
            ...children,
        );
        return element('div', { className: 'lane-frame' }, lane);
    }

    /** The frame under a pointer. */
    #frameAt(event, lane) {
        const box = lane.getBoundingClientRect();
        return limited((event.clientX - box.left) / box.width, 0, 1) * this.#last;
    }

    // Keys.

    #row(use, index, position) {
        const parameter = parameterOf(use, index);
        const id = `${position}/${index}`;
        const mark = iconButton('mark', '');
        mark.dataset.id = `${id}/mark`;
        const keys = use.keys(index);
        const { rate } = this.#host.clip();
        const nodes = keys.map((key) => this.#key(use, index, id, key, frameOf(key, rate)));
        const name = say('track', { filter: use.filter.name, name: parameter.name });
        const frame = this.#lane(name, {}, this.#curve(use, index, keys), ...nodes);
        const lane = frame.firstChild;
        mark.onclick = () => this.#toggle(use, index, id);
        lane.ondblclick = (event) => {
            if (event.target.closest('.key')) return;
            this.#add(use, index, id, this.#snap(this.#frameAt(event, lane), event, null));
        };
        lane.onpointerdown = (event) => {
            const key = event.target.closest('.key');
            if (event.button !== 0) return;
            if (key) this.#dragKey(event, use, index, id, Number(key.dataset.frame));
            else this.#host.seek(Math.round(this.#frameAt(event, lane)));
        };
        this.#tracks.push({ use, index, mark, name });
        return element(
            'div',
            { className: 'track' },
            element('span', { className: 'name', title: parameter.name }, parameter.name),
            mark,
            frame,
        );
    }

    #share(use, index, value) {
        const { kind, minimum, maximum } = parameterOf(use, index);
        return kind === 'colour' ? 0.5 : (value - minimum) / (maximum - minimum);
    }

    /** The values between the keys. */
    #curve(use, index, keys) {
        const svg = document.createElementNS('http://www.w3.org/2000/svg', 'svg');
        for (const [name, value] of [
            ['viewBox', '0 0 1 1'],
            ['preserveAspectRatio', 'none'],
            ['aria-hidden', 'true'],
        ])
            svg.setAttribute(name, value);
        if (keys.length === 0 || parameterOf(use, index).kind === 'colour') return svg;
        const line = document.createElementNS(svg.namespaceURI, 'polyline');
        const points = Array.from({ length: curvePoints + 1 }, (_, point) => {
            const frame = Math.round((point / curvePoints) * this.#last);
            return `${this.#place(frame)},${1 - this.#share(use, index, use.valueAt(index, this.#moment(frame)))}`;
        });
        line.setAttribute('points', points.join(' '));
        svg.append(line);
        return svg;
    }

    #key(use, index, id, key, frame) {
        const parameter = parameterOf(use, index);
        const values = {
            name: parameter.name,
            value: this.#editor.valueText(parameter, key.value),
            frame: Math.round(frame),
            transition: say(key.transition),
        };
        const node = element('div', {
            className: `key ${key.transition}`,
            role: 'slider',
            tabIndex: 0,
            title: say('keyHint', values),
            'data-id': `${id}/${Math.round(frame)}`,
            'data-frame': frame,
            'aria-label': parameter.name,
            'aria-valuemin': 0,
            'aria-valuemax': Math.max(this.#last, Math.ceil(frame)),
            'aria-valuenow': Math.round(frame),
            'aria-valuetext': say('keyHint', values),
        });
        node.style.setProperty('--place', this.#place(frame));
        node.style.setProperty('--share', this.#share(use, index, key.value));
        if (parameter.kind === 'colour') node.style.setProperty('--colour', values.value);
        node.onfocus = () => this.#select({ use, index, frame, id });
        node.onkeydown = (event) => this.#keyDown(event);
        return node;
    }

    #select(selected) {
        this.#selected = selected;
        this.#showEditor();
    }

    #selectedKey() {
        const { use, index, frame } = this.#selected ?? {};
        if (index === undefined) return null;
        const keys = use.keys(index);
        const at = indexAt(keys, frame, this.#host.clip().rate);
        return at < 0 ? null : { use, index, keys, at, key: keys[at] };
    }

    #showEditor() {
        for (const node of this.#rows.querySelectorAll('[aria-current]')) node.removeAttribute('aria-current');
        const found = this.#selectedKey();
        if (found) {
            const { use, index, key } = found;
            const frame = Math.round(this.#selected.frame);
            this.#rows.querySelector(`[data-id="${this.#selected.id}/${frame}"]`)?.setAttribute('aria-current', true);
            this.#editor.showKey(use.filter.name, parameterOf(use, index), key, frame, this.#canPaste(use, index));
        } else if (this.#selected?.end) {
            const { use } = this.#selected;
            this.#editor.showStretch(use.filter.name, use.from, use.to);
        } else {
            this.#editor.showNothing();
        }
    }

    /** Gives a value its key frames, or without any makes it constant, and goes on at a frame. */
    #apply(use, index, keys, frame) {
        const id = this.#idOf(use, index);
        try {
            use.setKeys(index, keys);
        } catch (error) {
            this.#host.tell(error.message, true);
            return;
        }
        this.#selected = { use, index, frame, id };
        this.#wanted = `${id}/${Math.round(frame)}`;
        this.#host.changed();
    }

    #idOf(use, index) {
        return `${this.#host.chain().indexOf(use)}/${index}`;
    }

    #add(use, index, id, frame) {
        const value = use.valueAt(index, this.#moment(frame));
        this.#apply(use, index, withKey(use.keys(index), { value }, frame, this.#host.clip().rate), frame);
    }

    /** Sets a key at the frame on show, or takes the one that is there away. */
    #toggle(use, index, id) {
        const frame = this.#host.frame();
        const isThere = indexAt(use.keys(index), frame, this.#host.clip().rate) >= 0;
        if (isThere) {
            this.#selected = { use, index, frame, id };
            this.#remove();
        } else {
            this.#add(use, index, id, frame);
        }
        this.#rows.querySelector(`[data-id="${id}/mark"]`)?.focus();
    }

    #showMark({ use, index, mark, name }) {
        const frame = this.#host.frame();
        const isThere = indexAt(use.keys(index), frame, this.#host.clip().rate) >= 0;
        const label = say(isThere ? 'deleteKeyOf' : 'setKeyOf', { name, frame });
        mark.classList.toggle('set', isThere);
        mark.classList.toggle('keyed', use.isKeyed(index));
        mark.title = label;
        mark.setAttribute('aria-label', label);
    }

    #change(work) {
        const found = this.#selectedKey();
        if (!found) return;
        const { use, index, keys, at, key } = found;
        this.#apply(use, index, keys.with(at, work(key)), this.#selected.frame);
    }

    #setValue(text) {
        const found = this.#selectedKey();
        if (!found) return;
        const { use, index, keys } = found;
        try {
            use.setAt(index, text, this.#moment(this.#selected.frame));
        } catch {
            return this.#showEditor();
        }
        const changed = use.keys(index);
        use.setKeys(index, keys);
        this.#apply(use, index, changed, this.#selected.frame);
    }

    #moveKey(frame) {
        const found = this.#selectedKey();
        if (!found) return;
        const { use, index, keys, at } = found;
        this.#apply(use, index, withMoved(keys, at, frame, this.#host.clip().rate), frame);
    }

    #remove() {
        const found = this.#selectedKey();
        if (!found) return;
        const { use, index, keys, at, key } = found;
        const { rate } = this.#host.clip();
        const left = keys.toSpliced(at, 1);
        const next = left[Math.min(at, left.length - 1)];
        if (next) return this.#apply(use, index, left, frameOf(next, rate));
        if (index === 'mix' && key.value === mixParameter.maximum) use.unset(index);
        else use.set(index, key.value);
        this.#selected = null;
        this.#wanted = `${this.#idOf(use, index)}/mark`;
        this.#host.changed();
    }

    #copy() {
        const found = this.#selectedKey();
        if (!found) return;
        const { use, index, key } = found;
        this.#copied = { kind: parameterOf(use, index).kind, value: key.value, transition: key.transition };
        this.#host.tell(say('keyCopied'));
        this.#showEditor();
    }

    #canPaste(use, index) {
        const { kind, minimum, maximum } = parameterOf(use, index);
        const { value } = this.#copied ?? {};
        return this.#copied?.kind === kind && (kind === 'colour' || (value >= minimum && value <= maximum));
    }

    /** The copied key on the selected track, at the frame on show. */
    #paste() {
        const { use, index } = this.#selected ?? {};
        if (index === undefined || !this.#canPaste(use, index)) return;
        const frame = this.#host.frame();
        this.#apply(use, index, withKey(use.keys(index), this.#copied, frame, this.#host.clip().rate), frame);
    }

    #keyDown(event) {
        const found = this.#selectedKey();
        if (!found) return;
        const frame = Math.round(this.#selected.frame);
        if (event.ctrlKey || event.metaKey) {
            const action = { c: () => this.#copy(), v: () => this.#paste() }[event.key.toLowerCase()];
            if (!action) return;
            event.preventDefault();
            return action();
        }
        const steps = event.shiftKey ? bigStep : 1;
        const transition = (word) => () => this.#change((key) => ({ ...key, transition: word }));
        const actions = {
            ArrowLeft: () => this.#moveKey(limited(frame - steps, 0, this.#last)),
            ArrowRight: () => this.#moveKey(limited(frame + steps, 0, this.#last)),
            ArrowUp: () => this.#step(found, steps),
            ArrowDown: () => this.#step(found, -steps),
            Home: () => this.#moveKey(0),
            End: () => this.#moveKey(this.#last),
            Delete: () => this.#remove(),
            Backspace: () => this.#remove(),
            Enter: () => this.#editor.focus(),
            ' ': () => this.#host.seek(frame),
            h: transition('hold'),
            l: transition('linear'),
            s: transition('smooth'),
        };
        const action = actions[event.key] ?? actions[event.key.toLowerCase()];
        if (!action || event.altKey) return;
        event.preventDefault();
        action();
    }

    #step({ use, index }, steps) {
        const { kind, minimum, maximum, displayMinimum, displayMaximum } = parameterOf(use, index);
        if (kind === 'colour') return;
        const unit = Math.max(1, (maximum - minimum) / Math.max(displayMaximum - displayMinimum, 1));
        this.#change((key) => ({ ...key, value: limited(Math.round(key.value + steps * unit), minimum, maximum) }));
    }

    /** Snaps to keys of other tracks and to the frame on show; with Alt held to frames alone. */
    #snap(frame, event, except) {
        if (event.altKey) return Math.round(frame);
        const { rate } = this.#host.clip();
        const targets = [this.#host.frame(), 0, this.#last];
        for (const { use, index } of this.#tracks) {
            if (use === except?.use && index === except?.index) continue;
            targets.push(...use.keys(index).map((key) => frameOf(key, rate)));
        }
        const width = this.#rows.querySelector('.lane')?.clientWidth ?? 1;
        return limited(snapped(frame, targets, (snapReach / width) * this.#last), 0, this.#last);
    }

    /** Sideways a key moves in time, up and down its value changes, whichever begins. */
    #dragKey(event, use, index, id, begin) {
        event.preventDefault();
        const { rate } = this.#host.clip();
        const keys = use.keys(index);
        const at = indexAt(keys, begin, rate);
        const { kind, minimum, maximum } = parameterOf(use, index);
        const perPixel = this.#last / event.currentTarget.clientWidth;
        event.target.focus({ preventScroll: true });
        let isSideways = null;
        this.#drag(event, (moved, x, y) => {
            isSideways ??= Math.abs(x) >= Math.abs(y) || kind === 'colour';
            if (isSideways) {
                const frame = this.#snap(begin + x * perPixel, moved, { use, index });
                this.#apply(use, index, withMoved(keys, at, frame, rate), frame);
            } else {
                const value = limited(
                    Math.round(keys[at].value - (y / valueHeight) * (maximum - minimum)),
                    minimum,
                    maximum,
                );
                this.#apply(use, index, keys.with(at, { ...keys[at], value }), begin);
            }
        });
    }

    /** Calls `move(event, x, y)` with how far a pointer came, once it came some way. */
    #drag({ clientX, clientY, pointerId }, move) {
        const stop = new AbortController();
        const options = { signal: stop.signal };
        let isDragging = false;
        const follow = (event) => {
            if (event.pointerId !== pointerId) return;
            const [x, y] = [event.clientX - clientX, event.clientY - clientY];
            isDragging ||= Math.hypot(x, y) >= dragStart;
            if (isDragging) move(event, x, y);
        };
        addEventListener('pointermove', follow, options);
        for (const end of ['pointerup', 'pointercancel']) addEventListener(end, () => stop.abort(), options);
    }

    // From and to.

    #stretch(use) {
        const { frames, rate } = this.#host.clip();
        return use.stretch({ frames: Math.max(frames, 1), rate });
    }

    #stretchRow(use, position) {
        const filter = use.filter.name;
        const { first, end } = this.#stretch(use);
        const all = Math.max(this.#host.clip().frames, 1);
        const id = `${position}/stretch`;
        const bar = element('div', { className: 'span' });
        const handle = (word, frame) => {
            const node = element('div', {
                className: `end ${word}`,
                role: 'slider',
                tabIndex: 0,
                'data-id': `${id}/${word}`,
                'aria-label': `${filter}: ${say(word)}`,
                'aria-valuemin': 0,
                'aria-valuemax': all,
                'aria-valuenow': frame,
                'aria-valuetext': use[word] || say(word === 'from' ? 'begin' : 'end'),
            });
            node.onfocus = () => this.#select({ use, end: word });
            node.onkeydown = (event) => this.#endKeyDown(event, use, word);
            return node;
        };
        const frame = this.#lane(say('stretchOf', { filter }), {}, bar, handle('from', first), handle('to', end));
        const lane = frame.firstChild;
        lane.classList.add('stretch');
        lane.style.setProperty('--first', this.#place(first));
        lane.style.setProperty('--end', this.#place(end));
        lane.onpointerdown = (event) => this.#dragStretch(event, use, lane);
        return element(
            'div',
            { className: 'track head' },
            element('strong', { className: 'name', title: filter }, filter),
            frame,
        );
    }

    #endKeyDown(event, use, word) {
        const { first, end } = this.#stretch(use);
        const all = Math.max(this.#host.clip().frames, 1);
        const now = word === 'from' ? first : end;
        const steps = event.shiftKey ? bigStep : 1;
        const to = {
            ArrowLeft: now - steps,
            ArrowRight: now + steps,
            Home: 0,
            End: all,
            Delete: word === 'from' ? 0 : all,
        }[event.key];
        if (event.key === 'Enter') this.#editor.focus();
        else if (to === undefined) return;
        else this.#moveEnds(use, word === 'from' ? { first: to, end } : { first, end: to }, word);
        event.preventDefault();
    }

    /** Ends keep their kind of time, and the clip's own ends are none. */
    #moveEnds(use, { first, end }, word) {
        const { frames, rate } = this.#host.clip();
        const all = Math.max(frames, 1);
        const text = (frame, old) =>
            old === '' || old.endsWith('f') ? `${frame}f` : `${timeAt(frame, rate, { seconds: 0 }).seconds}s`;
        const ends = { from: limited(first, 0, all - 1), to: limited(end, 1, all) };
        const old = { from: use.from, to: use.to };
        const { first: oldFirst, end: oldEnd } = this.#stretch(use);
        try {
            for (const name of ['from', 'to']) {
                if (ends[name] === (name === 'from' ? oldFirst : oldEnd)) continue;
                const isNone = ends[name] === (name === 'from' ? 0 : all);
                if (isNone) use.unset(name);
                else use.set(name, text(ends[name], use[name]));
            }
            if (ends.from >= ends.to) throw new Error(say('badEnds'));
        } catch (error) {
            for (const name of ['from', 'to']) old[name] === '' ? use.unset(name) : use.set(name, old[name]);
            this.#host.tell(error.message, true);
            return;
        }
        this.#selected = { use, end: word };
        this.#wanted = `${this.#host.chain().indexOf(use)}/stretch/${word}`;
        this.#host.changed();
    }

    #setEnd(word, text) {
        const { use } = this.#selected;
        const old = use[word];
        try {
            if (text.trim() === '') use.unset(word);
            else use.set(word, text.trim());
        } catch {
            this.#host.tell(say('badValue', { filter: use.filter.name, name: say(word), value: text }), true);
            this.#showEditor();
            return;
        }
        if (use[word] !== old) this.#host.changed();
    }

    /** An end is dragged by its handle, both by what lies between them. */
    #dragStretch(event, use, lane) {
        if (event.button !== 0) return;
        const handle = event.target.closest('.end');
        const isBar = event.target.closest('.span') !== null;
        if (!handle && !isBar) return this.#host.seek(Math.round(this.#frameAt(event, lane)));
        event.preventDefault();
        const all = Math.max(this.#host.clip().frames, 1);
        const begin = this.#stretch(use);
        const perPixel = this.#last / lane.clientWidth;
        const word = handle?.classList.contains('to') ? 'to' : 'from';
        const node = handle ?? lane.querySelector('.from');
        node.focus({ preventScroll: true });
        this.#drag(event, (moved, x) => {
            const step = x * perPixel;
            if (!handle) {
                const by = limited(Math.round(step), -begin.first, all - begin.end);
                this.#moveEnds(use, { first: begin.first + by, end: begin.end + by }, word);
            } else if (word === 'from') {
                const first = Math.min(this.#snap(begin.first + step, moved, null), begin.end - 1);
                this.#moveEnds(use, { first, end: begin.end }, word);
            } else {
                const isEnd = begin.end + step > this.#last;
                const end = isEnd ? all : Math.max(this.#snap(begin.end + step, moved, null), begin.first + 1);
                this.#moveEnds(use, { first: begin.first, end }, word);
            }
        });
    }
}
