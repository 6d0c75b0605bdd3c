// SPDX-License-Identifier: MIT
// The dialog that saves a clip: as what, which stretch of it, and how far it is.
import { ClipReader } from './clip_reader.mjs';
import { element, iconButton } from './dom.mjs';
import { Cancelled, Control, undisturbed } from './export_control.mjs';
import { exportAnimatedPng, exportPngs, pictureFormats } from './export_pictures.mjs';
import { openTarget } from './export_target.mjs';
import { canEncode, exportVideo, videoFormats } from './export_video.mjs';
import { say } from './language.mjs';
import { PageError } from './texts.mjs';

const formats = { ...videoFormats, ...pictureFormats };
const writers = { png: exportPngs, apng: exportAnimatedPng };
const pictureNames = { png: 'pngFiles', apng: 'animatedPng' };

/** As clocks show it: 0:07, 12:30, 1:02:03. */
export function clockText(seconds) {
    const whole = Math.max(0, Math.round(seconds));
    const parts = [Math.floor(whole / 3600), Math.floor(whole / 60) % 60, whole % 60];
    const [first, ...others] = parts[0] > 0 ? parts : parts.slice(1);
    return [first, ...others.map((part) => String(part).padStart(2, '0'))].join(':');
}

const sentence = (error) => (error instanceof PageError ? say(error.text, error.values) : error.message);

function options(texts, chosen) {
    return Object.entries(texts).map(([value, text]) => element('option', { value, selected: value === chosen }, text));
}

const field = (text, control) => element('label', { className: 'field' }, element('span', {}, say(text)), control);

export class ExportDialog {
    #dialog;
    #tell;
    #control = null; // of the export that runs
    #isOpening = false;
    #reader = null;
    #parts;
    #chosen = { format: 'vp9', quality: 'good' };

    /** `tell(text)` says what was done. */
    constructor(dialog, tell) {
        this.#dialog = dialog;
        this.#tell = tell;
        dialog.addEventListener('cancel', (event) => {
            if (!this.#control) return;
            event.preventDefault();
            this.#control.cancel();
        });
        dialog.addEventListener('close', () => this.#reader.close());
    }

    /** `job` is { file, name, stem, chain, lookBack }, the chain as its text. Throws PageError. */
    async open(job) {
        if (this.#isOpening || this.#dialog.open) return;
        this.#isOpening = true;
        try {
            const reader = job.file && (await ClipReader.open(job.file, job.name));
            if (!reader) throw new PageError('cannotDecode', { name: job.name });
            this.#reader = reader;
            this.#build(job);
            this.#dialog.showModal();
        } finally {
            this.#isOpening = false;
        }
        await this.#choose();
    }

    #build(job) {
        const reader = this.#reader;
        const last = reader.frames - 1;
        const number = (value) =>
            element('input', { type: 'number', min: 0, max: last, step: 1, value, required: true });
        const box = (checked) => element('input', { type: 'checkbox', checked });
        const names = Object.fromEntries(
            Object.entries(formats).map(([key, { name }]) => [key, pictureNames[key] ? say(pictureNames[key]) : name]),
        );
        const grades = { small: say('qualitySmall'), good: say('qualityGood'), best: say('qualityBest') };
        const parts = (this.#parts = {
            format: element('select', {}, ...options(names, this.#chosen.format)),
            quality: element('select', {}, ...options(grades, this.#chosen.quality)),
            first: number(0),
            last: number(last),
            sound: box(true),
            alpha: box(reader.hasAlpha),
            note: element('p', { className: 'note', role: 'alert' }),
            start: element('button', { className: 'primary start' }, say('saveAs')),
        });
        const { start, note, ...controls } = parts;
        for (const [name, control] of Object.entries(controls)) control.name = name;
        const fields = {
            quality: field('quality', parts.quality),
            sound: field('sound', parts.sound),
            alpha: field('keepAlpha', parts.alpha),
        };
        parts.fields = fields;
        const close = iconButton('remove', say('close'));
        close.onclick = () => this.#dialog.close();
        const form = element(
            'form',
            { method: 'dialog', noValidate: true },
            field('format', parts.format),
            fields.quality,
            field('firstFrame', parts.first),
            field('lastFrame', parts.last),
            fields.sound,
            fields.alpha,
            note,
            element('footer', {}, start),
        );
        for (const control of [parts.format, parts.quality]) control.onchange = () => this.#choose();
        form.onsubmit = (event) => {
            event.preventDefault();
            this.#save(job);
        };
        parts.form = form;
        parts.running = this.#progress();
        const header = element('header', {}, element('h2', { id: 'export-title' }, say('saveVideo')), close);
        parts.close = close;
        this.#dialog.replaceChildren(header, form, parts.running.root);
    }

    #progress() {
        const bar = element('progress', { max: 1, value: 0, 'aria-label': say('saveVideo') });
        const text = element('output', {}, say('exportBegins'));
        const pause = element('button', { type: 'button', className: 'hold' }, say('pause'));
        const cancel = element('button', { type: 'button', className: 'cancel' }, say('cancel'));
        pause.onclick = () => {
            const control = this.#control;
            if (control.isPaused) control.resume();
            else control.pause();
            pause.textContent = say(control.isPaused ? 'resume' : 'pause');
            this.#show();
        };
        cancel.onclick = () => this.#control?.cancel();
        const root = element('div', { hidden: true }, bar, text, element('footer', {}, pause, cancel));
        return { root, bar, text, pause, done: 0, all: 1, left: null };
    }

    /** What the chosen format has to say, and what goes with it. */
    async #choose() {
        const { format, quality, fields, start, note } = this.#parts;
        this.#chosen = { format: format.value, quality: quality.value };
        const chosen = formats[format.value];
        const isVideo = 'codec' in chosen;
        fields.quality.hidden = !isVideo;
        fields.sound.hidden = !isVideo || !this.#reader.hasSound;
        fields.alpha.hidden = isVideo ? !chosen.keepsAlpha : format.value !== 'apng';
        const can = !isVideo || (await canEncode(chosen, this.#reader, quality.value));
        if (format.value !== this.#chosen.format) return;
        note.textContent = can ? '' : say('noEncoder', { format: chosen.name });
        start.disabled = !can;
    }

    #stretch() {
        const { first, last } = this.#parts;
        const stretch = { first: first.valueAsNumber, last: last.valueAsNumber };
        const most = this.#reader.frames - 1;
        const isOne = Number.isInteger(stretch.first) && Number.isInteger(stretch.last);
        if (!isOne || stretch.first < 0 || stretch.first > stretch.last || stretch.last > most) {
            throw new PageError('badStretch', { last: most });
        }
        return stretch;
    }

    async #save({ chain, lookBack, stem }) {
        const { format, quality, sound, alpha, note } = this.#parts;
        const chosen = formats[format.value];
        note.textContent = '';
        try {
            const stretch = this.#stretch();
            if (stretch.last - stretch.first >= chosen.most) {
                throw new PageError('tooManyFrames', { most: chosen.most });
            }
            const target = await openTarget(`${stem}-vireo${chosen.extension}`, chosen.type);
            if (!target) return;
            const job = {
                reader: this.#reader,
                chain,
                lookBack,
                stretch,
                format: chosen,
                quality: quality.value,
                sound: sound.checked,
                alpha: alpha.checked && !this.#parts.fields.alpha.hidden,
            };
            const [text, words] = (await this.#run(job, target, writers[format.value] ?? exportVideo)) ?? ['saved'];
            this.#dialog.close();
            this.#tell(say(text, { name: target.name, ...words }));
        } catch (error) {
            note.textContent = error instanceof Cancelled ? say('exportCancelled') : sentence(error);
        }
    }

    async #run(job, target, write) {
        const { running } = this.#parts;
        const control = (this.#control = new Control());
        const all = job.stretch.last - job.stretch.first + 1;
        Object.assign(running, { done: 0, all, left: null });
        this.#showRunning(true);
        const progress = (state) => this.#show(Object.assign(running, state));
        try {
            return await undisturbed(async () => {
                const note = await write({ ...job, control, progress }, target);
                await target.finish();
                return note;
            });
        } catch (error) {
            await target.abandon();
            throw error;
        } finally {
            this.#control = null;
            this.#showRunning(false);
        }
    }

    #showRunning(isRunning) {
        const { form, running, close, start } = this.#parts;
        running.bar.value = 0;
        running.text.textContent = say('exportBegins');
        running.pause.textContent = say('pause');
        form.hidden = isRunning;
        running.root.hidden = !isRunning;
        close.hidden = isRunning;
        (isRunning ? running.pause : start).focus();
    }

    #show() {
        const { running } = this.#parts;
        const { done, all, left, bar, text } = running;
        bar.value = done / all;
        const values = { done, all, time: left === null ? '' : clockText(left) };
        const name = this.#control?.isPaused ? 'exportPaused' : left === null ? 'exportDone' : 'exportLeft';
        if (done > 0 || this.#control?.isPaused) text.textContent = say(name, values);
    }
}
