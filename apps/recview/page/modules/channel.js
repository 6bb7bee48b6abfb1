// One channel over the visible time, under the waterfall and in line with it.
import * as model from './model.js';
import * as server from './server.js';
import * as axes from './axes.js';
import * as navigate from './navigate.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import { chart } from './chart.js';
import { element } from './dom.js';
import { latest } from './latest.js';

const lines = [{ label: 'Max', colour: 'max' }, { label: 'Min', colour: 'min' }, { label: 'Mean', colour: 'mean' }];
const nothing = { hz: null, ms: [], max: [], mean: [], min: [] };
let answer = nothing;
let container;
let title;
let figures;
let plot;

/** Fills its container. */
export function create(theContainer) {
    container = theContainer;
    title = element('h2', { textContent: 'Channel' });
    figures = element('span', { className: 'reading' });
    const body = element('div', { className: 'chart' });
    container.append(element('header', {}, title, figures), body);
    plot = chart(body, {
        lines, band: [1, 2],
        range: () => [model.get().from, model.get().to],
        ticks: null,
        gutters: () => axes.geometry,
        marker: () => model.get().at,
        clicked: (ms) => model.set({ at: ms }),
        selected: (from, to) => navigate.show({ from, to }, 'jump'),
        hovered: read,
    });
    const asked = latest(ask, recordings.tell, 60);
    model.on(['recording', 'type', 'from', 'to', 'hz'], asked);
    model.on(['from', 'to'], () => plot.rescale());
    model.on('at', () => plot.redraw());
    recordings.onMade(asked);
    show();
}

async function ask() {
    const { recording, type, from, to, hz } = model.get();
    const columns = Math.min(2000, Math.max(50, Math.round(axes.geometry.width)));
    try {
        answer = recording === null || type === null || hz === null ? nothing
            : await server.json('/api/channel', { recording: recording.id, type, hz, from, to, columns });
    } catch (error) {
        answer = nothing;
        throw error;
    } finally {
        show();
    }
}

function show() {
    container.classList.toggle('idle', answer.hz === null);
    container.hidden = model.get().type === null;
    title.textContent = answer.hz === null ? 'Channel: click in the waterfall to see one over time' : `Channel ${text.frequency(answer.hz)}`;
    plot.setData([answer.ms, answer.max, answer.min, answer.mean]);
}

function read(index, ms) {
    if (index === null || ms === null || answer.ms.length === 0) {
        figures.textContent = '';
        return;
    }
    const level = (list) => text.minus((list[index] ?? NaN).toFixed(1));
    const levels = answer.max[index] === answer.min[index] ? level(answer.max) : `${level(answer.max)} / ${level(answer.mean)} / ${level(answer.min)}`;
    figures.textContent = answer.max[index] === null ? '' : `${text.clock(answer.ms[index], model.get().utc)}  ${levels} dB`;
}
