// Bookmarks that are changed on the page are changed in the file, and only where that is allowed.
import assert from 'node:assert/strict';
import { test } from 'node:test';
import { folder, leave, open, record, rectool, serve, set, start } from './frame.mjs';
import { receiver } from './recordings.mjs';

const directory = folder();
const [file] = record(directory, receiver({ sweeps: 240 }));

function bookmarks() {
    return JSON.parse(rectool('bookmark', 'list', file, '--json')).bookmarks;
}

test('a bookmark that is added, renamed and removed on the page is so for rectool bookmark', async () => {
    const page = await open(await serve(directory, '--edit'));
    await set(page, { at: start + 20000 });
    await page.locator('canvas.overlay').focus();
    await page.keyboard.press('b');
    await page.keyboard.type('Burst <b>here</b>');
    await page.keyboard.press('Enter');
    await page.locator('.bookmark-margin button', { hasText: 'Burst <b>here</b>' }).waitFor();
    const [added] = bookmarks();
    assert.equal(bookmarks().length, 1);
    assert.match(JSON.stringify(added), /Burst <b>here<\/b>/);
    assert.equal(added.timeMs, 20000);

    await page.locator('#bookmarks summary').click();
    await page.getByRole('button', { name: 'Rename' }).click();
    await page.keyboard.type('Car');
    rectool('bookmark', 'add', file, '50000', 'of somebody else', '--yes');
    await page.locator('.bookmark-margin button', { hasText: 'of somebody else' }).waitFor();
    rectool('bookmark', 'rm', file, '50000', '--yes');
    await page.keyboard.type('rier');
    await page.keyboard.press('Enter');
    await page.locator('.bookmark-margin button', { hasText: 'Carrier' }).waitFor();
    assert.match(JSON.stringify(bookmarks()), /Carrier/);

    await set(page, { at: start + 1000 });
    await page.locator('canvas.overlay').focus();
    await page.keyboard.press('n');
    await page.waitForFunction((ms) => window.page.model.get().at === ms, start + 20000);

    await page.getByRole('button', { name: 'Remove' }).click();
    await page.locator('.bookmark-margin button').waitFor({ state: 'detached' });
    assert.deepEqual(bookmarks(), []);
    assert.match(rectool('verify', file), /sound/);
    await leave(page);
});

test('a page without --edit offers no change, and says why there is none', async () => {
    const page = await open(await serve(directory));
    await set(page, { at: start + 20000 });
    await page.locator('canvas.overlay').focus();
    await page.keyboard.press('b');
    await page.getByText('started with --edit').waitFor();
    assert.equal(await page.locator('#bookmarks form').isVisible(), false);
    assert.deepEqual(bookmarks(), []);
    await page.close();
});
