// The spectrum: the sweep at the cursor, and the largest, mean and smallest level of what is visible.
import * as model from './model.js';
import * as server from './server.js';
import * as navigate from './navigate.js';
import * as recordings from './recordings.js';
import * as axes from './axes.js';
import * as sweep from './sweep.js';
import * as text from './text.js';
import { chart, join } from './chart.js';
import { button, element } from './dom.js';
import { latest } from './latest.js';

const lines = [
    { label: 'Max', colour: 'max', title: 'Largest level of what is visible' },
    { label: 'Mean', colour: 'mean', title: 'Mean level of what is visible' },
    { label: 'Min', colour: 'min', title: 'Smallest level of what is visible' },
    { label: 'Cursor', colour: 'now', title: 'The sweep at the cursor' },
];
const nothing = { hz: [], max: [], mean: [], min: [] };
let visible = nothing;
let container;
let plot;
let figures;

/** Fills its container. */
export function create(theContainer) {
    container = theContainer;
    figures = element('span', { className: 'reading' });
    const body = element('div', { className: 'chart' });
    container.append(element('header', {}, element('h2', { textContent: 'Spectrum' }), ...lines.map(toggle), figures), body);
    plot = chart(body, {
        lines,
        range: () => [model.get().low, model.get().high],
        ticks: ({ width }) => axes.frequencyTicks(model.get().low, model.get().high, width - 60, 56).ticks.map((tick) => ({ value: tick.hz, text: tick.text })),
        marker: () => model.get().hz,
        clicked: (hz) => model.set({ hz }),
        selected: (low, high) => navigate.show({ low, high }, 'jump'),
        hovered: read,
    });
    const asked = latest(ask, recordings.tell, 60);
    model.on(['recording', 'type', 'from', 'to', 'low', 'high'], asked);
    model.on(['low', 'high'], () => plot.rescale());
    model.on('hz', () => plot.redraw());
    sweep.on(draw);
    recordings.onMade(asked);
}

function toggle(line, index) {
    const made = button(line.label, () => {
        const on = made.getAttribute('aria-pressed') !== 'true';
        made.setAttribute('aria-pressed', String(on));
        plot.show(index + 1, on);
    }, { className: 'key', title: line.title, aria: { pressed: 'true' }, data: { colour: line.colour } });
    return made;
}

async function ask() {
    const { recording, type, from, to, low, high } = model.get();
    visible = recording === null || type === null ? nothing
        : await server.json('/api/spectrum', { recording: recording.id, type, from, to, low, high, points: 700 });
    draw();
}

/** The cursor's sweep has frequencies of its own: both are joined, and only what is visible counts. */
function draw() {
    container.hidden = model.get().type === null;
    const { low, high } = model.get();
    const now = sweep.get();
    const shown = { hz: [], level: [] };
    now?.hz.forEach((hz, index) => {
        if (hz >= low && hz <= high) {
            shown.hz.push(hz);
            shown.level.push(now.levels[index]);
        }
    });
    plot.setData(join([[visible.hz, visible.max, visible.mean, visible.min], [shown.hz, shown.level]]));
}

function read(index, hz) {
    if (index === null || hz === null) {
        figures.textContent = '';
        return;
    }
    const data = plot.plot.data;
    const near = (line) => valueNear(data[line], index);
    const shown = [1, 4].filter((line) => plot.plot.series[line].show).map((line) => text.minus((near(line) ?? NaN).toFixed(1)));
    figures.textContent = `${text.frequencyTo(data[0][index], (model.get().high - model.get().low) / 700)}  ${shown.filter((one) => one !== 'NaN').join(' / ')} dB`;
}

/** Of joined tables one has no value at the other's places: the next one that is there. */
function valueNear(values, index) {
    for (let by = 0; by < 20; by++) {
        const found = values[index - by] ?? values[index + by];
        if (found !== undefined && found !== null) {
            return found;
        }
    }
    return null;
}
