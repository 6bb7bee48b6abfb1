// A recording on the page while it is written.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { folder, leave, open, serve, settled, state, station } from './frame.mjs';
import { live, sweepLine } from './recordings.mjs';

const soon = 1000;

const directory = folder();

test('a recorded sweep is on the page within a second', async () => {
    const running = station(directory);
    const begun = Date.now();
    live().forEach((line) => running.write(line));
    let sweep = 0;
    const write = () => running.write(sweepLine(sweep++, Date.now() - begun));
    for (let first = 0; first < 20; ++first) {
        write();
    }
    const page = await open(await serve(directory));
    await page.keyboard.press('f');
    await page.waitForFunction(() => window.page.model.get().follow);
    const late = [];
    for (let round = 0; round < 8; ++round) {
        const known = (await state(page)).end;
        write();
        const written = Date.now();
        await page.waitForFunction((end) => {
            const now = window.page.model.get();
            const { picture } = window.page.waterfall;
            return now.end > end && picture()?.head.toMs >= now.end;
        }, known);
        late.push(Date.now() - written);
    }
    late.sort((a, b) => a - b);
    assert.ok(late[1] <= soon, `sweeps were on the page after ${late.join(', ')} ms`);
    assert.equal((await state(page)).follow, true);

    // Looking back goes on while more is recorded.
    await page.keyboard.press('ArrowLeft');
    await page.keyboard.press('+');
    await page.keyboard.press('ArrowLeft');
    await page.waitForFunction(() => !window.page.model.get().follow);
    const { from, to, end } = await state(page);
    write();
    await page.waitForFunction((before) => window.page.model.get().end > before, end);
    const now = await state(page);
    assert.deepEqual([now.from, now.to], [from, to]);
    assert.equal(await running.end(), 0);
    await page.waitForFunction(() => window.page.model.get().recording?.live === false);
    await settled(page);
    await leave(page);
});
