// The view in the page's address: opened again, or by a colleague, it shows the same.
import * as model from './model.js';

const number = { write: String, read: (given) => (given.trim() !== '' && Number.isFinite(Number(given)) ? Number(given) : undefined) };
const milliseconds = { write: (ms) => String(Math.round(ms * 1000) / 1000), read: number.read };
const hertz = { write: (hz) => String(Math.round(hz * 1000) / 1000), read: number.read };
const flag = { write: (on) => (on ? '1' : '0'), read: (given) => ({ 0: false, 1: true })[given] };
const oneOf = (...all) => ({ write: String, read: (given) => (all.includes(given) ? given : undefined) });
const numbers = {
    write: (list) => list.join(','),
    read: (given) => {
        const list = given.split(',').filter((part) => part !== '').map(Number);
        return list.every(Number.isFinite) ? list : undefined;
    },
};

/** What stands in the address, besides the recording; null and what is as it is by default is left out. */
const fields = {
    type: number, from: milliseconds, to: milliseconds, low: hertz, high: hertz, at: milliseconds, hz: hertz,
    of: oneOf('max', 'mean', 'min'), map: oneOf('viridis', 'cividis', 'inferno', 'grey'),
    autoLevel: flag, levelLow: number, levelHigh: number, utc: flag, dark: flag, follow: flag, speed: number,
    values: numbers, loop: numbers, panel: oneOf('state', 'answers', 'map', 'polar'),
};
const defaults = { ...model.get() };
const always = ['type', 'from', 'to', 'low', 'high'];
const names = Object.keys(fields);

/** The hash of the state. */
export function write(state = model.get()) {
    const query = new URLSearchParams();
    if (state.recording !== null) {
        query.set('recording', state.recording.id);
    }
    for (const name of names) {
        const value = state[name];
        const manual = !name.startsWith('level') || !state.autoLevel;
        const differs = always.includes(name) || String(value) !== String(defaults[name]) || (name.startsWith('level') && manual);
        if (value !== null && manual && differs) {
            query.set(name, fields[name].write(value));
        }
    }
    return `#${query.toString()}`;
}

/** The changes a hash asks for, with `id`, the recording's; what makes no sense is left out. */
export function read(hash = location.hash) {
    const query = new URLSearchParams(hash.replace(/^#/, ''));
    const changes = {};
    for (const name of names) {
        const value = query.has(name) ? fields[name].read(query.get(name)) : undefined;
        if (value !== undefined) {
            changes[name] = value;
        }
    }
    dropOdd(changes, 'from', 'to');
    dropOdd(changes, 'low', 'high');
    dropOdd(changes, 'levelLow', 'levelHigh');
    if (changes.loop && !(changes.loop.length === 2 && changes.loop[0] < changes.loop[1])) {
        delete changes.loop;
    }
    return { id: query.get('recording'), changes };
}

/** Two ends are taken together, in order, or not at all. */
function dropOdd(changes, low, high) {
    if (!(changes[low] < changes[high])) {
        delete changes[low];
        delete changes[high];
    }
}

/** Keeps the address as the state is; `open` is called with read() when the user goes back, forward or types one. */
export function start(open) {
    let timer = null;
    const replace = () => {
        timer = null;
        history.replaceState(null, '', write());
    };
    model.on(['recording', ...names], (state, changed, how) => {
        if (how === 'jump') {
            clearTimeout(timer);
            timer = null;
            history.pushState(null, '', write(state));
        } else {
            timer ??= setTimeout(replace, 300);
        }
    });
    window.addEventListener('popstate', () => {
        clearTimeout(timer);
        timer = null;
        open(read());
    });
}
