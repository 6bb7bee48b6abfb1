// The state at the cursor: every value that was in force then.
import * as model from './model.js';
import * as server from './server.js';
import * as sweep from './sweep.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import { element } from './dom.js';
import { latest } from './latest.js';

let rows;
let filter;
let count;
let shown = null;

/** Fills its container. */
export function create(container) {
    filter = element('input', { type: 'search', placeholder: 'Filter', aria: { label: 'Filter values' } });
    filter.addEventListener('input', draw);
    count = element('span', { className: 'reading' });
    rows = element('tbody');
    const head = element('thead', {}, element('tr', {}, ...['Value', '', 'Since'].map((title) => element('th', { scope: 'col', textContent: title }))));
    container.append(element('header', {}, filter, count), element('div', { className: 'scroll', tabIndex: 0 }, element('table', {}, head, rows)));
    const asked = latest(ask, recordings.tell, 120);
    model.on(['recording', 'at', 'follow', 'utc'], asked);
    model.on('panel', asked);
    recordings.onMade(asked);
    model.on('end', (state) => (state.follow && state.at === null ? asked() : undefined));
}

async function ask() {
    const { recording, panel } = model.get();
    const at = sweep.moment();
    if (panel !== 'state') {
        return;
    }
    shown = recording === null || at === null ? null : await server.json('/api/state', { recording: recording.id, at });
    draw();
}

function draw() {
    const wanted = filter.value.trim().toLowerCase();
    const units = new Map((model.get().recording?.values ?? []).map(({ code, unit }) => [code, unit]));
    const all = (shown?.state ?? []).map((one) => ({ ...one, words: text.value(one.value, units.get(one.code)) }));
    const fitting = all.filter(({ keyword, words }) => `${keyword ?? ''} ${words}`.toLowerCase().includes(wanted));
    rows.replaceChildren(...fitting.map(row));
    count.textContent = shown === null ? 'Click in the waterfall to see every value at a time.'
        : fitting.length === all.length ? `${all.length} values` : `${fitting.length} of ${all.length} values`;
}

function row({ code, keyword, path, words, timeMs }) {
    return element('tr', { data: { code } },
        element('th', { scope: 'row', textContent: keyword ?? `Type ${code}`, title: path ?? '' }),
        element('td', { textContent: words, title: words }),
        element('td', { textContent: timeMs === null ? '?' : `${(timeMs / 1000).toFixed(3)} s` }));
}
