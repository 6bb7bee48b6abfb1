// How long the viewer's page takes for a step of zoom or pan, measured in the browser: bench/view RECORDING|DIR...
import { createRequire } from 'node:module';
import { spawn } from 'node:child_process';
import { existsSync } from 'node:fs';
import path from 'node:path';
import readline from 'node:readline';
import { fileURLToPath } from 'node:url';

const root = path.dirname(path.dirname(fileURLToPath(import.meta.url)));
const limits = { middle: 100, most: 250 }; // ms
const steps = 120;
const patience = 600000;
const build = process.env.BUILD ?? path.join(root, 'build/release');
const paths = process.argv.slice(2);

if (paths.length === 0 || !existsSync(path.join(build, 'bin/recview'))) {
    console.error(paths.length === 0 ? 'Usage: bench/view RECORDING|DIR...   (BUILD=DIR in the environment for another build than build/release)'
        : `There is no recview in ${build}: build preset release, or name a build with BUILD=DIR.`);
    process.exit(1);
}

const { chromium } = createRequire(path.join(root, 'tests/browser/'))('playwright-core');

async function address(server) {
    for await (const line of readline.createInterface({ input: server.stdout })) {
        return line.trim();
    }
    throw new Error('recview ended without an address.');
}

/** One step and the ms from it until a picture of the new view was drawn. */
async function step(page, key) {
    await page.evaluate(() => performance.clearMeasures('view-drawn'));
    await page.keyboard.press(key);
    await page.waitForFunction(() => performance.getEntriesByName('view-drawn').some(({ detail }) => detail.rests), undefined, { timeout: 5000 });
    return page.evaluate(() => performance.getEntriesByName('view-drawn').find(({ detail }) => detail.rests).duration);
}

function part(sorted, share) {
    return sorted[Math.min(sorted.length - 1, Math.floor(sorted.length * share))];
}

async function measure(page) {
    // In to single sweeps, along them, out again; across frequencies too.
    const way = [...Array(10).fill('+'), 'ArrowRight', 'PageUp', 'ArrowLeft', 'PageDown', ']', 'ArrowUp', '[', ...Array(10).fill('-'), 'ArrowRight', ']', 'ArrowDown', '['];
    const taken = [];
    for (let at = 0; taken.length < steps; ++at) {
        const key = way[at % way.length];
        const moves = await page.evaluate(async (pressed) => {
            const { from, to, low, high } = (await import('/modules/model.js')).get();
            const all = (await import('/modules/navigate.js')).bounds();
            const wide = from <= all.from && to >= all.to;
            return pressed === '+' || pressed === ']' || (pressed === '-' && !wide) || (pressed === '[' && (low > all.low || high < all.high))
                || (['ArrowLeft', 'PageUp'].includes(pressed) && from > all.from) || (['ArrowRight', 'PageDown'].includes(pressed) && to < all.to)
                || (pressed === 'ArrowUp' && high < all.high) || (pressed === 'ArrowDown' && low > all.low);
        }, key);
        if (moves) {
            taken.push(await step(page, key));
        }
    }
    return taken.sort((a, b) => a - b);
}

const server = spawn(path.join(build, 'bin/recview'), [...paths, '--quiet', '--until-input-ends'], { stdio: ['pipe', 'pipe', 'inherit'] });
const browser = await chromium.launch({ executablePath: '/usr/bin/chromium', args: process.getuid() === 0 ? ['--no-sandbox'] : [] });
try {
    const page = await browser.newPage({ viewport: { width: 1600, height: 1000 } });
    const begun = performance.now();
    await page.goto(await address(server));
    await page.waitForFunction(() => Number(document.body.dataset.drawn) > 0, undefined, { timeout: patience });
    const first = performance.now() - begun;
    await page.waitForFunction(async () => (await (await fetch('/api/recordings')).json()).recordings.every(({ made }) => made === 1) && document.body.dataset.settled === 'exact',
        undefined, { timeout: patience, polling: 200 });
    const taken = await measure(page);
    const [middle, most] = [part(taken, 0.5), part(taken, 0.95)];
    console.log(`first picture ${first.toFixed(0)} ms; ${taken.length} steps: middle ${middle.toFixed(0)} ms (at most ${limits.middle}), `
        + `95 % ${most.toFixed(0)} ms (at most ${limits.most}), longest ${taken.at(-1).toFixed(0)} ms`);
    process.exitCode = middle <= limits.middle && most <= limits.most ? 0 : 1;
} finally {
    await browser.close();
    server.kill();
}
