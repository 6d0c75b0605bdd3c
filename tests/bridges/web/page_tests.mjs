// SPDX-License-Identifier: MIT
// What people do with the page, done in a browser.
import assert from 'node:assert/strict';
import { readdirSync, readFileSync, writeFileSync } from 'node:fs';
import path from 'node:path';

import { downloaded, drop, handedOver, pageFolder, pixels, rest, root, shown, transferOf } from './browser.mjs';
import { cardTitles, chainText, fileOf, message, run, runWalks, walk } from './walks.mjs';

const [cutOut, clip] = ['cutout.png', 'clip.mp4'].map((name) => readFileSync(path.join(pageFolder, 'samples', name)));

async function addFilter(page, name) {
    await page.click('.add');
    await shown(page, () => page.click(`.tile:has-text("${name}")`));
}

/** Saves the picture, and holds it to what the command makes of the same file. */
async function holdToCommand(page, name) {
    const saved = await downloaded(page, '.save');
    writeFileSync(fileOf(page, 'saved.png'), saved.bytes);
    writeFileSync(fileOf(page, name), cutOut);
    await run(page, `rm -f *-vireo.png; ${await handedOver(page, 'command')} --quiet`);
    const [ours, theirs] = ['saved.png', saved.name].map((file) => pixels(fileOf(page, file)));
    assert.ok(ours.equals(theirs), `${name}: the saved picture is not the command's`);
    assert.ok(!ours.equals(pixels(fileOf(page, name))), `${name}: the filters do nothing`);
}

walk(
    'a dropped picture is filtered, saved, and rendered alike by the command',
    '#f=ColorReplace:similarity=30,targetcolor=olive,mix=70&f=Bend:horizontalintensity=21',
    async (page) => {
        const name = "bird's eye.png";
        await shown(page, () => drop(page, name, 'image/png', cutOut));
        assert.match(await message(page), /bird's eye\.png is open/);
        assert.equal(await page.textContent('.size'), '960 × 720');
        await holdToCommand(page, name);
    },
);

walk('filters of every kind give the pixels of the command line', '#sample=cutout', async (page) => {
    const keys = [
        'AlphaGlow',
        'CameraBlur:percentblur=3',
        'Extract',
        'LensDistortion:curvature=40',
        'Levels:rgbgamma=160,rblackin=20',
    ];
    for (const text of [keys.slice(0, 2), keys.slice(2)]) {
        await shown(page, () => page.evaluate((hash) => (location.hash = hash), `f=${text.join('&f=')}`));
        await holdToCommand(page, 'cutout.png');
    }
});

walk(
    'a slider shows a preview at once and the whole picture when the hand rests',
    '#f=Solarize:threshold=100&sample=fruit',
    async (page) => {
        const order = await page.evaluate(
            () =>
                new Promise((resolve) => {
                    const seen = [];
                    document.addEventListener('shown', ({ detail }) => {
                        seen.push(detail.isPreview);
                        if (!detail.isPreview) resolve(seen);
                    });
                    const slider = document.querySelector('.number input[type=range]');
                    for (const value of [110, 120, 130]) {
                        slider.value = value;
                        slider.dispatchEvent(new Event('input', { bubbles: true }));
                    }
                }),
        );
        assert.equal(order.at(-1), false);
        assert.ok(
            order.length <= 4 && order.slice(0, -1).every((isPreview) => isPreview),
            `shown as previews: ${order}`,
        );
        assert.equal(await page.inputValue('.number input[type=number]'), '51.2');
        await shown(page, async () => {
            await page.fill('.number input[type=number]', '60');
            await page.keyboard.press('Enter');
        });
        assert.equal(await chainText(page), 'Solarize:Threshold=152');
        await page.fill('.number input[type=number]', '900');
        await page.keyboard.press('Enter');
        assert.equal(await page.inputValue('.number input[type=number]'), '100');
    },
);

walk('every filter shows itself before it is chosen', '#f=Solarize&sample=clip&frame=20', async (page) => {
    await page.click('.add');
    await page.waitForFunction(() => [...document.querySelectorAll('.tile canvas')].every(({ width }) => width > 100));
    const different = await page.evaluate(
        () => new Set([...document.querySelectorAll('.tile canvas')].map((canvas) => canvas.toDataURL())).size,
    );
    assert.equal(await page.locator('.tile').count(), 22);
    assert.ok(different > 14, `only ${different} filters look different`);
    await page.keyboard.press('Escape');
    assert.ok(await page.evaluate(() => document.activeElement.matches('.add')));
});

walk('a chain is built, moved, switched off and taken apart', '#f=Solarize&sample=cutout', async (page) => {
    await addFilter(page, 'Ghosting');
    await addFilter(page, 'Levels');
    assert.deepEqual(await cardTitles(page), ['Solarize', 'Ghosting', 'Levels']);
    await page.focus('.card:nth-child(3) .grip');
    await page.keyboard.press('ArrowUp');
    await page.keyboard.press('ArrowUp');
    assert.deepEqual(await cardTitles(page), ['Levels', 'Solarize', 'Ghosting']);
    assert.match(await message(page), /Levels is now number 1 of 3/);
    assert.ok(await page.evaluate(() => document.activeElement.matches('.card:first-child .grip')));

    await page.locator('.card:nth-child(3) .grip').scrollIntoViewIfNeeded();
    const [from, to] = [
        await page.locator('.card:nth-child(3) .grip').boundingBox(),
        await page.locator('.card:nth-child(2) .grip').boundingBox(),
    ];
    await page.mouse.move(from.x + 5, from.y + 5);
    await page.mouse.down();
    await page.mouse.move(to.x + 5, to.y - 4, { steps: 4 });
    await page.mouse.up();
    assert.deepEqual(await cardTitles(page), ['Levels', 'Ghosting', 'Solarize']);

    await shown(page, () => page.uncheck('.card:nth-child(2) [role=switch]'));
    assert.equal(await chainText(page), 'Levels Solarize');
    await shown(page, () => page.click('.card:nth-child(1) .remove'));
    assert.equal(await chainText(page), 'Solarize');
    assert.ok((await handedOver(page, 'link')).endsWith('#off=Ghosting&f=Solarize&sample=cutout'));
});

walk(
    'a link opens all of it again',
    '#f=Color Replace:similarity=20%25,target color=red,mix=50&off=Black & White&f=bend:horizontal rate=3@0s..9@2s&sample=clip&frame=12',
    async (page) => {
        const expected =
            '#f=ColorReplace:Similarity=25,TargetColor=%23ff0000,mix=50&off=BlackAndWhite&f=Bend:HorizontalRate=3@0s..9@2s&sample=clip&frame=12';
        const link = await handedOver(page, 'link');
        assert.equal(new URL(link).hash, expected);
        await page.waitForURL(link);
        assert.equal(await page.textContent('.frame'), '12 / 74');
        const command = await handedOver(page, 'command');
        await page.goto('about:blank');
        await page.goto(link);
        await rest(page);
        assert.equal(await handedOver(page, 'command'), command);

        await page.evaluate(() => (location.hash = '#f=Solarize:threshold=999'));
        await page.waitForSelector('.message.error');
        assert.match(await message(page), /Threshold of Solarize cannot be “999”/);
        assert.equal(new URL(await handedOver(page, 'link')).hash, expected);
    },
);

walk('the links in the documentation are understood', '#sample=cutout', async (page) => {
    const docs = path.join(root, 'docs');
    const names = readdirSync(docs, { recursive: true }).filter((name) => name.endsWith('.md'));
    const links = names.flatMap(
        (name) => readFileSync(path.join(docs, name), 'utf8').match(/(?<=index\.html)#[^\s)`]+/g) ?? [],
    );
    assert.ok(links.length > 20, `only ${links.length} links`);
    const refused = await page.evaluate(async (addresses) => {
        const [{ loadVireo }, { parseAddress }] = await Promise.all([
            import('./vireo/index.mjs'),
            import('./address.mjs'),
        ]);
        const engine = await loadVireo();
        return addresses.filter((address) => {
            try {
                return parseAddress(address, engine).chain.length === 0;
            } catch {
                return true;
            }
        });
    }, links);
    assert.deepEqual(refused, []);
});

walk(
    'settings files are those of the command line, and come back',
    '#f=ColorReplace:similarity=20,solidcolors=on,replacecolor=navy,mix=50&f=Levels:rgbgamma=90@0s..hold..150@5f,from=2f&sample=cutout',
    async (page) => {
        await page.click('#tab-settings');
        const { bytes } = await downloaded(page, '.take-along .download');
        writeFileSync(fileOf(page, 'cutout.png'), cutOut);
        await run(
            page,
            `rm -f cutout-vireo.png; ${await handedOver(page, 'command')} --quiet --overwrite --save-settings look.json`,
        );
        assert.equal(bytes.toString(), readFileSync(fileOf(page, 'look.json'), 'utf8'));

        const link = await handedOver(page, 'link');
        await page.evaluate(() => (location.hash = '#f=Solarize'));
        await page.waitForFunction(() => document.querySelectorAll('.card').length === 1);
        await shown(page, () => drop(page, 'look.json', 'application/json', bytes));
        assert.equal(await handedOver(page, 'link'), link);
    },
);

walk(
    "FFmpeg's filter gives the same pixels",
    '#f=ColorReplace:similarity=70,replacecolor=%2301fe4d&f=Solarize:threshold=101&f=HorizontalFlip&sample=cutout',
    async (page) => {
        const saved = await downloaded(page, '.save');
        writeFileSync(fileOf(page, 'saved.png'), saved.bytes);
        writeFileSync(fileOf(page, 'cutout.png'), cutOut);
        const filter = await handedOver(page, 'ffmpeg');
        await run(page, `ffmpeg -v error -y -i cutout.png -vf 'format=bgra,${filter}' ffmpeg.png`);
        assert.ok(pixels(fileOf(page, 'ffmpeg.png')).equals(pixels(fileOf(page, 'saved.png'))));
    },
);

/** How far apart two pictures are, in levels of a channel. */
function meanDifference(a, b) {
    assert.equal(a.length, b.length);
    return a.reduce((sum, byte, i) => sum + Math.abs(byte - b[i]), 0) / a.length;
}

walk('a clip plays, and Ghosting sees the frames before', '#f=Ghosting&sample=clip&frame=40', async (page) => {
    const saved = async () => {
        writeFileSync(fileOf(page, 'saved.png'), (await downloaded(page, '.save')).bytes);
        return pixels(fileOf(page, 'saved.png'));
    };
    const ghost = await saved();
    await shown(page, () => page.uncheck('.card [role=switch]'));
    const plain = await saved();
    writeFileSync(fileOf(page, 'clip.mp4'), clip);
    await run(page, 'vireo render clip.mp4 expected.png -f Ghosting --frames 40-40 --quiet');
    const expected = pixels(fileOf(page, 'expected.png'));
    const [near, far] = [meanDifference(ghost, expected), meanDifference(plain, expected)];
    assert.ok(near < 1.5 && far > 2 * near, `${near} from the command's Ghosting, without it ${far}`);
    await page.check('.card [role=switch]');
    await page.click('.play');
    await page.waitForFunction(() => !['40', '41'].includes(document.querySelector('.scrub').value));
    await shown(page, () => page.click('.play'));
    await shown(page, () => page.locator('.scrub').fill('40'));
    assert.ok((await saved()).equals(ghost), 'a frame differs when it is come to again');
});

walk('the camera is filtered until another picture is opened', '#f=Solarize', async (page) => {
    await page.click('.camera');
    await page.waitForFunction(() => Number(document.querySelector('.frame').textContent) > 3);
    await shown(page, () => page.click('.play'));
    await page.click('[data-sample=clip]'); // takes longer to open than what is asked for next
    await shown(page, () => page.click('[data-sample=cutout]'));
    await page.waitForTimeout(1000);
    assert.equal(await page.textContent('.size'), '960 × 720');
});

walk('a colour is picked from a pasted picture', '#f=ColorReplace&sample=fruit', async (page) => {
    const transfer = await transferOf(page, 'pasted.png', 'image/png', cutOut);
    await shown(page, () =>
        page.evaluate((clipboardData) => dispatchEvent(new ClipboardEvent('paste', { clipboardData })), transfer),
    );
    await page.click('.pick');
    const box = await page.locator('.picture').boundingBox();
    await shown(page, () => page.mouse.click(box.x + (240 / 960) * box.width, box.y + (680 / 720) * box.height));
    assert.match(await chainText(page), /Target Color=#ffe0c4/);
});

walk(
    'all texts are in the language of the browser, or in the chosen one',
    '#f=ColorReplace&sample=cutout',
    async (page) => {
        assert.equal(await page.textContent('.add'), 'Filter hinzufügen');
        assert.deepEqual(await cardTitles(page), ['Farbe ersetzen']);
        await page.selectOption('.language', 'ja');
        await page.waitForSelector('html[lang=ja]');
        assert.equal(await page.textContent('.add'), 'フィルターを追加');
        assert.match(await chainText(page), /Color Replace/);
        const english = await page.evaluate(() => {
            const words = [...document.querySelectorAll('button, label, h2, .note')].map((node) =>
                node.textContent.trim(),
            );
            return words.filter((text) => /^(Open|Save|Reset|Mix|Fit|Copy|Compare|Command|Link|Filters)/.test(text));
        });
        assert.deepEqual(english, []);
        await page.reload();
        await page.waitForSelector('html[lang=ja]');
        await page.evaluate(() => (location.hash = '#f=Solarize&language=ko'));
        await page.waitForSelector('html[lang=ko] .card .title:text-is("솔라라이즈")');
        assert.deepEqual(await cardTitles(page), ['솔라라이즈']);
    },
    { locale: 'de-DE' },
);

walk('the keyboard reaches and does everything', '#f=Solarize&f=ColorReplace&sample=cutout', async (page) => {
    const reached = [];
    for (let i = 0; i < 60; ++i) {
        await page.keyboard.press('Tab');
        reached.push(
            await page.evaluate(() => {
                const node = document.activeElement;
                const label = node.labels?.[0]?.textContent;
                return node.getAttribute('aria-label') ?? label ?? node.textContent.trim();
            }),
        );
        if (reached.at(-1) === 'Copy') break;
    }
    for (const name of [
        'Save PNG',
        'Divider between before and after',
        'Compare',
        'Add filter',
        'Move Solarize: arrow keys up and down',
        'Similarity',
        'Target Color',
        'Mix',
        'Copy',
    ]) {
        assert.ok(reached.includes(name), `${name} is not reached: ${reached.join(', ')}`);
    }
    assert.ok(
        reached.every((name) => name !== ''),
        'something without a name is reached',
    );

    await page.focus('.divider');
    await page.keyboard.press('End');
    assert.equal(await page.getAttribute('.divider', 'aria-valuenow'), '100');
    await page.focus('.stage');
    await page.keyboard.press('1');
    for (let i = 0; i < 4; ++i) await page.keyboard.press('+');
    assert.equal(await page.textContent('.percent'), '400 %');
    assert.equal(
        await page.evaluate(() => getComputedStyle(document.querySelector('canvas')).imageRendering),
        'pixelated',
    );
    await page.keyboard.press('0');
    await page.focus('#tab-command');
    await page.keyboard.press('ArrowRight');
    assert.match(await page.textContent('.output'), /^\{\n {2}"vireo": 1/);
});

/** A PNG file's beginning that claims a size. */
function claimedPng(width, height) {
    const bytes = Buffer.from(cutOut.subarray(0, 64));
    bytes.writeUInt32BE(width, 16);
    bytes.writeUInt32BE(height, 20);
    return bytes;
}

walk('what cannot be used gets one sentence and changes nothing', '#f=Solarize&sample=cutout', async (page) => {
    const link = await handedOver(page, 'link');
    const files = [
        ['notes.png', 'image/png', Buffer.from('no picture'), /“notes\.png” is no picture or clip/],
        ['half.png', 'image/png', cutOut.subarray(0, 40_000), /“half\.png” is no picture or clip/],
        ['vast.png', 'image/png', claimedPng(60_000, 60_000), /“vast\.png” has more than 64 million pixels/],
        ['clip.mp4', 'video/mp4', Buffer.from('no clip'), /“clip\.mp4” is no picture or clip/],
        [
            'look.json',
            'application/json',
            Buffer.from('{"vireo": 2, "filters": []}'),
            /“look\.json” is no settings file/,
        ],
        [
            'look.json',
            'application/json',
            Buffer.from('{"vireo": 1, "filters": [{"filter": "Sun"}]}'),
            /“Sun” is not the name of one filter/,
        ],
    ];
    for (const [name, type, bytes, sentence] of files) {
        await page.evaluate(() => (document.querySelector('.message').textContent = ''));
        await drop(page, name, type, bytes);
        await page.waitForFunction(() => document.querySelector('.message').textContent !== '');
        assert.match(await message(page), sentence);
        assert.equal(await page.getAttribute('.message', 'role'), 'alert');
        assert.equal(await handedOver(page, 'link'), link);
    }
    await holdToCommand(page, 'cutout.png');
});

walk('a broken link still opens the page', '#f=Sunrise', async (page) => {
    assert.match(await message(page), /“Sunrise” is not the name of one filter/);
    assert.deepEqual(await cardTitles(page), ['Solarize']);
});

walk(
    'the single file works from a folder',
    `file://${pageFolder}/vireo.html#f=Solarize&f=AlphaGlow&sample=cutout`,
    async (page) => {
        await holdToCommand(page, 'cutout.png');
        await shown(page, () => page.click('[data-sample=clip]'));
        assert.equal(await page.textContent('.frame'), '0 / 74');
    },
);

walk(
    'a phone shows it all in one column',
    '#f=Levels:rgbgamma=90@0f..120@9f,from=2f&sample=fruit',
    async (page) => {
        for (const language of ['fr', 'de', 'ja', 'es', 'it', 'ko', 'en']) {
            await page.selectOption('.language', language);
            await page.waitForSelector(`html[lang=${language}]`);
            for (const width of [920, 360]) {
                await page.setViewportSize({ width, height: 740 });
                const content = await page.evaluate(() => document.documentElement.scrollWidth);
                assert.ok(content <= width, `${content} of ${width} pixels in the language ${language}`);
            }
        }
        const stage = await page.locator('.stage').boundingBox();
        assert.ok(stage.height > 200 && stage.width > 300);
    },
    { viewport: { width: 360, height: 740 }, isMobile: true, hasTouch: true },
);

runWalks('the page');
