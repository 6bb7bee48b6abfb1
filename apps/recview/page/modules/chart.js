// Lines over time or frequency: uPlot in the page's colours, as wide and high as its container.
import uPlot from '/vendor/uPlot.esm.js';
import * as axes from './axes.js';
import * as text from './text.js';
import * as theme from './theme.js';

const font = '11px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';
const colour = (name) => () => theme.colour(name);

/**
 * @typedef {object} Line
 * @property {string} label
 * @property {string} colour name of a variable of the style sheet
 * @property {number} [width] in CSS pixels
 */

/**
 * A chart in a container.
 * @param {HTMLElement} container
 * @param {object} wishes
 * @param {Line[]} wishes.lines
 * @param {() => number[]} wishes.range of the x axis, now
 * @param {(chart: uPlot) => object[]} [wishes.ticks] marks of the x axis: {value, text}; without, there is no x axis
 * @param {() => object} [wishes.gutters] left and right edge in CSS pixels, as the waterfall's; without, as needed
 * @param {[number, number]} [wishes.band] the lines (from 1) between which it is filled
 * @param {number} [wishes.least] the least that the y axis shows
 * @param {() => ?number} [wishes.marker] where the cursor's line stands
 * @param {(x: number) => void} [wishes.clicked]
 * @param {(low: number, high: number) => void} [wishes.selected]
 * @param {(index: ?number, x: ?number) => void} [wishes.hovered]
 */
export function chart(container, wishes) {
    const plot = new uPlot(options(container, wishes), [[], ...wishes.lines.map(() => [])], container);
    const size = () => plot.setSize({ width: container.clientWidth, height: container.clientHeight });
    new ResizeObserver(size).observe(container);
    if (wishes.gutters) {
        axes.onLayout(() => {
            plot.axes[1].size = () => wishes.gutters().left;
            size();
        });
    }
    theme.onChange(() => plot.redraw(false, true));
    clicks(plot, wishes);
    return {
        plot,
        setData: (data) => plot.setData(data),
        /** The x axis shows its range as it is now. */
        rescale: () => plot.setScale('x', bounds(wishes)),
        redraw: () => plot.redraw(false, false),
        show: (line, on) => plot.setSeries(line, { show: on }),
    };
}

function bounds({ range }) {
    const [min, max] = range();
    return { min, max };
}

function options(container, wishes) {
    const { lines, gutters, band, least = 10 } = wishes;
    return {
        width: Math.max(100, container.clientWidth), height: Math.max(40, container.clientHeight),
        legend: { show: false },
        padding: [6, gutters ? () => gutters().right : 16, gutters ? 6 : 0, 0],
        cursor: { y: false, points: { size: 5 }, drag: { x: Boolean(wishes.selected), y: false, setScale: false }, focus: { prox: -1 } },
        select: { show: Boolean(wishes.selected) },
        scales: {
            x: { time: false, range: () => wishes.range() },
            y: { range: (plot, low, high) => roomy(low, high, least) },
        },
        axes: [xAxis(wishes), yAxis(wishes)],
        series: [{}, ...lines.map((line) => ({
            label: line.label, stroke: colour(line.colour), width: line.width ?? 1, points: { show: false }, spanGaps: false,
        }))],
        bands: band ? [{ series: band, fill: colour('fill') }] : [],
        hooks: hooks(wishes),
    };
}

function roomy(low, high, least) {
    if (low === null || high === null) {
        return [0, least];
    }
    const room = Math.max(least - (high - low), (high - low) * 0.1) / 2;
    return [low - room, high + room];
}

function xAxis({ ticks }) {
    return {
        show: Boolean(ticks), stroke: colour('dim'), font, size: 26, gap: 3, ticks: { size: 4, stroke: colour('line'), width: 1 },
        grid: { stroke: colour('grid'), width: 1 },
        splits: (plot) => (ticks ? ticks(plot).map(({ value }) => value) : []),
        values: (plot, splits) => {
            const words = new Map((ticks ? ticks(plot) : []).map((tick) => [tick.value, tick.text]));
            return splits.map((value) => words.get(value) ?? '');
        },
    };
}

function yAxis({ gutters }) {
    return {
        stroke: colour('dim'), font, size: gutters ? () => gutters().left : 46, gap: 4,
        ticks: { size: 4, stroke: colour('line'), width: 1 }, grid: { stroke: colour('grid'), width: 1 },
        splits: (plot, index, low, high) => axes.linearTicks(low, high, plot.bbox.height / window.devicePixelRatio, 24).ticks,
        values: (plot, splits) => splits.map((value) => text.minus(Math.round(value * 1e6) / 1e6)),
    };
}

function hooks({ marker, selected, hovered }) {
    return {
        draw: marker ? [(plot) => drawMarker(plot, marker())] : [],
        setSelect: selected ? [(plot) => choose(plot, selected)] : [],
        setCursor: hovered ? [(plot) => hovered(plot.cursor.idx ?? null, plot.cursor.left >= 0 ? plot.posToVal(plot.cursor.left, 'x') : null)] : [],
    };
}

function drawMarker(plot, value) {
    if (value === null || value < plot.scales.x.min || value > plot.scales.x.max) {
        return;
    }
    const x = Math.round(plot.valToPos(value, 'x', true)) + 0.5;
    const { ctx: context, bbox } = plot;
    context.save();
    context.strokeStyle = theme.colour('now');
    context.lineWidth = 1;
    context.globalAlpha = 0.8;
    axes.line(context, x, bbox.top, x, bbox.top + bbox.height);
    context.restore();
}

function choose(plot, selected) {
    const { left, width } = plot.select;
    if (width > 4) {
        selected(plot.posToVal(left, 'x'), plot.posToVal(left + width, 'x'));
        plot.setSelect({ left: 0, top: 0, width: 0, height: 0 }, false);
    }
}

/** A click is a press that did not become a drag. */
function clicks(plot, { clicked }) {
    let pressed = null;
    if (!clicked) {
        return;
    }
    plot.over.addEventListener('pointerdown', (event) => { pressed = event.clientX; });
    plot.over.addEventListener('click', (event) => {
        if (pressed !== null && Math.abs(event.clientX - pressed) < 4) {
            clicked(plot.posToVal(event.clientX - plot.over.getBoundingClientRect().left, 'x'));
        }
    });
}

/** Tables with x values of their own as one: {@link uPlot.join}. */
export function join(tables) {
    return uPlot.join(tables);
}
