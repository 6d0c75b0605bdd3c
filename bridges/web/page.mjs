// SPDX-License-Identifier: MIT
// The page: what is open, the chain over it, and who hears of changes.
import { addressOf, parseAddress } from './address.mjs';
import { keepForLater, takeFiles } from './app.mjs';
import { assetBytes, engineProgram } from './assets.mjs';
import { FilterUse, parseSettings, readUses, usesOf, wholeText, writtenUses } from './chain.mjs';
import { ChainList } from './chain_list.mjs';
import { download, element } from './dom.mjs';
import { undisturbed } from './export_control.mjs';
import { clockText, ExportDialog } from './export_dialog.mjs';
import { openTarget, removeLeftovers } from './export_target.mjs';
import { FilterPicker } from './filter_picker.mjs';
import { Gestures, History, listenToUndo } from './history.mjs';
import { allTexts, browserLanguage, languages, say, speak } from './language.mjs';
import { Looks } from './looks.mjs';
import { Measuring } from './measuring.mjs';
import { Recorder, recordingFormat } from './recorder.mjs';
import { Renderer } from './renderer.mjs';
import { openCamera, openSource } from './sources.mjs';
import { Stage } from './stage.mjs';
import { TakeAlong } from './take_along.mjs';
import { PageError } from './texts.mjs';
import { Tracks } from './tracks.mjs';
import { Variants } from './variants.mjs';
import { loadVireo } from './vireo/index.mjs';

const samples = {
    fruit: { text: 'sampleFruit', file: 'fruit.jpg', type: 'image/jpeg' },
    cutout: { text: 'sampleCutOut', file: 'cutout.png', type: 'image/png' },
    clip: { text: 'sampleClip', file: 'clip.mp4', type: 'video/mp4' },
};
const firstAddress = '#f=Solarize:threshold=60%&sample=fruit';

/** Thumbnails show this frame, at which every filter that depends on time does something. */
const tellingFrame = 13;
const thumbnailSide = 208;

/** The address follows the chain at leisure: browsers refuse too many changes. */
const addressDelay = 250;

const find = (selector) => document.querySelector(selector);

const state = {
    engine: null,
    language: 'en',
    chain: [],
    other: null, // a second chain, to compare with
    isB: false, // whether the chain is the second of the two
    isBeside: false, // whether the other one stands for the picture before
    whole: null,
    source: null,
    sample: null,
    frame: 0,
    isPlaying: false,
    showsTracks: false,
    recorder: null,
};

const moment = () => ({ frame: state.frame, rate: state.source?.rate ?? 25 });

function tell(text, isError = false) {
    const line = find('.message');
    line.setAttribute('role', isError ? 'alert' : 'status');
    line.textContent = '';
    line.classList.remove('shown');
    line.classList.toggle('error', isError);
    void line.offsetWidth; // starts the line's fading again
    line.textContent = text;
    line.classList.add('shown');
}

const tellError = (error) => tell(error instanceof PageError ? say(error.text, error.values) : error.message, true);

/** Runs what may fail: its one sentence is told, and all stays as it was. */
async function attempt(work) {
    try {
        return await work();
    } catch (error) {
        tellError(error);
    }
}

const stage = new Stage(find('.stage'), (percent, isFitted) => {
    find('.percent').textContent = `${percent} %`;
    find('.fit').setAttribute('aria-pressed', isFitted);
});

const renderer = new Renderer({
    before: (picture) => stage.before(picture),
    after: (picture, isPreview) => {
        stage.after(picture);
        find('.stage').dataset.shown = isPreview ? 'preview' : 'full';
        measuring.update();
        document.dispatchEvent(new CustomEvent('shown', { detail: { isPreview } }));
    },
    failed: tellError,
});

/** A value of the moment: a clip that plays stops for a key frame, and a camera takes none. */
function setValue(use, parameter, value) {
    if (state.source.isLive || !use.isKeyed(parameter)) return use.set(parameter, value);
    if (state.isPlaying) pause();
    use.setAt(parameter, value, moment());
}

const chainList = new ChainList(find('.list'), {
    set: setValue,
    changed: () => changed(),
    opened: () => {
        tracks.update();
        measuring.update();
    },
    moment,
    pick: (take) => {
        if (state.isBeside) compareWith(false);
        stage.pickColor(take);
        tell(say('picking'));
    },
    tell,
});
const tracks = new Tracks(find('.tracks'), {
    chain: () => state.chain,
    isOpen: (use) => chainList.isOpen(use),
    clip: () => ({ frames: state.source.frames, rate: state.source.rate }),
    frame: () => state.frame,
    seek: (frame) => {
        if (state.isPlaying) pause();
        showFrameNumber(frame);
    },
    changed: () => changed(),
    tell,
});
const steps = new History();
const gestures = new Gestures(window);
const takeAlong = new TakeAlong(find('.take-along'), tell);
const exportDialog = new ExportDialog(find('.export'), tell);
const picker = new FilterPicker(find('.picker'), (filter) =>
    chainList.add(new FilterUse(state.engine, String(filter.id))),
);

const looks = new Looks(find('.looks'), {
    engine: () => state.engine,
    settings: () => (state.chain.some((use) => use.isOn) ? state.whole.chain.settings() : ''),
    thumbnails: (chains) => thumbnails(chains),
    take: (name, text) => {
        state.chain = usesOf(state.engine, state.engine.chain(text));
        chainList.show(state.chain);
        changed();
        tell(say('lookTaken', { name }));
    },
    tell,
});

function thumbnails(chains) {
    const frames = Math.max(state.source.frames, 2 * tellingFrame);
    return renderer.thumbnails(chains, tellingFrame, frames, thumbnailSide);
}

const measuring = new Measuring({
    scopes: () => chainList.scopes,
    chain: () => state.chain,
    measured: (chains) => renderer.measured(chains, { ...moment(), frames: state.source.frames }),
});

/** Makes one chain of the filters that are switched on: what is rendered and handed over. */
function join() {
    state.whole?.chain.dispose();
    const text = wholeText(state.chain);
    const chain = state.engine.chain(text);
    state.whole = { chain, text, ...chain.needs() };
    state.beside = null;
    if (!state.isBeside || state.other === null) return;
    const beside = wholeText(state.other);
    const other = state.engine.chain(beside);
    const { earlierFrames, readsTime } = other.needs();
    other.dispose();
    state.whole.earlierFrames = Math.max(state.whole.earlierFrames, earlierFrames);
    state.whole.readsTime ||= readsTime;
    state.beside = beside;
}

/** Goes to the other of the two chains, which begins as a copy. */
function swap() {
    state.other ??= readUses(state.engine, writtenUses(state.chain));
    [state.chain, state.other, state.isB] = [state.other, state.chain, !state.isB];
    chainList.show(state.chain);
    changed();
}

function compareWith(isBeside) {
    state.isBeside = isBeside;
    changed();
}

const variants = new Variants(document, {
    swap: () => attempt(swap),
    compare: (isBeside) => attempt(() => compareWith(isBeside)),
});

const hasTracks = () => state.showsTracks && !state.source.isLive;
const isTimed = () => !state.source.isStill || state.whole.readsTime || hasTracks();

/** Brings back a step of the history, the filters open that are open now. */
function goTo(written) {
    if (written === undefined) return;
    const isOpen = state.chain.map((use) => chainList.isOpen(use));
    const { chain, other, isB } = JSON.parse(written);
    state.chain = readUses(state.engine, chain);
    state.other = other === null ? null : readUses(state.engine, other);
    state.isB = isB;
    const open = state.chain.filter((_, index) => isOpen[index]);
    chainList.show(state.chain, open);
    changed();
}

function step() {
    const { chain, other, isB } = state;
    return JSON.stringify({ chain: writtenUses(chain), other: other && writtenUses(other), isB });
}

const undo = () => goTo(steps.undo());
const redo = () => goTo(steps.redo());

function job() {
    const { whole, source, isPlaying } = state;
    return {
        chain: whole.text,
        beside: state.beside,
        ...moment(),
        frames: source.frames,
        lookBack: whole.earlierFrames,
        isPlaying,
    };
}

/** A file's name without its last extension. */
const stem = (name) => name.replace(/\.[^.]+$/, '');

let addressTimer;

/** Something of the chain, the frame or the source changed: everything that shows it follows. */
function changed() {
    join();
    if (!isTimed() && state.isPlaying) pause();
    renderer.request(job()); // the worker begins while the page shows the rest
    steps.record(step(), gestures.now);
    variants.show({ isB: state.isB, hasOther: state.other !== null, isBeside: state.beside !== null });
    find('.undo').disabled = !steps.canUndo;
    find('.redo').disabled = !steps.canRedo;
    const { chain, source, sample, frame } = state;
    const clip =
        source.isStill || source.isLive ? null : { rate: Number(source.rate.toFixed(6)), frames: source.frames };
    const input = source.isLive ? 'clip.mp4' : source.name;
    const address = addressOf({ chain, sample, frame: source.isLive ? 0 : frame });
    takeAlong.show({
        chain,
        settings: () => state.whole.chain.settings(),
        clip,
        moment: moment(),
        input,
        output: `${stem(input)}-vireo${source.isStill ? '.png' : '.mp4'}`,
        link: location.href.replace(/#.*/, '') + address,
    });
    find('.none').hidden = chain.length > 0;
    find('.keys').hidden = source.isLive;
    find('.keys').setAttribute('aria-pressed', state.showsTracks);
    find('.tracks').hidden = !hasTracks();
    find('.timeline').hidden = !isTimed();
    showFrame();
    clearTimeout(addressTimer);
    if (!state.isPlaying) addressTimer = setTimeout(() => history.replaceState(null, '', address), addressDelay);
}

function showFrame() {
    const { frame, source } = state;
    const scrub = find('.scrub');
    Object.assign(scrub, { max: Math.max(source.frames - 1, 0), value: frame, disabled: source.isLive });
    scrub.style.setProperty('--share', frame / Math.max(source.frames - 1, 1));
    const text = say('frameOf', { frame, frames: source.frames });
    scrub.setAttribute('aria-valuetext', text);
    find('.frame').textContent = source.isLive ? String(frame) : `${frame} / ${source.frames - 1}`;
    chainList.update();
    tracks.update();
}

function showFrameNumber(frame) {
    state.frame = frame;
    changed();
}

function showPlaying() {
    const button = find('.play');
    button.classList.toggle('playing', state.isPlaying);
    for (const name of ['title', 'aria-label']) button.setAttribute(name, say(state.isPlaying ? 'pause' : 'play'));
}

function play() {
    state.isPlaying = true;
    state.source.play(showFrameNumber, state.frame);
    showPlaying();
}

function pause() {
    state.source.pause();
    state.isPlaying = false;
    showPlaying();
    changed();
}

let openings = 0;
let shownOpening = 0;

/** Shows a source once it is there, unless one that was asked for later is there before; says whether it did. */
async function open(coming, sample, frame) {
    const opening = ++openings;
    const source = await coming;
    if (opening < shownOpening) {
        source.close();
        return false;
    }
    shownOpening = opening;
    show(source, sample, frame);
    return true;
}

/** Puts a source into the page. `sample` is its name where it is bundled. */
function show(source, sample, frame = 0) {
    state.source?.close();
    Object.assign(state, { source, sample, frame: Math.min(frame, Math.max(source.frames - 1, 0)), isPlaying: false });
    stage.pickColor(null);
    stage.open(source.width, source.height);
    delete find('.stage').dataset.shown;
    renderer.open(source);
    find('.size').textContent = `${source.width} × ${source.height}`;
    for (const button of document.querySelectorAll('.samples button')) {
        button.setAttribute('aria-pressed', button.dataset.sample === sample);
    }
    state.recorder?.stop();
    find('.record').hidden = !source.isLive;
    find('.save-video').hidden = source.isStill || source.isLive;
    showPlaying();
    changed();
    if (source.isLive) play();
}

const readPng = (bytes) => renderer.readPng(bytes);

async function sampleSource({ file, type }) {
    return openSource(new Blob([await assetBytes(`samples/${file}`)], { type }), file, readPng);
}

const openSample = (name, frame) => open(sampleSource(samples[name]), name, frame);

/** A settings file becomes the chain, anything else the picture. */
async function openFile(file) {
    const name = file.name || 'picture.png';
    if (file.type === 'application/json' || name.endsWith('.json')) {
        state.chain = parseSettings(state.engine, name, await file.text());
        state.showsTracks ||= state.chain.some((use) => use.isAnimated());
        chainList.show(state.chain);
        changed();
    } else if (!(await open(openSource(file, name, readPng), null))) {
        return;
    }
    tell(say('opened', { name }));
}

/** Takes over what an address says; where it names no picture, the open one stays. */
async function follow(hash) {
    const { sample, frame, language } = parseAddress(hash, state.engine);
    for (const [word, value, known] of [
        ['sample', sample, samples],
        ['language', language, languages],
    ]) {
        if (value !== null && !Object.hasOwn(known, value))
            throw new PageError('badAddress', { text: `${word}=${value}` });
    }
    if (language !== null && language !== state.language) speakLanguage(language);
    const { chain } = parseAddress(hash, state.engine); // in the language that is spoken now
    state.chain = chain;
    state.showsTracks ||= chain.some((use) => use.isAnimated());
    const isOpen = state.source !== null && (sample === null || sample === state.sample);
    if (isOpen) {
        state.frame = Math.min(frame, Math.max(state.source.frames - 1, 0));
        changed();
    } else {
        await openSample(sample ?? 'fruit', frame);
    }
    chainList.show(state.chain); // another address may have come meanwhile
    tracks.update();
}

function speakLanguage(language) {
    const { engine } = state;
    engine.setLanguage(language);
    speak(allTexts.map((text) => engine.translate(text)));
    state.language = language;
    document.documentElement.lang = language;
    find('.language').value = language;
    for (const node of document.querySelectorAll('[data-text]')) node.textContent = say(node.dataset.text);
    for (const node of document.querySelectorAll('[data-label]'))
        node.setAttribute('aria-label', say(node.dataset.label));
    for (const node of document.querySelectorAll('[data-title]')) {
        node.title = say(node.dataset.title);
        node.setAttribute('aria-label', node.dataset.text ? `${node.textContent}: ${node.title}` : node.title);
    }
    showPlaying();
    showRecording();
    if (state.source === null) return;
    chainList.rebuild();
    changed();
}

/** The language that was chosen here before, as far as the browser keeps it. */
const rememberedLanguage = {
    get() {
        try {
            const language = localStorage.getItem('language');
            return language in languages ? language : null;
        } catch {
            return null;
        }
    },
    set(language) {
        try {
            localStorage.setItem('language', language);
        } catch {
            // The choice then lasts as long as the page.
        }
    },
};

async function save() {
    const { source, frame } = state;
    const number = source.isStill || source.isLive ? '' : `-${String(frame).padStart(4, '0')}`;
    const name = `${stem(source.name)}-vireo${number}.png`;
    download(name, await renderer.png(job()), 'image/png');
    tell(say('saved', { name }));
}

function saveVideo() {
    if (state.isPlaying) pause();
    const { whole, source } = state;
    const { file, name } = source;
    return exportDialog.open({ file, name, stem: stem(name), chain: whole.text, lookBack: whole.earlierFrames });
}

function showRecording() {
    find('.record').textContent = say(state.recorder ? 'stopRecording' : 'record');
    find('.recording').hidden = state.recorder === null;
}

const showRecorded = (seconds) => (find('.recording').textContent = say('recording', { time: clockText(seconds) }));

/** Records until it is asked again, or another picture is opened. */
async function record() {
    if (state.recorder) return state.recorder.stop();
    const { extension, type } = recordingFormat;
    const target = await openTarget(`${stem(state.source.name)}-vireo${extension}`, type);
    if (!target) return;
    const settings = () => ({ chain: state.whole.text, lookBack: state.whole.earlierFrames });
    state.recorder = new Recorder(state.source, settings);
    showRecorded(0);
    showRecording();
    try {
        await undisturbed(async () => {
            await state.recorder.run(target, showRecorded);
            await target.finish();
        });
        tell(say('saved', { name: target.name }));
    } catch (error) {
        await target.abandon();
        throw error;
    } finally {
        state.recorder = null;
        showRecording();
    }
}

function listen() {
    const click = (selector, work) => (find(selector).onclick = () => attempt(work));
    const file = find('.file');
    click('.open', () => file.click());
    file.onchange = () =>
        attempt(async () => {
            const [chosen] = file.files;
            file.value = ''; // so that the same file may be chosen again
            if (chosen) await openFile(chosen);
        });
    click('.camera', () => open(openCamera(say('camera')), null));
    click('.save', save);
    click('.save-video', saveVideo);
    click('.record', record);
    click('.add', () => {
        const filters = state.engine.filters();
        return picker.open(filters, thumbnails(filters.map((filter) => String(filter.id))));
    });
    click('.look', () => looks.open());
    click('.keys', () => {
        state.showsTracks = !state.showsTracks;
        changed();
    });
    click('.undo', undo);
    click('.redo', redo);
    listenToUndo(window, { undo: () => attempt(undo), redo: () => attempt(redo) });
    click('.play', () => (state.isPlaying ? pause() : play()));
    find('.scrub').oninput = (event) => {
        if (state.isPlaying) pause();
        showFrameNumber(Number(event.target.value));
    };
    const compare = find('.compare input');
    compare.onchange = () => (stage.isComparing = compare.checked);
    compare.checked = stage.isComparing = true;
    click('.zoom .in', () => stage.zoomIn());
    click('.zoom .out', () => stage.zoomOut());
    click('.fit', () => stage.fit());
    click('.actual', () => stage.zoomTo(1));

    const language = find('.language');
    language.append(...Object.entries(languages).map(([value, text]) => element('option', { value }, text)));
    language.onchange = () =>
        attempt(() => {
            rememberedLanguage.set(language.value);
            speakLanguage(language.value);
        });
    for (const [name, { text }] of Object.entries(samples)) {
        const button = element('button', {
            type: 'button',
            className: 'quiet',
            'data-text': text,
            'data-sample': name,
        });
        button.onclick = () => attempt(() => openSample(name));
        find('.samples').append(button);
    }
    listenToFiles();
    addEventListener('hashchange', () => attempt(() => follow(location.hash)));
}

/** Files come by drop and by paste. */
function listenToFiles() {
    const body = document.body;
    addEventListener('dragover', (event) => {
        event.preventDefault();
        body.classList.add('dropping');
    });
    addEventListener('dragleave', (event) => {
        if (event.relatedTarget === null) body.classList.remove('dropping');
    });
    addEventListener('drop', (event) => {
        event.preventDefault();
        body.classList.remove('dropping');
        const [file] = event.dataTransfer.files;
        if (file) attempt(() => openFile(file));
    });
    addEventListener('paste', (event) => {
        const [file] = event.clipboardData.files;
        if (file) attempt(() => openFile(file));
    });
}

async function start() {
    try {
        [state.engine] = await Promise.all([loadVireo(await engineProgram()), renderer.started]);
        listen();
        speakLanguage(rememberedLanguage.get() ?? browserLanguage());
    } catch {
        throw new PageError('noEngine');
    }
    try {
        await follow(location.hash.length > 1 ? location.hash : firstAddress);
    } catch (error) {
        await follow(firstAddress);
        tellError(error);
    }
    document.body.classList.add('ready');
    await takeFiles((file) => attempt(() => openFile(file)));
    await Promise.all([keepForLater(), removeLeftovers()]);
}

attempt(start);
