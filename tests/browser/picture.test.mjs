// The picture of the page in README.md. It is written there with BROWSER_PICTURE=doc/pictures/recview.png in the environment.
import assert from 'node:assert/strict';
import { mkdirSync, statSync } from 'node:fs';
import path from 'node:path';
import { folder, onPage, recordingOf, rectool, serve, set, settled, simulate, start } from './frame.mjs';

const largest = 350e3;

const directory = folder();
simulate(directory, '3min');
const parts = ['RX_1', 'DF_1'].map((device) => recordingOf(directory, device));
const shown = path.join(directory, 'shown');
mkdirSync(shown);
rectool('merge', '--separate', ...parts, '-o', path.join(shown, 'Simulated_vehicle.rec'));
const address = await serve(shown);

onPage('spectra, values and bearings of a minute are on one page, which makes a picture', address, async (page) => {
    const codes = await page.evaluate(() => window.page.model.get().recording.values
        .filter(({ keyword }) => ['LEVEL', 'FREQUENCY'].includes(keyword)).map(({ code }) => code));
    assert.equal(codes.length, 2);
    await set(page, { panel: 'map', values: codes, at: start + 101000, hz: 433.5e6 });
    await page.waitForFunction(() => window.page.bearings.bearingsOf().data.fixes.length > 0);
    await page.locator('.legend button').first().waitFor();
    await page.locator('#values canvas').nth(1).waitFor();
    await page.waitForFunction(() => [...document.querySelectorAll('.value-now')].every((one) => one.textContent !== ''));
    await settled(page);
    const file = process.env.BROWSER_PICTURE ? path.resolve(import.meta.dirname ?? '.', '../..', process.env.BROWSER_PICTURE)
        : path.join(folder(), 'recview.png');
    await page.screenshot({ path: file });
    assert.ok(statSync(file).size > 20e3 && statSync(file).size <= largest, `${statSync(file).size} bytes`);
}, { viewport: { width: 1200, height: 800 } });
