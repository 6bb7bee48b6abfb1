// Bearings on the map and around the station: those of the recording, and each leads to its record.
import assert from 'node:assert/strict';
import path from 'node:path';
import { folder, onPage, recordingOf, rectool, serve, set, simulate, start, state } from './frame.mjs';

const directory = folder();
simulate(directory);
const file = recordingOf(directory, 'DF_1');
const address = await serve(directory);

function onPanel(name, panel, body) {
    onPage(name, `${address}#recording=${path.basename(file, '.rec')}&panel=${panel}`, body, { spectra: false });
}

function shown(page) {
    return page.evaluate(() => {
        const { data } = window.page.bearings.bearingsOf();
        return { bearings: data.bearings, positions: data.positions, fixes: data.fixes.length };
    });
}

onPanel('the map shows bearings, track and fixes with nothing from elsewhere', 'map', async (page) => {
    await page.waitForFunction(() => window.page.bearings.bearingsOf().data.bearings.length > 0);
    const { bearings, positions, fixes } = await shown(page);
    const told = JSON.parse(rectool('map', file, '--json')).bearings;
    assert.ok(told.length > 0);
    for (const one of told) {
        const last = bearings.filter(({ hz }) => hz === one.frequencyHz).at(-1);
        assert.equal(last?.azimuth, one.azimuthDeg, `${one.frequencyHz} Hz`);
    }
    assert.ok(positions.length > 10 && fixes > 0, `${positions.length} positions, ${fixes} fixes`);
    await page.locator('.map canvas').first().waitFor();
    await page.locator('.leaflet-control-scale-line').waitFor();
    await page.locator('.degrees').first().waitFor({ state: 'attached' });
    await page.locator('.legend button', { hasText: '431.7 MHz' }).waitFor();
});

onPanel('a bearing that is chosen sets the cursor and shows its record', 'polar', async (page) => {
    await page.waitForFunction(() => window.page.bearings.bearingsOf().data.bearings.length > 0);
    await set(page, { at: start + 30000 });
    await page.locator('canvas.polar').focus();
    await page.keyboard.press('ArrowRight');
    await page.locator('#record table').first().waitFor();
    const { at, hz } = await state(page);
    const { bearings } = await shown(page);
    const chosen = bearings.find((one) => one.ms === at && one.hz === hz);
    assert.ok(chosen && at >= start + 30000, 'the cursor stands on the next bearing');
    const row = page.locator('#record tr.meant');
    assert.match(await row.innerText(), new RegExp(`${chosen.azimuth}°`));
    await page.keyboard.press('ArrowRight');
    await page.waitForFunction((before) => window.page.model.get().at !== before.at || window.page.model.get().hz !== before.hz, { at, hz });
    await page.getByRole('button', { name: 'Close' }).click();
    assert.equal(await page.locator('#record').isVisible(), false);
});

onPanel('play goes record by record, too', 'state', async (page) => {
    await set(page, { at: start + 30000 });
    await page.getByRole('button', { name: 'Record ▶' }).click();
    await page.locator('#record table').first().waitFor();
    const after = (await state(page)).at;
    assert.ok(after > start + 30000);
    await page.getByRole('button', { name: '◀ Record' }).click();
    await page.waitForFunction((ms) => window.page.model.get().at < ms, after);
});
