// Levels and values on the page are those of the recording: zoomed out, zoomed in, and at the cursor.
import assert from 'node:assert/strict';
import { cat, folder, onPage, record, rectool, serve, set, settled, start, state } from './frame.mjs';
import { burst, channels, levelOf, lowest, receiver, step, sweepMs } from './recordings.mjs';

const directory = folder();
const [file] = record(directory, receiver());
const address = await serve(directory);

/** The pixel of a moment and frequency, or one so many beside it, and the levels for which it could be the colour. */
function pixelAt(page, ms, hz, beside = 0) {
    return page.evaluate(([moment, frequency, aside]) => {
        const state = window.page.model.get();
        const { timeToX } = window.page.axes;
        const { box } = window.page.waterfall;
        const { colours } = window.page.colormaps;
        const plot = box();
        const x = Math.floor(timeToX(moment)) + aside;
        const y = Math.floor(plot.y + (state.high - frequency) / (state.high - state.low) * plot.height);
        const ratio = window.devicePixelRatio;
        const pixels = document.querySelector('canvas.plot').getContext('2d').getImageData(x * ratio, y * ratio, 1, 1).data;
        const index = colours(state.map).findIndex((colour) => colour.every((part, at) => part === pixels[at]));
        const width = (state.levelHigh - state.levelLow) / 256;
        return { colour: [...pixels], index, low: state.levelLow + index * width, high: state.levelLow + (index + 1) * width };
    }, [ms, hz, beside]);
}

onPage('zoomed out, the burst of one sweep in one cell is there at its level, and its neighbours are at theirs', address, async (page) => {
    await set(page, { autoLevel: false, levelLow: -120, levelHigh: -20 });
    await settled(page);
    const { from, to } = await state(page);
    assert.ok(to - from >= 2390 * sweepMs, 'all of the recording is visible');
    const ms = start + (burst.sweep + 1) * sweepMs + sweepMs / 2;
    const hz = lowest + burst.channel * step;
    // A sweep is narrower than a pixel, so it may be drawn into the one beside.
    const pixels = await Promise.all([-1, 0, 1].map((beside) => pixelAt(page, ms, hz, beside)));
    assert.ok(pixels.some(({ low, high }) => low <= burst.level && burst.level <= high), `its pixels are ${JSON.stringify(pixels)}`);
    for (const [time, frequency] of [[ms - 4000, hz], [ms + 4000, hz], [ms, hz + 3 * step], [ms, hz - 3 * step]]) {
        const other = await pixelAt(page, time, frequency);
        assert.ok(other.index >= 0 && other.high < -95, `beside it is ${JSON.stringify(other)}`);
    }
});

onPage('a rough picture that comes behind the exact one does not replace it', address, async (page) => {
    const isExact = (request) => new URL(request.url()).searchParams.get('exact') === '1';
    let release;
    const exactIsDrawn = new Promise((resolve) => {
        release = resolve;
    });
    let rough = 0;
    await page.route('**/api/view?*', async (route) => {
        const exact = isExact(route.request());
        await (exact ? null : exactIsDrawn);
        const response = await route.fetch();
        rough += (await response.body()).includes('"exact":true') ? 0 : 1;
        await route.fulfill({ response });
        await (exact ? settled(page).then(release) : null);
    });
    const behind = page.waitForEvent('requestfinished', (request) => request.url().includes('/api/view?') && !isExact(request));
    const { from, to } = await state(page);
    await set(page, { from: from + 1000, to: to - 1000 });
    await behind;
    await page.evaluate(() => new Promise((drawn) => requestAnimationFrame(() => requestAnimationFrame(drawn))));
    assert.equal(rough, 1, 'what came behind was rough');
    assert.equal(await page.evaluate(() => window.page.waterfall.picture().head.exact), true);
});

onPage('zoomed in, pixels and the sweep at the cursor are what cat says', address, async (page) => {
    const middle = start + (burst.sweep + 1) * sweepMs;
    await set(page, { autoLevel: false, levelLow: -120, levelHigh: -20, from: middle - 1000, to: middle + 1000 });
    await settled(page);
    const code = (await state(page)).type;
    const sweeps = cat(file, '--type', String(code), '--from', '308000', '--to', '310500').filter(({ value }) => value.kind === 'LevelMap');
    const shown = sweeps.filter(({ timeMs }) => Math.abs(start + timeMs - middle) < 900);
    assert.ok(shown.length >= 5, `${shown.length} sweeps are compared`);
    for (const { timeMs, value } of shown) {
        for (const channel of [burst.channel, 5, 80]) {
            const pixel = await pixelAt(page, start + timeMs + sweepMs / 2, lowest + channel * step);
            assert.ok(pixel.low - 1e-4 <= value.cells[channel] && value.cells[channel] <= pixel.high + 1e-4,
                `${timeMs} ms, channel ${channel}: ${value.cells[channel]} is ${JSON.stringify(pixel)}`);
        }
    }
    const { timeMs, value } = shown[2];
    await set(page, { at: start + timeMs + 1, hz: lowest + burst.channel * step });
    await page.waitForFunction((ms) => window.page.sweep.get()?.ms === ms, start + timeMs);
    const sweep = await page.evaluate(() => window.page.sweep.get());
    assert.deepEqual(sweep.levels, value.cells);
    assert.equal(value.cells.length, channels);
});

onPage('the level in figures is that of the cell under the cursor', address, async (page) => {
    await set(page, { at: start + (burst.sweep + 1) * sweepMs + 10, hz: lowest + burst.channel * step });
    await page.waitForFunction(() => /23\.5/.test(document.getElementById('cursor-level').textContent));
    assert.match(await page.locator('#cursor-hz').innerText(), /430\.925 MHz/);
    assert.equal(levelOf(burst.sweep, burst.channel), burst.level);
});

onPage('the values at the cursor are what state says', address, async (page) => {
    for (const offset of [61000, 250500]) {
        const told = JSON.parse(rectool('state', file, '--json', '--at', String(offset)));
        await set(page, { at: start + offset });
        const answer = await page.evaluate((ms) => {
            const { recording } = window.page.model.get();
            return window.page.server.json('/api/state', { recording: recording.id, at: ms });
        }, start + offset);
        assert.deepEqual(answer.state, told.state);
        const level = told.state.find(({ keyword }) => keyword === 'LEVEL');
        const span = told.state.find(({ keyword }) => keyword === 'IFSPAN');
        for (const { code, value } of [level, span]) {
            const words = String(value.value).replace('-', '−');
            await page.locator(`#state tr[data-code="${code}"]`, { hasText: words }).waitFor();
        }
    }
});

onPage('numbers are lines and settings bands under the waterfall, with what they are at the cursor', address, async (page) => {
    await page.locator('#values summary').focus();
    await page.keyboard.press('Enter');
    await page.getByLabel('LEVEL', { exact: true }).check();
    await page.getByLabel('IFSPAN', { exact: true }).check();
    await page.locator('#values .u-over, #values canvas').first().waitFor();
    const bands = page.locator('#values .band');
    await bands.nth(3).waitFor();
    assert.deepEqual(await bands.allTextContents(), ['100 kHz', '1 MHz', '100 kHz', '1 MHz', '100 kHz', '1 MHz', '100 kHz'].slice(0, await bands.count()));
    await set(page, { at: start + 150000 });
    await page.locator('section.value', { hasText: 'IFSPAN' }).locator('output', { hasText: '1 MHz' }).waitFor();
    const [line, plot] = await page.evaluate(() => {
        const { timeToX } = window.page.axes;
        const { at } = window.page.model.get();
        return [parseFloat(document.querySelector('#values .cursor-line').style.left), timeToX(at)];
    });
    assert.ok(Math.abs(line - plot) < 0.01, 'the cursor line stands where the waterfall has it');
});
