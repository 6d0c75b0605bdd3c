// SPDX-License-Identifier: MIT
// Clips that the page renders into files, held to the command line's frames and to what ffprobe tells of them.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import path from 'node:path';
import { after, before, describe, test } from 'node:test';

import { drop, launch, open, pageFolder, root, serve, shown } from './browser.mjs';

const sample = path.join(pageFolder, 'samples/clip.mp4');
const vireo = path.join(root, 'build/linux/bin/vireo');
const frames = 75; // of the sample, at 25 a second
const long = Boolean(process.env.VIREO_LONG);

const folder = mkdtempSync(path.join(tmpdir(), 'vireo-export-'));
const fileOf = (name) => path.join(folder, name);
const run = (program, ...words) =>
    execFileSync(program, words, { cwd: folder, encoding: 'utf8', stdio: 'pipe', maxBuffer: 1 << 28 });
const ffmpeg = (...words) => run('ffmpeg', '-v', 'error', '-y', ...words);
const tone = (seconds) => ['-f', 'lavfi', '-i', `sine=frequency=440:sample_rate=44100:duration=${seconds}`];

/**
 * The sample with a tone, which is AAC in MP4 and Opus in WebM. All are made before the walks begin: this process serves
 * the page to them, and cannot while it waits for a program.
 */
function makeClips() {
    const withTone = ['-i', sample, ...tone(3), '-map', '0:v', '-map', '1:a'];
    const vp9 = ['-c:v', 'libvpx-vp9', '-deadline', 'realtime', '-cpu-used', '8'];
    ffmpeg(...withTone, '-c:v', 'copy', '-c:a', 'aac', 'aac.mp4');
    ffmpeg(...withTone, ...vp9, '-t', '1', '-b:v', '2M', '-s', '320x180', '-c:a', 'libopus', 'opus.webm');
    // Every third frame is missing, and the others keep their times.
    ffmpeg('-i', sample, '-vf', 'select=mod(n\\,3),scale=320:180', '-fps_mode', 'vfr', 'uneven.mp4');
    ffmpeg('-i', sample, '-t', '1.4', '-vf', 'scale=320:180,format=gbrp', ...vp9, '-lossless', '1', 'rgb.webm');
    const fade = 'color=red:s=64x48:d=1,format=yuva420p,fade=in:d=1:alpha=1';
    ffmpeg('-f', 'lavfi', '-i', fade, ...vp9, 'fade.webm');
    const bytes = readFileSync(fileOf('opus.webm'));
    bytes.fill(0x55, bytes.length >> 1, (bytes.length >> 1) + 20_000);
    writeFileSync(fileOf('broken.webm'), bytes);
    const small = ['-s', '192x108', '-preset', 'ultrafast', '-c:a', 'copy'];
    if (long) ffmpeg('-stream_loop', '199', '-i', 'aac.mp4', ...small, 'long.mp4');
}

function probed(file) {
    const { streams, format } = JSON.parse(
        run('ffprobe', '-v', 'error', '-count_frames', '-show_streams', '-show_format', '-of', 'json', file),
    );
    const of = (type) => streams.find((stream) => stream.codec_type === type);
    return { video: of('video'), sound: of('audio'), seconds: Number(format.duration) };
}

const times = (file) =>
    run('ffprobe', '-v', 'error', '-select_streams', 'v', '-show_entries', 'packet=pts_time', '-of', 'csv=p=0', file)
        .trim()
        .split(/\s+/)
        .map(Number.parseFloat)
        .sort((a, b) => a - b);

/** A sum of each packet that comes out. */
const sums = (...words) =>
    ffmpeg(...words, '-f', 'framemd5', '-')
        .split('\n')
        .filter((line) => /^\d/.test(line))
        .map((line) => line.match(/[0-9a-f]{32}/)[0]);
const soundSums = (file) => sums('-i', file, '-map', '0:a', '-c', 'copy');
const pictureSums = (...input) => sums(...input, '-map', '0:v', '-pix_fmt', 'rgba');

/** The least PSNR, in decibels, of a file's frames against PNG files of a pattern. */
function leastPsnr(file, pattern, format = 'gbrp') {
    const side = (i) => `[${i}:v]settb=1/25,setpts=N,format=${format}`;
    const told = run('ffmpeg', '-hide_banner', '-v', 'info', '-nostats', '-i', file, '-framerate', '25', '-i', pattern,
        ...['-lavfi', `${side(0)}[a];${side(1)}[b];[a][b]psnr=stats_file=psnr.log`, '-f', 'null', '-']);
    assert.equal(told, '');
    const values = readFileSync(fileOf('psnr.log'), 'utf8').match(/(?<=psnr_avg:)\S+/g).map(Number);
    return { least: Math.min(...values), count: values.length };
}

const note = (page) => page.textContent('.export .note');
const message = (page) => page.textContent('.message');

/** Opens a clip over a chain, and the dialog with what is chosen in it: { format, first, last, alpha, … }. */
async function openExport(page, chain, file, choices = {}) {
    await page.evaluate((hash) => (location.hash = hash), `#${chain}`);
    await shown(page, () => drop(page, file, `video/${file.split('.').at(-1)}`, readFileSync(fileOf(file))));
    await page.click('.save-video');
    await page.waitForSelector('.export[open] .start');
    for (const [name, value] of Object.entries(choices)) {
        const control = page.locator(`.export [name=${name}]`);
        if (typeof value === 'boolean') await control.setChecked(value);
        else if (name === 'format') await control.selectOption(value);
        else await control.fill(String(value));
    }
}

/** Saves as one download, and gives its name in the tests' folder. */
async function saved(page, as) {
    const [download] = await Promise.all([page.waitForEvent('download'), page.click('.start')]);
    await download.saveAs(fileOf(as));
    await page.waitForSelector('.export', { state: 'hidden' });
    return as;
}

/** What a dialog of the browser's own would give: a file in its private folder. */
const chooseFile = (page, before) =>
    page.evaluate(async (text) => {
        const chosen = await (await navigator.storage.getDirectory()).getFileHandle('chosen.webm', { create: true });
        const writing = await chosen.createWritable();
        await writing.write(text);
        await writing.close();
        window.showSaveFilePicker = async () => chosen;
    }, before);

const chosenFile = async (page) =>
    Buffer.from(
        await page.evaluate(async () => {
            const chosen = await (await navigator.storage.getDirectory()).getFileHandle('chosen.webm');
            const bytes = new Uint8Array(await (await chosen.getFile()).arrayBuffer());
            return btoa(Array.from(bytes, (byte) => String.fromCharCode(byte)).join(''));
        }),
        'base64',
    );

/** A chain that leaves a hand the time to press a button. */
const slow = Array(12).fill('f=CameraBlur:percentblur=60').join('&');

const walks = [];
const walk = (name, work, options = {}) => walks.push({ name, work, options });

/** What the browser's processes take, in megabytes. */
function browserMemory() {
    const rows = run('ps', '-eo', 'pid=,ppid=,rss=').trim().split('\n');
    const processes = rows.map((row) => row.trim().split(/\s+/).map(Number));
    const of = (parent) =>
        processes
            .filter(([, ppid]) => ppid === parent)
            .reduce((sum, [pid, , kilobytes]) => sum + kilobytes / 1024 + of(pid), 0);
    return of(process.pid);
}

walk('a clip comes out whole, filtered as the command does it, with its sound', async (page) => {
    await openExport(page, 'f=Ghosting&f=HorizontalFlip', 'aac.mp4', { format: 'vp9' });
    const file = await saved(page, 'ghost.webm');
    assert.match(await message(page), /aac-vireo\.webm was saved, the sound encoded again as Opus/);
    const { video, sound, seconds } = probed(file);
    const { width, height } = probed('aac.mp4').video;
    assert.deepEqual(
        [video.codec_name, video.width, video.height, Number(video.nb_read_frames)],
        ['vp9', width, height, frames],
    );
    assert.deepEqual(times(file), times('aac.mp4').map((time) => Math.round(1000 * time) / 1000));
    assert.deepEqual([sound.codec_name, sound.channels], ['opus', 1]);
    assert.ok(Math.abs(seconds - 3) < 0.08, `${seconds} s`);
    run(vireo, 'render', 'aac.mp4', 'ghost%04d.png', '-f', 'Ghosting', '-f', 'HorizontalFlip', '--quiet');
    // The encoder's loss and half of the colours' resolution lie between them; frames too late stand below 27.
    const { least, count } = leastPsnr(file, 'ghost%04d.png');
    assert.ok(least > 35 && count === frames, `${least} dB over ${count} frames`);
});

walk('sound is copied where the container takes it, and frames keep uneven times', async (page) => {
    await openExport(page, 'f=Levels:rgbgamma=150', 'opus.webm', { format: 'av1' });
    const copied = await saved(page, 'copied.webm');
    assert.match(await message(page), /with the sound as it was/);
    assert.deepEqual(soundSums(copied), soundSums('opus.webm'));
    assert.equal(probed(copied).video.codec_name, 'av1');
    assert.deepEqual(times(copied), times('opus.webm'));

    await openExport(page, 'f=Levels:rgbgamma=150', 'aac.mp4', { format: 'h264' });
    const can = await page.isEnabled('.start');
    if (can) {
        const mp4 = await saved(page, 'copied.mp4');
        assert.deepEqual(soundSums(mp4), soundSums('aac.mp4'));
        assert.deepEqual([probed(mp4).video.codec_name, times(mp4).length], ['h264', frames]);
    } else {
        assert.match(await note(page), /cannot encode MP4 \(H\.264\)/);
        await page.keyboard.press('Escape');
    }

    await openExport(page, 'f=Solarize', 'uneven.mp4');
    const uneven = times(await saved(page, 'uneven.webm'));
    const expected = times('uneven.mp4');
    assert.equal(uneven.length, expected.length);
    uneven.forEach((time, i) => assert.ok(Math.abs(time - expected[i]) < 0.0011, `${time}, not ${expected[i]}`));
});

walk('pictures of a stretch are without loss', async (page) => {
    const choices = { format: 'png', first: 20, last: 29 };
    await openExport(page, 'f=Ghosting&f=Levels:rgbgamma=120@20f..200@29f', 'rgb.webm', choices);
    run('python3', '-m', 'zipfile', '-e', await saved(page, 'rgb.zip'), '.');
    run(vireo, 'render', 'rgb.webm', 'rgb%04d.png', '--frames', '20-29', '--quiet',
        ...['-f', 'Ghosting', '-f', 'Levels:rgbgamma=120@20f..200@29f']);
    const [ours, theirs] = [
        pictureSums('-start_number', '20', '-i', 'rgb-vireo-%04d.png'),
        pictureSums('-start_number', run('ls').match(/rgb(\d{4})\.png/)[1], '-i', 'rgb%04d.png'),
    ];
    assert.equal(ours.length, 10);
    assert.deepEqual(ours, theirs);

    await page.click('.save-video');
    await page.selectOption('.export [name=format]', 'apng');
    await page.fill('.export [name=first]', '20');
    await page.fill('.export [name=last]', '29');
    assert.deepEqual(pictureSums('-i', await saved(page, 'loop.png')), ours);
    assert.equal(probed('loop.png').video.r_frame_rate, '25/1');
});

walk('transparency is kept in WebM', async (page) => {
    await openExport(page, 'f=HorizontalFlip', 'fade.webm', { format: 'vp9' });
    assert.ok(await page.isChecked('.export [name=alpha]'));
    const file = await saved(page, 'faded.webm');
    ffmpeg('-c:v', 'libvpx-vp9', '-i', file, '-vf', 'alphaextract,scale=1:1', '-f', 'rawvideo', 'alpha.raw');
    const levels = readFileSync(fileOf('alpha.raw'));
    assert.equal(levels.length, 25);
    assert.ok(levels[0] < 8 && levels[12] > 90 && levels[12] < 160 && levels[24] > 230, levels.join(' '));
});

walk('an export is paused, resumed and cancelled, and the chosen file stays', async (page) => {
    await chooseFile(page, 'what was there');
    await openExport(page, slow, 'aac.mp4');
    await page.click('.start');
    await page.waitForFunction(() => document.querySelector('.export progress').value > 0);
    await page.click('.export .hold');
    await page.waitForTimeout(300);
    const held = await page.textContent('.export output');
    assert.match(held, /^Paused after \d+ of 75 frames$/);
    await page.waitForTimeout(500);
    assert.equal(await page.textContent('.export output'), held);
    assert.equal((await chosenFile(page)).toString(), 'what was there');
    assert.ok(await page.evaluate(() => !dispatchEvent(new Event('beforeunload', { cancelable: true }))));

    await page.keyboard.press('Enter'); // the button that pauses has the focus
    await page.waitForFunction((text) => document.querySelector('.export output').textContent !== text, held);
    await page.keyboard.press('Escape');
    await page.waitForSelector('.export form:not([hidden])');
    assert.equal(await note(page), 'Cancelled; nothing was saved.');
    assert.equal((await chosenFile(page)).toString(), 'what was there');
    assert.ok(await page.evaluate(() => dispatchEvent(new Event('beforeunload', { cancelable: true }))));

    await page.fill('.export [name=last]', '9');
    await page.click('.start');
    await page.waitForSelector('.export', { state: 'hidden' });
    writeFileSync(fileOf('chosen.webm'), await chosenFile(page));
    assert.equal(times('chosen.webm').length, 10);
});

walk('what goes wrong gets one sentence, and nothing is saved', async (page) => {
    const fails = async (sentence) => {
        await page.click('.start');
        await page.waitForFunction(() => document.querySelector('.export .note').textContent !== '');
        assert.match(await note(page), sentence);
        assert.equal((await chosenFile(page)).toString(), 'what was there');
    };
    await chooseFile(page, 'what was there');
    await openExport(page, 'f=Solarize', 'broken.webm');
    await fails(/“broken\.webm” cannot be decoded to its end; nothing was saved/);
    await page.keyboard.press('Escape');

    await openExport(page, 'f=Solarize', 'aac.mp4', { first: 12, last: 11 });
    await fails(/from one to the same or a later one, within 0 to 74/);
    await page.fill('.export [name=last]', '40');

    await page.evaluate(() => {
        const { encode } = VideoEncoder.prototype;
        let count = 0;
        VideoEncoder.prototype.encode = function (...given) {
            if (++count === 8) {
                VideoEncoder.prototype.encode = encode;
                throw new DOMException('the encoder is gone', 'EncodingError');
            }
            return encode.apply(this, given);
        };
    });
    await fails(/The encoder of the browser failed at frame 19; nothing was saved/);

    const client = await page.context().newCDPSession(page);
    const { origin } = new URL(page.url());
    const room = (quotaSize) => client.send('Storage.overrideQuotaForOrigin', { origin, quotaSize });
    await room(20_000);
    await fails(/There is no room for chosen\.webm; nothing was saved/);
    await room(undefined);

    await page.evaluate(() => (VideoDecoder.isConfigSupported = async () => ({ supported: false })));
    await fails(/cannot read “aac\.mp4” frame by frame/);
});

walk('the dialog is all reached by keyboard, has names, and fits a phone in every language', async (page) => {
    await page.setViewportSize({ width: 360, height: 740 });
    await openExport(page, 'f=Solarize', 'opus.webm');
    for (const language of ['fr', 'de', 'ja', 'es', 'it', 'ko', 'en']) {
        await page.keyboard.press('Escape');
        await page.selectOption('.language', language);
        await page.waitForSelector(`html[lang=${language}]`);
        await page.click('.save-video');
        await page.waitForSelector('.export[open] .start:enabled');
        const [content, width] = await page.evaluate(() => {
            const dialog = document.querySelector('.export');
            return [dialog.scrollWidth, dialog.clientWidth];
        });
        assert.ok(content <= width, `${content} of ${width} pixels in the language ${language}`);
    }
    const names = new Set();
    for (let i = 0; i < 12; ++i) {
        await page.keyboard.press('Tab');
        names.add(
            await page.evaluate(() => {
                const node = document.activeElement;
                return node.getAttribute('aria-label') ?? node.labels?.[0]?.textContent ?? node.textContent.trim();
            }),
        );
    }
    for (const name of ['First frame', 'Last frame', 'Sound', 'Keep transparency', 'Save as…', 'Close']) {
        assert.ok(names.has(name), `${name} is not reached: ${[...names].join(', ')}`);
    }
    assert.ok([...names].some((name) => name.startsWith('Format')));
});

walk('a tab that is closed meanwhile leaves nothing that is in the way', async (page) => {
    await openExport(page, slow, 'aac.mp4');
    await page.click('.start');
    await page.waitForFunction(() => document.querySelector('.export progress').value > 0);
    const address = page.url();
    const context = page.context();
    await page.close();
    const next = await context.newPage();
    next.failures = [];
    await next.goto(address);
    await next.waitForSelector('body.ready');
    await next.evaluate(() => delete window.showSaveFilePicker);
    await openExport(next, 'f=Solarize', 'aac.mp4', { last: 4 });
    assert.equal(times(await saved(next, 'again.webm')).length, 5);
});

walk(
    'ten minutes need no more memory than one',
    async (page) => {
        await chooseFile(page, '');
        await page.evaluate(() => (location.hash = '#f=Ghosting'));
        await page.setInputFiles('.file', fileOf('long.mp4'));
        await page.waitForSelector('.save-video:not([hidden])');
        await page.click('.save-video');
        await page.click('.start');
        const reach = (share) =>
            page.waitForFunction((least) => document.querySelector('.export progress').value >= least, share, {
                timeout: 600_000,
                polling: 500,
            });
        await reach(0.1);
        const early = browserMemory();
        await reach(0.97);
        const late = browserMemory();
        await page.waitForSelector('.export', { state: 'hidden', timeout: 60_000 });
        assert.ok(late < 1.2 * early, `${early} MB after a minute, ${late} MB at the end`);
        const written = await page.evaluate(async () => {
            const chosen = await (await navigator.storage.getDirectory()).getFileHandle('chosen.webm');
            const { ClipReader } = await import('./clip_reader.mjs');
            return (await ClipReader.open(await chosen.getFile(), 'chosen.webm')).frames;
        });
        assert.equal(written, Number(probed('long.mp4').video.nb_read_frames));
    },
    { skip: long ? false : 'takes minutes; ./check --long runs it', timeout: 900_000 },
);

walk('the filtered camera is recorded, with the microphone', async (page) => {
    await page.click('.camera');
    await page.waitForSelector('.record:not([hidden])');
    await page.evaluate(() => (location.hash = '#f=ColorReplace:similarity=100,replacecolor=blue'));
    const [download] = await Promise.all([
        page.waitForEvent('download'),
        (async () => {
            await page.click('.record');
            await page.waitForFunction(() => /0:02/.test(document.querySelector('.recording').textContent));
            assert.equal(await page.textContent('.record'), 'Stop recording');
            await page.click('.record');
        })(),
    ]);
    await download.saveAs(fileOf('camera.webm'));
    await page.waitForSelector('.recording', { state: 'hidden' });
    const { video, sound, seconds } = probed('camera.webm');
    assert.deepEqual([video.codec_name, video.width, sound.codec_name], ['vp9', 1280, 'opus']);
    const count = Number(video.nb_read_frames);
    assert.ok(count > 5 && seconds > 1.4 && seconds < 20, `${count} in ${seconds} s`);
    const stamps = times('camera.webm');
    assert.ok(stamps.every((time, i) => i === 0 ? time === 0 : time > stamps[i - 1]), stamps.join(' '));
});

describe('exports', { concurrency: 2 }, () => {
    let browser;
    let server;
    before(async () => {
        makeClips();
        [browser, server] = await Promise.all([launch(), serve()]);
    });
    after(async () => {
        await browser.close();
        server.close();
        rmSync(folder, { recursive: true });
    });
    for (const { name, work, options } of walks) {
        test(name, options, async () => {
            const page = await open(browser, `${server.url}#f=Solarize&sample=cutout`);
            await page.evaluate(() => delete window.showSaveFilePicker);
            await work(page);
            assert.deepEqual(page.failures, []);
            await page.context().close();
        });
    }
});
