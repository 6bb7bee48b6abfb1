// Values under the waterfall: numbers as lines, everything else as bands of what it was, on the waterfall's time axis.
import uPlot from '/vendor/uPlot.esm.js';
import * as text from './text.js';
import { geometry, onLayout, timeToX, xToTime } from './axes.js';
import { button, closedByEscape, element } from './dom.js';
import { askAgain, latest } from './latest.js';
import { colour, onChange } from './theme.js';

const kindsShown = ['number', 'text', 'selection', 'boolean'];

export function create(container, model, server) {
    new Values(container, model, server);
}

class Values {
    constructor(container, model, server) {
        this.container = container;
        this.model = model;
        this.server = server;
        this.rows = new Map(); // by type code
        this.loadedEnd = 0;
        this.build();
        this.load = latest(() => this.loadAll(), (error) => this.say(error));
        this.readCursor = latest(() => this.loadCursor(), (error) => this.say(error));
        model.on(['recording', 'recordings'], () => this.drawChooser());
        model.on(['recording', 'recordings', 'values'], () => this.chosen());
        model.on(['from', 'to'], () => this.moved());
        model.on(['from', 'to', 'at'], () => this.drawCursor());
        model.on(['at', 'utc'], () => this.readCursor());
        model.on(['end'], (state, changed) => changed.has('from') || this.grown());
        onChange(() => this.redraw());
        onLayout(() => this.moved());
        this.drawChooser();
        this.chosen();
    }

    build() {
        this.choices = element('fieldset', {}, element('legend', {}, 'Values of this recording'));
        this.summary = element('summary', {}, 'Values');
        this.menu = closedByEscape(element('details', { className: 'menu' }, this.summary,
            element('div', { className: 'menu-body' }, this.choices)), this.summary);
        this.note = element('p', { className: 'note error', role: 'status' });
        this.list = element('div', { className: 'value-rows' });
        this.line = element('div', { className: 'cursor-line', hidden: true });
        this.list.append(this.line);
        this.container.replaceChildren(this.menu, this.note, this.list);
    }

    say(error) {
        if (!this.server.isOvertaken(error)) {
            this.note.textContent = error.message;
        }
    }

    offered() {
        return (this.model.get().recording?.values ?? []).filter(({ kind }) => kindsShown.includes(kind));
    }

    drawChooser() {
        const { values } = this.model.get();
        const offered = this.offered();
        const boxes = offered.map((value) => {
            const box = element('input', { type: 'checkbox', checked: values.includes(value.code), data: { code: value.code } });
            box.addEventListener('change', () => this.toggle(value.code, box.checked));
            return element('label', {}, box, ` ${value.keyword ?? `type ${value.code}`}`);
        });
        this.choices.replaceChildren(element('legend', {}, 'Values of this recording'), ...boxes);
        this.menu.hidden = offered.length === 0;
    }

    toggle(code, on) {
        const others = this.model.get().values.filter((one) => one !== code);
        this.model.set({ values: on ? [...others, code] : others });
    }

    /** Makes the rows that are chosen, in that order. */
    chosen() {
        const { recording, values } = this.model.get();
        const wanted = values.map((code) => this.offered().find((value) => value.code === code)).filter((value) => value);
        for (const [code, row] of this.rows) {
            if (row.recording !== recording?.id || !wanted.some((value) => value.code === code)) {
                row.plot?.remove();
                row.element.remove();
                this.rows.delete(code);
            }
        }
        for (const value of wanted) {
            if (!this.rows.has(value.code)) {
                this.rows.set(value.code, this.newRow(value, recording.id));
            }
            this.list.append(this.rows.get(value.code).element);
        }
        for (const box of this.choices.querySelectorAll('input')) {
            box.checked = values.includes(Number(box.dataset.code));
        }
        this.summary.textContent = wanted.length > 0 ? `Values (${wanted.length})` : 'Values';
        this.note.textContent = '';
        this.load();
        this.readCursor();
        this.drawCursor();
    }

    newRow(value, recording) {
        const name = value.keyword ?? `type ${value.code}`;
        const row = { value, recording, plot: null, data: null, now: element('output', { className: 'value-now' }),
            place: element('div', { className: 'value-plot' }) };
        const head = element('div', { className: 'value-head' }, element('h3', {}, name), row.now,
            button('Remove', () => this.toggle(value.code, false), { ariaLabel: `Remove ${name}` }));
        row.element = element('section', { className: 'value', aria: { label: name }, data: { code: value.code } }, head, row.place);
        row.place.addEventListener('click', (event) => this.model.set({ at: this.timeOf(event) }));
        row.place.addEventListener('pointermove', (event) => this.hover(row, this.timeOf(event)));
        row.place.addEventListener('pointerleave', () => this.showNow(row));
        return row;
    }

    timeOf(event) {
        return xToTime(event.clientX - this.container.getBoundingClientRect().left);
    }

    async loadAll() {
        for (const row of [...this.rows.values()]) {
            const { recording, from, to } = this.model.get();
            if (row.recording !== recording?.id || !(to > from)) {
                continue;
            }
            const data = await this.server.json('/api/values', { recording: recording.id, type: row.value.code, from, to,
                columns: Math.min(4096, Math.round(geometry.width)) });
            this.take(row, data);
            askAgain(data, this.load);
        }
        this.readCursor();
    }

    take(row, data) {
        if (this.rows.get(row.value.code) !== row) {
            return;
        }
        row.data = data;
        row.plot ??= data.kind === 'number' ? new Line(row.place, this.model) : new Bands(row.place, this.model);
        row.plot.take(data, row.value.kind === 'boolean');
        this.showNow(row);
    }

    moved() {
        this.redraw();
        this.load();
    }

    redraw() {
        for (const row of this.rows.values()) {
            row.plot?.draw();
        }
        this.drawCursor();
    }

    /** What a recording grew by is of interest only where it is in view. */
    grown() {
        const { to, end } = this.model.get();
        if (to >= this.loadedEnd) {
            this.loadedEnd = end;
            this.load();
        }
    }

    drawCursor() {
        const { at, from, to } = this.model.get();
        this.line.hidden = at === null || at < from || at > to || this.rows.size === 0;
        if (!this.line.hidden) {
            this.line.style.left = `${timeToX(at)}px`;
        }
    }

    /** What every shown value is at the cursor: what "state" says, as lines that are zoomed out hold less. */
    async loadCursor() {
        const { recording, at } = this.model.get();
        if (!recording || at === null || this.rows.size === 0) {
            this.rows.forEach((row) => this.setNow(row, ''));
            return;
        }
        const answer = await this.server.json('/api/state', { recording: recording.id, at });
        askAgain(answer, this.readCursor);
        for (const row of this.rows.values()) {
            const found = answer.state.find(({ code }) => code === row.value.code);
            this.setNow(row, found ? text.value(found.value, row.value.unit) : 'not yet recorded');
        }
    }

    setNow(row, words) {
        row.atCursor = words;
        this.showNow(row);
    }

    showNow(row) {
        row.now.textContent = row.atCursor ?? '';
    }

    hover(row, ms) {
        const words = row.plot?.textAt(ms);
        row.now.textContent = words ? `${words} at ${text.clock(ms, this.model.get().utc)}` : row.atCursor ?? '';
    }
}

// Bands that are narrower come together as one that says how many changes it holds.
const narrowest = 4;

/** A text, a selection or a yes and no over time as bands, each with what it was. */
class Bands {
    constructor(place, model) {
        this.place = place;
        this.model = model;
        this.strip = element('div', { className: 'bands' });
        this.left = element('p', { className: 'note' });
        this.colours = new Map();
        place.replaceChildren(this.strip, this.left);
        this.changes = [];
    }

    /** @param {boolean} yesAndNo of a value that is true or false */
    take(data, yesAndNo) {
        const words = yesAndNo ? { true: 'yes', false: 'no' } : {};
        this.changes = data.changes.map(({ ms, text: one }) => ({ ms, text: words[one] ?? one }));
        this.left.textContent = data.more > 0 ? `${data.more} more changes are left out: look at a shorter time for all of them.` : '';
        for (const { text: one } of this.changes) {
            if (!this.colours.has(one)) {
                this.colours.set(one, this.colours.size % 6);
            }
        }
        this.draw();
    }

    draw() {
        const { from, to, recording } = this.model.get();
        const last = Math.min(to, recording?.endMs ?? to);
        const made = [];
        let crowd = null;
        this.changes.forEach(({ ms, text: words }, index) => {
            const begin = Math.max(from, ms);
            const end = Math.min(last, this.changes[index + 1]?.ms ?? last);
            if (end < from || begin > last) {
                return;
            }
            const [x, right] = [timeToX(begin), timeToX(end)];
            if (right - x >= narrowest) {
                crowd = null;
                made.push({ x, right, words, ms, count: 1, colour: this.colours.get(words) });
            } else if (crowd && x - crowd.right < narrowest) {
                crowd.right = right;
                crowd.count += 1;
            } else {
                crowd = { x, right, words, ms, count: 1, colour: this.colours.get(words) };
                made.push(crowd);
            }
        });
        this.strip.replaceChildren(...made.map((band) => this.element(band)));
        this.strip.style.width = `${geometry.left + geometry.width}px`;
    }

    element({ x, right, words, ms, count, colour }) {
        const since = text.moment(ms, this.model.get().utc);
        const band = element('div', { className: count > 1 ? 'band crowd' : `band band-${colour}`,
            title: count > 1 ? `${count} changes from ${since}` : `${words} since ${since}` }, count > 1 ? '' : words);
        band.style.left = `${x}px`;
        band.style.width = `${Math.max(1, right - x)}px`;
        return band;
    }

    textAt(ms) {
        return this.changes.findLast((change) => change.ms <= ms)?.text ?? '';
    }

    remove() {
        this.strip.remove();
    }
}

const lineHeight = 84;

/** A number over time as a line; zoomed out with the band between its lowest and highest. */
class Line {
    constructor(place, model) {
        this.place = place;
        this.model = model;
        this.data = null;
        this.plot = null;
    }

    take(data) {
        this.data = data;
        const end = Math.min(this.model.get().to, this.model.get().recording.endMs);
        // What was last stays until something else is recorded.
        const goesOn = data.ms.length > 0 && data.ms.at(-1) < end;
        const whole = (list) => (goesOn ? [...list, list.at(-1)] : list);
        const times = goesOn ? [...data.ms, end] : data.ms;
        this.columns = [times, whole(data.exact ? data.last : data.max), whole(data.exact ? data.last : data.min), whole(data.last)];
        this.draw();
    }

    draw() {
        const width = geometry.left + geometry.width + geometry.right;
        if (!this.columns) {
            return;
        }
        if (this.plot && this.left === geometry.left && this.right === geometry.right) {
            if (this.plot.width !== width) {
                this.plot.setSize({ width, height: lineHeight });
            }
            // The scale of time is that of the view; setData has every scale taken anew.
            this.plot.setData(this.columns, true);
            return;
        }
        this.left = geometry.left;
        this.right = geometry.right;
        this.plot?.destroy();
        this.plot = new uPlot(this.options(width), this.columns, this.place);
    }

    options(width) {
        const by = (name) => () => colour(name);
        const stepped = uPlot.paths.stepped({ align: 1 });
        const edge = { width: 0, points: { show: false }, paths: stepped };
        return {
            width, height: lineHeight, padding: [6, geometry.right, 6, 0], legend: { show: false }, cursor: { show: false },
            scales: { x: { time: false, range: () => [this.model.get().from, this.model.get().to] } },
            axes: [{ show: false }, { size: geometry.left, stroke: by('dim'), grid: { stroke: by('line'), width: 1 },
                ticks: { show: false }, space: 22, values: (plot, splits) => splits.map((one) => this.label(one, splits)) }],
            series: [{}, edge, edge, { stroke: by('accent'), width: 1.5, paths: stepped, points: { show: false } }],
            bands: [{ series: [1, 2], fill: by('fill') }],
        };
    }

    label(number, splits) {
        if (this.data.unit !== 'Hz') {
            return String(Number(number.toPrecision(12)));
        }
        return text.frequencyTo(number, Math.abs(splits[1] - splits[0]) || 1).replace(/ .*/, '');
    }

    /** What the line says at a moment; where it is zoomed out from lowest to highest. */
    textAt(ms) {
        const here = this.data.ms.findLastIndex((one) => one <= ms);
        if (here < 0) {
            return '';
        }
        const write = (number) => text.value({ kind: 'Numeric', value: number }, this.data.unit);
        const [low, high] = [this.data.min[here], this.data.max[here]];
        return this.data.exact || low === high ? write(this.data.last[here]) : `${write(low)} to ${write(high)}`;
    }

    remove() {
        this.plot?.destroy();
    }
}
