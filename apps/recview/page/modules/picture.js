// A grid of levels as a picture that can be drawn moved and stretched, wherever the view is by now.
// Pictures are fetched for the view: a quick one while it moves, an exact one when it rests; never more than two at a time.
import * as colormaps from './colormaps.js';
import * as server from './server.js';

const restMs = 150;

/** What identifies the data of a picture, besides time and frequency. */
export function sourceOf({ recording, type, of }) {
    return `${recording?.id} ${type} ${of}`;
}

/** A picture of what the server answered: {head, levels}. */
export class Picture {
    constructor({ head, levels }, source) {
        this.head = head;
        this.levels = levels;
        this.source = source;
        this.canvas = new OffscreenCanvas(head.columns, head.rows);
        this.painted = '';
    }

    /** Colours the levels, unless they have these colours. */
    paint({ map, levelLow, levelHigh }) {
        const look = `${map} ${levelLow} ${levelHigh}`;
        if (look !== this.painted) {
            const image = new ImageData(this.head.columns, this.head.rows);
            colormaps.paint(new Uint32Array(image.data.buffer), this.levels, map, levelLow, levelHigh);
            this.canvas.getContext('2d').putImageData(image, 0, 0);
            this.painted = look;
        }
    }

    /** Draws where its time and frequencies are in a view that fills a box of device pixels. */
    draw(context, state, box) {
        this.paint(state);
        const { fromMs, toMs, lowHz, highHz } = this.head;
        const x = (ms) => box.x + (ms - state.from) / (state.to - state.from) * box.width;
        const y = (hz) => box.y + (state.high - hz) / (state.high - state.low) * box.height;
        colormaps.fillMissing(context, x(fromMs), y(highHz), x(toMs) - x(fromMs), y(lowHz) - y(highHz));
        context.imageSmoothingEnabled = false;
        context.drawImage(this.canvas, x(fromMs), y(highHz), x(toMs) - x(fromMs), y(lowHz) - y(highHz));
    }

    /** The level at a moment and frequency, NaN where there is none. */
    levelAt(ms, hz) {
        const { fromMs, toMs, lowHz, highHz, columns, rows } = this.head;
        const column = Math.floor((ms - fromMs) / (toMs - fromMs) * columns);
        const row = Math.floor((highHz - hz) / (highHz - lowHz) * rows);
        const inside = column >= 0 && column < columns && row >= 0 && row < rows;
        return inside ? this.levels[row * columns + column] : NaN;
    }

    /** True when it shows just this view. */
    shows({ from, to, low, high }) {
        const { fromMs, toMs, lowHz, highHz } = this.head;
        const slack = (to - from) * 1e-6;
        const near = (one, other, by) => Math.abs(one - other) <= by;
        return near(fromMs, from, slack) && near(toMs, to, slack) && near(lowHz, low, 1) && near(highHz, high, 1);
    }
}

/** Levels for a scale that shows what is there: the noise dark, the strongest bright; null when nothing is measured. */
export function scaleOf(levels) {
    const step = Math.max(1, Math.floor(levels.length / 40000));
    const sample = [];
    for (let at = 0; at < levels.length; at += step) {
        if (levels[at] === levels[at]) {
            sample.push(levels[at]);
        }
    }
    if (sample.length === 0) {
        return null;
    }
    const sorted = Float32Array.from(sample).sort();
    const part = (share) => sorted[Math.min(sorted.length - 1, Math.floor(share * sorted.length))];
    const low = Math.floor(part(0.05));
    return { low, high: Math.max(Math.ceil(part(0.9995)), low + 20) };
}

export class Loader {
    /**
     * @param {() => ?object} wanted the question for what is visible now, without exact; null when nothing can be asked
     * @param {(picture: Picture, since: number) => void} arrived with the time (performance.now()) it was asked for
     * @param {(error: Error) => void} failed
     */
    constructor(wanted, arrived, failed) {
        Object.assign(this, { wanted, arrived, failed });
        this.running = new Map(); // kind -> number of the view it was asked for
        this.view = 0;
        this.quick = 0; // newest view asked for quickly
        this.shown = 0; // newest view that arrived
        this.exact = 0; // newest view that arrived and cannot be shown more exactly
        this.since = 0;
        this.timer = null;
    }

    /** The view is another one. @param {boolean} other also the data: what runs is of no use any more */
    moved(other = false) {
        this.view++;
        this.since = performance.now();
        server.giveUp('view-exact');
        if (other) {
            server.giveUp('view-0');
            server.giveUp('view-1');
            this.shown = this.view - 1;
        }
        clearTimeout(this.timer);
        this.timer = setTimeout(() => this.rested(), restMs);
        this.next();
    }

    next() {
        const free = ['view-0', 'view-1'].find((kind) => !this.running.has(kind));
        if (this.quick < this.view && free !== undefined && this.running.size < 2) {
            this.quick = this.view;
            this.ask(free, 0);
        }
    }

    rested() {
        if (this.exact === this.view) {
            return;
        }
        if (this.running.size < 2) {
            this.ask('view-exact', 1);
        } else {
            this.timer = setTimeout(() => this.rested(), 20);
        }
    }

    async ask(kind, exact) {
        const question = this.wanted();
        if (question === null) {
            return;
        }
        const { view, since } = this;
        const source = sourceOf({ ...question, recording: { id: question.recording } });
        this.running.set(kind, view);
        try {
            const answer = await server.view({ ...question, exact }, kind);
            const late = exact === 0 && this.exact === view; // a quick answer behind the exact one
            if (view >= this.shown && !late) {
                this.shown = view;
                this.exact = exact === 1 || answer.head.exact ? view : this.exact;
                this.arrived(new Picture(answer, source), since);
            }
        } catch (error) {
            if (!server.isOvertaken(error)) {
                this.failed(error);
            }
        } finally {
            this.running.delete(kind);
            this.next();
        }
    }
}
