// SPDX-License-Identifier: MIT
// The picture before and after, side by side at a divider; zoom, pan, and picking a colour.

const margin = 20; // around a picture that fits in, where there is room
const mostZoom = 32; // screen pixels a pixel
const wheelStep = 0.0015;
const panStep = 60;
const dividerStep = 0.02;

const limited = (value, least, most) => Math.min(Math.max(value, least), most);

function draw(canvas, picture) {
    if (canvas.width !== picture.width || canvas.height !== picture.height) {
        Object.assign(canvas, { width: picture.width, height: picture.height });
    }
    canvas.getContext('2d').putImageData(new ImageData(picture.data, picture.width, picture.height), 0, 0);
}

export class Stage {
    #root;
    #picture;
    #before;
    #after;
    #divider;
    #size = { width: 1, height: 1 };
    #scale = 1; // CSS pixels a picture's pixel
    #left = 0;
    #top = 0;
    #isFitted = true;
    #share = 0.5; // of the picture's visible width that shows it before
    #pointers = new Map();
    #pick = null;
    #onZoom;

    /** `onZoom(percent, isFitted)` hears of each change, in per cent of the screen's pixels. */
    constructor(root, onZoom) {
        this.#root = root;
        this.#onZoom = onZoom;
        this.#picture = root.querySelector('.picture');
        [this.#before, this.#after] = root.querySelectorAll('canvas');
        this.#divider = root.querySelector('.divider');
        new ResizeObserver(() => this.#arrange()).observe(root);
        root.addEventListener('wheel', (event) => this.#wheel(event), { passive: false });
        root.addEventListener('pointerdown', (event) => this.#press(event));
        root.addEventListener('pointermove', (event) => this.#drag(event));
        for (const end of ['pointerup', 'pointercancel']) root.addEventListener(end, (event) => this.#release(event));
        root.addEventListener('dblclick', () => (this.#isFitted ? this.zoomTo(1) : this.fit()));
        root.addEventListener('keydown', (event) => this.#key(event));
        this.#divider.addEventListener('keydown', (event) => this.#dividerKey(event));
    }

    /** A new picture's size, which fits it in. */
    open(width, height) {
        this.#size = { width, height };
        Object.assign(this.#picture.style, { width: `${width}px`, height: `${height}px` });
        for (const canvas of [this.#before, this.#after]) Object.assign(canvas, { width: 1, height: 1 });
        this.fit();
    }

    before(picture) {
        draw(this.#before, picture);
    }

    after(picture) {
        draw(this.#after, picture);
    }

    set isComparing(isOn) {
        this.#root.classList.toggle('comparing', isOn);
        this.#arrange();
    }

    /** The next click gives its pixel's colour as it was before, 0xRRGGBB; null gives the click back. */
    pickColor(take) {
        this.#pick = take;
        this.#root.classList.toggle('picking', take !== null);
    }

    fit() {
        this.#isFitted = true;
        this.#arrange();
    }

    /** To so many screen pixels a pixel. */
    zoomTo(zoom) {
        this.#zoomBy(zoom / (this.#scale * devicePixelRatio));
    }

    zoomIn() {
        this.#zoomBy(Math.SQRT2);
    }

    zoomOut() {
        this.#zoomBy(Math.SQRT1_2);
    }

    get #box() {
        return { width: this.#root.clientWidth, height: this.#root.clientHeight };
    }

    get #fitScale() {
        const { width, height } = this.#box;
        const gap = width > 640 ? 2 * margin : 0;
        return Math.min((width - gap) / this.#size.width, (height - gap) / this.#size.height, 1);
    }

    #zoomBy(factor, x = this.#box.width / 2, y = this.#box.height / 2) {
        const scale = limited(
            this.#scale * factor,
            Math.min(this.#fitScale, 1 / devicePixelRatio),
            mostZoom / devicePixelRatio,
        );
        this.#left = x - ((x - this.#left) * scale) / this.#scale;
        this.#top = y - ((y - this.#top) * scale) / this.#scale;
        this.#scale = scale;
        this.#isFitted = Math.abs(scale / this.#fitScale - 1) < 0.001;
        this.#arrange();
    }

    #panBy(x, y) {
        this.#left += x;
        this.#top += y;
        this.#arrange();
    }

    /** Where a length begins so that it is centred in the box, or leaves no gap where it is longer. */
    #arrange() {
        const { width, height } = this.#box;
        if (this.#isFitted) this.#scale = this.#fitScale;
        const place = (begin, length, box) => (length <= box ? (box - length) / 2 : limited(begin, box - length, 0));
        const [shownWidth, shownHeight] = [this.#size.width * this.#scale, this.#size.height * this.#scale];
        this.#left = place(this.#left, shownWidth, width);
        this.#top = place(this.#top, shownHeight, height);

        const zoom = this.#scale * devicePixelRatio;
        this.#picture.style.transform = `translate(${this.#left}px, ${this.#top}px) scale(${this.#scale})`;
        this.#picture.style.setProperty('--scale', this.#scale);
        this.#picture.classList.toggle('pixels', zoom > 1.001);
        this.#divide(Math.max(this.#left, 0), Math.min(this.#left + shownWidth, width));
        this.#onZoom(Math.round(100 * zoom), this.#isFitted);
    }

    /** Cuts both pictures at the divider, which stands between two places of the box. */
    #divide(first, last) {
        const isComparing = this.#root.classList.contains('comparing');
        const x = first + this.#share * (last - first);
        const cut = isComparing ? (x - this.#left) / this.#scale : 0;
        this.#before.style.clipPath = `inset(0 ${Math.max(0, this.#size.width - cut)}px 0 0)`;
        this.#after.style.clipPath = `inset(0 0 0 ${Math.max(0, cut)}px)`;
        this.#divider.style.transform = `translateX(${x}px)`;
        this.#divider.setAttribute('aria-valuenow', Math.round(100 * this.#share));
    }

    #moveDivider(x) {
        const first = Math.max(this.#left, 0);
        const last = Math.min(this.#left + this.#size.width * this.#scale, this.#box.width);
        this.#share = limited((x - first) / (last - first), 0, 1);
        this.#arrange();
    }

    #wheel(event) {
        event.preventDefault();
        const { x, y } = this.#at(event);
        this.#zoomBy(Math.exp(-event.deltaY * (event.deltaMode === 1 ? 20 : 1) * wheelStep), x, y);
    }

    #at(event) {
        const box = this.#root.getBoundingClientRect();
        return { x: event.clientX - box.left, y: event.clientY - box.top };
    }

    #press(event) {
        if (event.button !== 0 || event.target.closest('button, input')) return;
        if (this.#pick) return this.#takeColor(this.#at(event));
        this.#root.setPointerCapture(event.pointerId);
        const isDivider = event.target.closest('.divider') !== null;
        this.#pointers.set(event.pointerId, { ...this.#at(event), isDivider });
        (isDivider ? this.#divider : this.#root).focus({ preventScroll: true });
        event.preventDefault();
    }

    #drag(event) {
        const before = this.#pointers.get(event.pointerId);
        if (!before) return;
        const now = this.#at(event);
        const other = [...this.#pointers].find(([id]) => id !== event.pointerId)?.[1];
        this.#pointers.set(event.pointerId, { ...before, ...now });
        if (before.isDivider) return this.#moveDivider(now.x);
        if (other) {
            const distance = (point) => Math.hypot(point.x - other.x, point.y - other.y);
            this.#zoomBy(distance(now) / Math.max(distance(before), 1), (now.x + other.x) / 2, (now.y + other.y) / 2);
        } else {
            this.#panBy(now.x - before.x, now.y - before.y);
        }
    }

    #release(event) {
        this.#pointers.delete(event.pointerId);
    }

    #takeColor({ x, y }) {
        const place = (at, begin, size, pixels) =>
            limited(Math.floor(((at - begin) / this.#scale / size) * pixels), 0, pixels - 1);
        const { width, height } = this.#before;
        const column = place(x, this.#left, this.#size.width, width);
        const row = place(y, this.#top, this.#size.height, height);
        const [red, green, blue] = this.#before.getContext('2d').getImageData(column, row, 1, 1).data;
        this.#pick((red << 16) | (green << 8) | blue);
        this.pickColor(null);
    }

    #key(event) {
        if (event.target !== this.#root || event.ctrlKey || event.metaKey || event.altKey) return;
        const actions = {
            ArrowLeft: () => this.#panBy(panStep, 0),
            ArrowRight: () => this.#panBy(-panStep, 0),
            ArrowUp: () => this.#panBy(0, panStep),
            ArrowDown: () => this.#panBy(0, -panStep),
            '+': () => this.zoomIn(),
            '=': () => this.zoomIn(),
            '-': () => this.zoomOut(),
            0: () => this.fit(),
            1: () => this.zoomTo(1),
        };
        if (!(event.key in actions)) return;
        actions[event.key]();
        event.preventDefault();
    }

    #dividerKey(event) {
        const steps = {
            ArrowLeft: -dividerStep,
            ArrowDown: -dividerStep,
            ArrowRight: dividerStep,
            ArrowUp: dividerStep,
        };
        const ends = { Home: 0, End: 1 };
        if (event.key in steps) this.#share = limited(this.#share + steps[event.key], 0, 1);
        else if (event.key in ends) this.#share = ends[event.key];
        else return;
        this.#arrange();
        event.preventDefault();
    }
}
