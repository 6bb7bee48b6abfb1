// The page as it opens: quiet, small, whole without a mouse, the same again by its address, and no markup out of recordings.
import assert from 'node:assert/strict';
import { folder, leave, onPage, open, record, serve, set, settled, start, state } from './frame.mjs';
import { receiver } from './recordings.mjs';

const caption = '<img src=x onerror="document.title=1">';

const directory = folder();
record(directory, receiver({ caption, sweeps: 240 }));
const address = await serve(directory);

onPage('the page opens without a console error, asks no other host, and loads at most 600 kB', address, async (page) => {
    // What only recordings with bearings need counts too.
    const sizes = await page.evaluate(async () => {
        await Promise.all(['leaflet.js', 'topojson-client.js', 'land-110m.json'].map((name) => fetch(`/vendor/${name}`).then((one) => one.text())));
        return performance.getEntriesByType('navigation').concat(performance.getEntriesByType('resource'))
            .filter(({ name }) => !new URL(name).pathname.startsWith('/api/')).map(({ name, decodedBodySize }) => [name, decodedBodySize]);
    });
    const bytes = [...new Map(sizes).values()].reduce((sum, size) => sum + size, 0);
    assert.ok(sizes.length > 40 && bytes > 300e3, `what the page loads was counted: ${bytes} bytes of ${sizes.length} files`);
    assert.ok(bytes <= 600e3, `the page loads ${bytes} bytes`);
    if (process.env.BROWSER_PICTURES) {
        process.stdout.write(`The page loads ${bytes} bytes in ${sizes.length} files.\n`);
    }
});

onPage('a caption that is markup is shown as text', address, async (page) => {
    await page.locator('#choose').click();
    assert.ok((await page.locator('body').innerText()).includes(caption), 'the caption stands on the page');
    assert.equal(await page.locator('img').count(), 0);
    await page.keyboard.press('Escape');
    await set(page, { at: start + 20000 });
    await page.locator('#state td', { hasText: caption }).first().waitFor();
    assert.notEqual(await page.title(), '1');
});

onPage('the address of a view opens the same view', address, async (page) => {
    const wanted = { from: start + 12000, to: start + 21000, low: 430.4e6, high: 431.6e6, at: start + 15000, hz: 431e6, of: 'mean', map: 'cividis' };
    await set(page, wanted);
    await page.waitForFunction(() => location.hash.includes('cividis') && location.hash.includes('at='));
    await settled(page);  // the scale follows what has come
    const again = await open(page.url());
    const [first, second] = [await state(page), await state(again)];
    for (const [name, value] of Object.entries(wanted)) {
        assert.equal(second[name], value, name);
    }
    assert.deepEqual({ ...second, edit: null }, { ...first, edit: null });
    await leave(again);
});

onPage('everything is reached with the keyboard alone', address, async (page) => {
    const reached = new Set();
    for (let presses = 0; presses < 80; ++presses) {
        await page.keyboard.press('Tab');
        const at = await page.evaluate(() => {
            const one = document.activeElement;
            return { panel: one.closest('[id]')?.closest('header[id], nav[id], section[id], div[id=tabs]')?.id ?? '',
                name: one.getAttribute('aria-label') ?? one.labels?.[0]?.textContent ?? one.title ?? '', text: one.textContent, tag: one.tagName };
        });
        if (at.tag === 'BODY') {
            break;
        }
        assert.ok(at.name || at.text, `a ${at.tag} of ${at.panel} says what it is`);
        reached.add(at.panel);
    }
    for (const panel of ['toolbar', 'bookmarks', 'waterfall', 'play', 'values', 'tabs', 'state']) {
        assert.ok(reached.has(panel), `${panel} is reached: ${[...reached].join(' ')}`);
    }
    await page.locator('canvas.overlay').focus();
    const before = await state(page);
    await page.keyboard.press('+');
    await page.keyboard.press('Enter');
    await settled(page);
    const after = await state(page);
    assert.ok(after.to - after.from < before.to - before.from, 'plus zooms in');
    assert.equal(after.at, (after.from + after.to) / 2, 'Enter puts the cursor into the middle');
    await page.keyboard.press(' ');
    await page.waitForFunction((at) => window.page.model.get().at > at, after.at);
    await page.keyboard.press(' ');
    assert.equal((await state(page)).playing, false, 'space plays and pauses');
});

for (const [name, width, height, colorScheme] of [['dark', 1280, 900, 'dark'], ['light', 1280, 900, 'light'], ['narrow', 380, 800, 'dark']]) {
    onPage(`a ${name} window shows everything`, address, async (page) => {
        assert.equal(await page.evaluate(() => document.documentElement.dataset.theme), colorScheme);
        const over = await page.evaluate(() => document.documentElement.scrollWidth - window.innerWidth);
        assert.ok(over <= 0, `nothing stands ${over} pixels beyond the window`);
        for (const id of ['toolbar', 'bookmarks', 'waterfall', 'play', 'values', 'spectrum', 'state']) {
            assert.ok((await page.locator(`#${id}`).boundingBox()).width > 100, id);
        }
        const [text, ground] = await page.evaluate(() => ['color', 'backgroundColor'].map((one) => {
            const [red, green, blue] = getComputedStyle(document.body)[one].match(/\d+/g).map(Number);
            return (red + green + blue) / 3;
        }));
        assert.equal(text > ground, colorScheme === 'dark');
        if (process.env.BROWSER_PICTURES) {
            await page.screenshot({ path: `${process.env.BROWSER_PICTURES}/${name}.png` });
        }
    }, { viewport: { width, height }, colorScheme });
}
