// What browser tests share: recordings made for them, recview beside them, the page in Chromium.
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { mkdtempSync, readdirSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import readline from 'node:readline';
import { after, test } from 'node:test';
import { chromium } from 'playwright-core';

export const patience = 30000;
export const start = Date.UTC(2026, 2, 1, 10, 0, 0);

const atTheEnd = [];
after(async () => {
    for (const one of atTheEnd.reverse()) {
        await one();
    }
});

/** A folder that is gone when the test file has ended. */
export function folder() {
    const made = mkdtempSync(path.join(os.tmpdir(), 'recview-browser-'));
    atTheEnd.push(() => rmSync(made, { recursive: true, force: true }));
    return made;
}

function program(name) {
    return process.env[name] ?? fail(`The environment does not say where ${name} is.`);
}

function fail(sentence) {
    throw new Error(sentence);
}

/** Records a feed; gives the recordings' paths. */
export function record(directory, lines, begin = start) {
    const done = spawnSync(program('RECSTATION'), ['-q', '-o', directory, 'feed', '-', '--start', new Date(begin).toISOString()],
        { input: lines.map((line) => `${JSON.stringify(line)}\n`).join(''), encoding: 'utf8', timeout: patience });
    if (done.status !== 0) {
        fail(`recstation ended with ${done.status}: ${done.stderr}`);
    }
    return readdirSync(directory).filter((name) => name.endsWith('.rec')).map((name) => path.join(directory, name));
}

/** A minute of the simulated receiver and direction finder on the move. */
export function simulate(directory, duration = '1min') {
    const done = spawnSync(program('RECSTATION'), ['-q', '-o', directory, 'sim', '--duration', duration, '--start', new Date(start).toISOString()],
        { encoding: 'utf8', timeout: patience });
    return done.status === 0 ? undefined : fail(`recstation ended with ${done.status}: ${done.stderr}`);
}

/** The recording of a device. */
export function recordingOf(directory, device) {
    return path.join(directory, readdirSync(directory).find((name) => name.includes(device) && name.endsWith('.rec')));
}

/** What rectool prints. */
export function rectool(...given) {
    const done = spawnSync(program('RECTOOL'), given, { encoding: 'utf8', timeout: patience, maxBuffer: 1 << 28 });
    return done.status === 0 ? done.stdout : fail(`rectool ${given.join(' ')} ended with ${done.status}: ${done.stderr}`);
}

/** The lines of cat --json. */
export function cat(file, ...given) {
    return rectool('cat', file, '--json', ...given).trim().split('\n').map((line) => JSON.parse(line));
}

/** recview of a folder, with its address, until the test file has ended. */
export async function serve(directory, ...given) {
    const cache = path.join(directory, 'cache');
    const server = spawn(program('RECVIEW'), [directory, '--quiet', '--until-input-ends', '--cache', cache, ...given],
        { stdio: ['pipe', 'pipe', 'inherit'] });
    atTheEnd.push(() => server.kill('SIGKILL'));
    for await (const line of readline.createInterface({ input: server.stdout })) {
        return line.trim();
    }
    return fail('recview ended without an address.');
}

/** recstation that records what is written to it. */
export function station(directory) {
    const running = spawn(program('RECSTATION'), ['-q', '-o', directory, 'feed', '-'], { stdio: ['pipe', 'ignore', 'inherit'] });
    atTheEnd.push(() => running.kill('SIGKILL'));
    return {
        write: (line) => running.stdin.write(`${JSON.stringify(line)}\n`),
        end: () => new Promise((ended) => {
            running.on('exit', ended);
            running.stdin.end();
        }),
    };
}

let browser;

async function browse() {
    const given = process.getuid() === 0 ? ['--no-sandbox'] : [];
    browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: given });
    atTheEnd.push(() => browser.close());
}

/** Opens a page and keeps what goes wrong on it, and what it asks other hosts for. */
export async function open(address, hash = '', options = {}) {
    const { spectra, ...windowOptions } = options;
    await (browser ?? browse());
    const page = await browser.newPage({ viewport: { width: 1280, height: 900 }, colorScheme: 'dark', ...windowOptions });
    page.setDefaultTimeout(patience);
    page.wrong = [];
    page.foreign = [];
    const host = new URL(address).host;
    page.on('console', (message) => message.type() === 'error' && page.wrong.push(message.text()));
    page.on('pageerror', (error) => page.wrong.push(error.stack ?? error.message));
    page.on('request', (request) => {
        const url = new URL(request.url());
        if (!['data:', 'blob:'].includes(url.protocol) && url.host !== host) {
            page.foreign.push(request.url());
        }
    });
    await page.goto(address + hash);
    // Conditions that are waited for cannot import the page's modules themselves.
    await page.evaluate(async () => {
        const names = ['axes', 'bearings', 'colormaps', 'model', 'server', 'sweep', 'waterfall'];
        const modules = await Promise.all(names.map((name) => import(`/modules/${name}.js`)));
        window.page = Object.fromEntries(names.map((name, at) => [name, modules[at]]));
    });
    await (spectra === false ? page.waitForFunction(() => window.page.model.get().recording) : settled(page));
    return page;
}

/** Closes a page on which nothing went wrong and that asked no other host. */
export async function leave(page) {
    assert.deepEqual([page.wrong, page.foreign], [[], []]);
    await page.close();
}

/** A test of a page of its own. */
export function onPage(name, address, body, options = {}) {
    test(name, async () => {
        const page = await open(address, '', options);
        await body(page);
        await leave(page);
    });
}

/** Waits until the waterfall shows what is asked for, as exactly as the server can, with its overview complete. */
export async function settled(page) {
    await page.waitForFunction(() => document.body.dataset.settled === 'exact' && window.page.waterfall.picture().head.made === 1);
}

/** The page's state, or some of it. */
export function state(page) {
    return page.evaluate(() => {
        const { recording, ...rest } = window.page.model.get();
        return { ...rest, recording: recording?.id, recordings: undefined };
    });
}

export function set(page, changes) {
    return page.evaluate((given) => window.page.model.set(given), changes);
}
