// What was on the air in what is visible: emissions, occupancy of channels, levels by frequency, as rectool says.
import * as model from './model.js';
import * as server from './server.js';
import * as navigate from './navigate.js';
import * as overlay from './overlay.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import { button, element, labelledChoice } from './dom.js';
import { latest } from './latest.js';

const kind = 'answers';
const restMs = 400;
const againMs = 700;
let asking;
let above;
let note;
let head;
let body;

const level = (number) => text.minus(number.toFixed(1));
const inMegahertz = (hz, digits = 4) => (hz / 1e6).toFixed(digits);

/** Questions: columns of their tables, and the rows of an answer, each with its cells and what a click does. */
const questions = {
    emissions: { title: 'Emissions', columns: ['Start', 'Lasts', 'MHz', 'kHz wide', 'Max dB'], rows: emissionRows },
    occupancy: { title: 'Occupancy', columns: ['MHz', 'Occupied %', '95 % from', 'to', 'Times'], rows: occupancyRows },
    trace: { title: 'Levels', columns: ['MHz', 'Max dB', 'Mean', 'Median', 'Min'], rows: traceRows },
};

/** Fills its container. */
export function create(container) {
    asking = labelledChoice('', Object.entries(questions).map(([name, { title }]) => [name, title]), () => ask());
    asking.select.setAttribute('aria-label', 'What to answer');
    above = element('input', { type: 'number', min: 0, max: 100, step: 1, value: 10, title: 'Decibels above the noise floor', aria: { label: 'Decibels above the noise floor' } });
    above.addEventListener('change', () => ask());
    note = element('span', { className: 'reading' });
    head = element('tr');
    body = element('tbody');
    const thresholds = element('label', { className: 'above' }, above, ' dB above noise');
    container.append(
        element('header', {}, asking.label, thresholds),
        element('p', { className: 'note answers-note' }, note),
        element('div', { className: 'scroll', tabIndex: 0 }, element('table', {}, element('thead', {}, head), body)));
    const asked = latest(work, recordings.tell, restMs);
    ask = () => {
        thresholds.hidden = asking.value === 'trace';
        server.giveUp(kind);
        asked();
    };
    model.on(['recording', 'type', 'from', 'to', 'low', 'high', 'panel'], () => ask());
    model.on('utc', () => ask());
}

let ask = () => undefined;

async function work() {
    const { recording, type, from, to, low, high, panel } = model.get();
    if (panel !== 'answers' || recording === null || type === null) {
        overlay.box([]);
        return;
    }
    const name = asking.value;
    note.textContent = 'Working it out…';
    try {
        const parameters = name === 'trace' ? { median: 1 } : { above: above.value === '' ? null : above.value };
        const all = await server.json(`/api/${name}`, { recording: recording.id, type, from, to, low, high, ...parameters }, kind);
        show(name, all);
    } catch (error) {
        if (server.isOvertaken(error)) {
            return;
        }
        show(name, null);
        note.textContent = error.message;
        if (error.status === 503) {
            setTimeout(ask, againMs);
        } else if (error.status !== 404 && error.status !== 400) {
            throw error;
        }
    }
}

function show(name, all) {
    const { columns, rows } = questions[name];
    head.replaceChildren(...columns.map((title) => element('th', { scope: 'col', textContent: title })));
    const found = all === null ? [] : rows(all.answer);
    body.replaceChildren(...found.map(row));
    overlay.box(name === 'emissions' ? found.map(({ box }) => box) : []);
    note.textContent = all === null ? '' : `${words(found.length, name)}${all.leftOut > 0 ? `, the strongest; ${all.leftOut} weaker ones left out` : ''}`;
}

function words(count, name) {
    const one = name === 'emissions' ? 'emission' : 'channel';
    return count === 0 ? `No ${one} in what is visible` : `${count} ${one}${count === 1 ? '' : 's'} in what is visible`;
}

function row({ cells, jump, title }) {
    const [first, ...others] = cells;
    const shown = button(first, jump, { className: 'jump', title: title ?? 'Show it' });
    return element('tr', {}, element('th', { scope: 'row' }, shown), ...others.map((cell) => element('td', { textContent: cell })));
}

function emissionRows({ startMsSince1970, emissions }) {
    const { utc } = model.get();
    return emissions.map(({ startMs, stopMs, centreHz, bandwidthHz, max, maxMs, strongest }) => {
        const from = startMsSince1970 + startMs;
        const to = startMsSince1970 + stopMs;
        const box = { from, to, low: centreHz - bandwidthHz / 2, high: centreHz + bandwidthHz / 2 };
        return {
            box,
            cells: [text.clock(from, utc), `${((stopMs - startMs) / 1000).toFixed(1)} s`, inMegahertz(centreHz), (bandwidthHz / 1e3).toFixed(1), level(max)],
            title: `Strongest in ${strongest.file}, record at byte ${strongest.position}`,
            jump: () => {
                navigate.goTo(startMsSince1970 + maxMs);
                model.set({ hz: centreHz });
            },
        };
    });
}

function occupancyRows({ types }) {
    const channels = [...types[0]?.channels ?? []].sort((one, other) => other.percent - one.percent);
    return channels.map(({ frequencyHz, percent, low, high, emissions, samples }) => ({
        cells: [inMegahertz(frequencyHz), percent.toFixed(2), low.toFixed(2), high.toFixed(2), String(emissions)],
        title: `${samples} samples`,
        jump: () => model.set({ hz: frequencyHz }),
    }));
}

function traceRows({ startMsSince1970, traces }) {
    return (traces[0]?.channels ?? []).map(({ frequencyHz, max, mean, min, maxMs, percentiles }) => ({
        cells: [inMegahertz(frequencyHz), level(max), level(mean), level(percentiles['50']), level(min)],
        title: 'Show the sweep with the highest level',
        jump: () => {
            navigate.goTo(startMsSince1970 + maxMs);
            model.set({ hz: frequencyHz });
        },
    }));
}
