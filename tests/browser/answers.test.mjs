// What was on the air, as the page answers it: the same as rectool says of the recording, and each leads to its place.
import assert from 'node:assert/strict';
import path from 'node:path';
import { test } from 'node:test';
import { folder, leave, open, recordingOf, rectool, serve, simulate, start, state } from './frame.mjs';

const span = { from: start + 10000, to: start + 40000, low: 430e6, high: 436e6 };

const directory = folder();
simulate(directory);
const file = recordingOf(directory, 'RX_1');
const id = path.basename(file, '.rec');
const address = await serve(directory);

async function spectrumOf() {
    const { recordings } = await (await fetch(new URL('/api/recordings', address))).json();
    return recordings.find((one) => one.id === id).spectra.find(({ keyword }) => keyword === 'RFSPECTRUM').code;
}

async function answer(name, more = {}) {
    const parameters = { recording: id, type: await spectrumOf(), ...span, ...more };
    const response = await fetch(new URL(`/api/${name}?${new URLSearchParams(parameters)}`, address));
    return response.json();
}

/** What rectool says of the same span. */
function told(verb, startMs, ...more) {
    const given = ['--from', String(Math.floor(span.from - startMs)), '--to', String(Math.ceil(span.to - startMs)),
        '--low', String(span.low), '--high', String(span.high), '--type', 'RFSPECTRUM', '--json'];
    return JSON.parse(rectool(verb, file, ...given, ...more));
}

/** Without the names of files, which recview tells without their folders. */
function bare(document) {
    return JSON.parse(JSON.stringify(document, (name, value) => (name === 'file' || name === 'files' ? undefined : value)));
}

for (const [name, more, options] of [['trace', { median: 1 }, ['--median']], ['emissions', {}, []], ['emissions', { above: 20 }, ['--above', '20']],
    ['occupancy', {}, []], ['occupancy', { raster: 100000 }, ['--raster', '100k']]]) {
    test(`${name} ${options.join(' ')} is what rectool says`, async () => {
        const { answer: given, leftOut } = await answer(name, more);
        assert.equal(leftOut, 0);
        assert.ok((given.traces ?? given.emissions ?? given.types).length > 0);
        assert.deepEqual(bare(given), bare(told(name, given.startMsSince1970, ...options)));
    });
}

test('what cannot be worked out is one sentence', async () => {
    const type = await spectrumOf();
    const before = await answer('trace', { from: start - 20000, to: start - 10000 });
    assert.match(before.nothing, /^Nothing was recorded/);
    assert.match((await answer('emissions', { above: 'loud' })).error, /above/);
    assert.match((await answer('emissions', { above: -1 })).error, /out of its range/);
    assert.match((await answer('occupancy', { type: type + 1000 })).error, /type/);
});

test('emissions are a list and frames, and a click goes to where one was strongest', async () => {
    const page = await open(address, `#recording=${id}&from=${span.from}&to=${span.to}&low=${span.low}&high=${span.high}&panel=answers`);
    await page.waitForFunction(() => document.querySelectorAll('#answers tbody tr').length > 0);
    const { answer: given } = await answer('emissions', { type: (await state(page)).type });
    const shown = given.emissions;
    assert.equal(await page.locator('#answers tbody tr').count(), shown.length);
    await page.locator('#answers .jump').last().click();
    const { at, hz } = await state(page);
    assert.equal(at, given.startMsSince1970 + shown.at(-1).maxMs);
    assert.equal(hz, shown.at(-1).centreHz);
    await page.locator('#answers select').selectOption('occupancy');
    await page.waitForFunction(() => document.querySelector('#answers thead')?.textContent.includes('Occupied %'));
    const occupied = await answer('occupancy', { type: (await state(page)).type });
    const first = [...occupied.answer.types[0].channels].sort((one, other) => other.percent - one.percent)[0];
    const cells = await page.locator('#answers tbody tr').first().locator('td').allTextContents();
    assert.deepEqual(cells.slice(0, 3), [first.percent.toFixed(2), first.low.toFixed(2), first.high.toFixed(2)]);
    await page.locator('#answers select').selectOption('trace');
    await page.waitForFunction(() => document.querySelector('#answers thead')?.textContent.includes('Median'));
    await leave(page);
});
