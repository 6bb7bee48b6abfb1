// Runs one file of browser tests: run.mjs REPORT FILE [USER]. Ends with 77 and a sentence where there is nothing to run it with.
import { spawnSync } from 'node:child_process';
import { accessSync, chownSync, constants, existsSync, mkdirSync, mkdtempSync, rmSync } from 'node:fs';
import os from 'node:os';
import path from 'node:path';

const skipped = 77;
const here = import.meta.dirname ?? path.dirname(new URL(import.meta.url).pathname);
const [report, file, user] = process.argv.slice(2);

/** Why the tests cannot run, or nothing. */
function whatIsMissing() {
    const [major] = process.versions.node.split('.').map(Number);
    if (major < 18) {
        return `Node.js is too old: ${process.version}, it takes 18.`;
    }
    if (!existsSync(process.env.CHROMIUM ?? '/usr/bin/chromium')) {
        return 'There is no Chromium: install the package chromium.';
    }
    if (!existsSync(path.join(here, 'node_modules/playwright-core/package.json'))) {
        return 'There is no playwright-core: run scripts/install-dependencies.';
    }
    if (user && process.getuid() !== 0) {
        return `Only root can run these tests as ${user}; they ran as who you are.`;
    }
    return undefined;
}

/** As this user, in a home of its own. */
function asUser(command) {
    const id = Number(spawnSync('id', ['-u', user], { encoding: 'utf8' }).stdout);
    const home = mkdtempSync(path.join(os.tmpdir(), 'browser-home-'));
    chownSync(home, id, -1);
    const seen = spawnSync('setpriv', [`--reuid=${id}`, '--clear-groups', 'test', '-r', path.join(here, file)]);
    if (seen.status !== 0) {
        rmSync(home, { recursive: true });
        process.stdout.write(`${user} cannot read this checkout.\n`);
        process.exit(skipped);
    }
    const done = spawnSync('setpriv', [`--reuid=${id}`, '--clear-groups', ...command],
        { stdio: 'inherit', env: { ...process.env, HOME: home, XDG_CONFIG_HOME: home, XDG_CACHE_HOME: home, TMPDIR: home } });
    rmSync(home, { recursive: true });
    return done;
}

const missing = whatIsMissing();
if (missing !== undefined) {
    process.stdout.write(`${missing}\n`);
    process.exit(skipped);
}
mkdirSync(path.dirname(report), { recursive: true });
rmSync(report, { force: true });
const command = [process.execPath, '--test', '--test-reporter=spec', '--test-reporter-destination=stdout',
    `--test-reporter=${path.join(here, 'report.mjs')}`, '--test-reporter-destination=stderr', path.join(here, file)];
accessSync(path.join(here, file), constants.R_OK);
process.env.BROWSER_REPORT = user ? '' : report;
const done = user ? asUser(command) : spawnSync(command[0], command.slice(1), { stdio: 'inherit' });
process.exit(done.status ?? 1);
