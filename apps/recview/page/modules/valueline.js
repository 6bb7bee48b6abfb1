// A number over time as a line; zoomed out with the band between its lowest and highest.
import uPlot from '/vendor/uPlot.esm.js';
import { geometry } from './axes.js';
import * as text from './text.js';
import { colour } from './theme.js';

const height = 84;

export class Line {
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
                this.plot.setSize({ width, height });
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
            width, height, padding: [6, geometry.right, 6, 0], legend: { show: false }, cursor: { show: false },
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
