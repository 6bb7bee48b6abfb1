// The scale of levels beside the waterfall: its ends are dragged, set by keys, or follow the data.
import * as model from './model.js';
import * as axes from './axes.js';
import * as colormaps from './colormaps.js';
import * as text from './text.js';
import * as theme from './theme.js';
import { element, button } from './dom.js';

const least = 1;
let box;
let picture;
let canvas;
let handles;
let auto;
let drag = null;

/** @param {() => object} theBox the waterfall's plot @param {() => ?object} thePicture what it shows */
export function create(container, theBox, thePicture) {
    [box, picture] = [theBox, thePicture];
    canvas = element('canvas', { className: 'scale', title: 'Level scale: drag its ends, double click to follow the data' });
    handles = { high: handle('high', 'Highest level'), low: handle('low', 'Lowest level') };
    auto = button('Auto', () => model.set({ autoLevel: !model.get().autoLevel }), { className: 'auto', title: 'The scale follows the data (a)' });
    container.append(canvas, handles.high, handles.low, auto);
    canvas.addEventListener('pointerdown', (event) => begin(event, nearest(event.offsetY)));
    canvas.addEventListener('dblclick', () => model.set({ autoLevel: true }));
    canvas.addEventListener('wheel', (event) => {
        event.preventDefault();
        widen(Math.exp(event.deltaY * 0.002));
    }, { passive: false });
    for (const one of [canvas, ...Object.values(handles)]) {
        one.addEventListener('pointermove', moved);
        one.addEventListener('pointerup', () => { drag = null; });
        one.addEventListener('pointercancel', () => { drag = null; });
    }
    model.on(['levelLow', 'levelHigh', 'map', 'autoLevel', 'recording', 'type'], draw);
    axes.onLayout(draw);
    theme.onChange(draw);
    new ResizeObserver(draw).observe(container);
}

function handle(which, label) {
    const made = element('div', { className: 'handle', tabIndex: 0, role: 'slider', aria: { label, orientation: 'vertical' } });
    made.addEventListener('pointerdown', (event) => begin(event, which));
    made.addEventListener('keydown', (event) => {
        const by = { ArrowUp: 1, ArrowDown: -1, PageUp: 10, PageDown: -10 }[event.key];
        if (by !== undefined) {
            event.preventDefault();
            event.stopPropagation();
            change({ [which]: model.get()[which === 'high' ? 'levelHigh' : 'levelLow'] + by });
        }
    });
    return made;
}

/** What the bar shows: the scale and what there is, with some room. */
export function extent() {
    const { levelLow, levelHigh } = model.get();
    const head = picture()?.head;
    const lowest = Math.min(levelLow, head?.lowest ?? levelLow);
    const highest = Math.max(levelHigh, head?.highest ?? levelHigh);
    return { low: Math.floor(lowest - 5), high: Math.ceil(highest + 5) };
}

function toY(level, { low, high } = drag?.extent ?? extent()) {
    return (high - level) / (high - low) * box().height;
}

/** Which of low, high and both a place on the bar moves. */
function nearest(y) {
    const { levelLow, levelHigh } = model.get();
    const [top, bottom] = [toY(levelHigh), toY(levelLow)];
    const near = Math.min(14, (bottom - top) / 4);
    return y < top + near ? 'high' : y > bottom - near ? 'low' : 'both';
}

function begin(event, which) {
    const { levelLow, levelHigh } = model.get();
    event.preventDefault();
    event.currentTarget.focus?.();
    event.currentTarget.setPointerCapture(event.pointerId);
    drag = { which, y: event.clientY, levelLow, levelHigh, extent: extent() };
}

function moved(event) {
    if (drag === null) {
        return;
    }
    const { low, high } = drag.extent;
    const by = (drag.y - event.clientY) / box().height * (high - low);
    if (by !== 0) {
        change({
            ...(drag.which !== 'high' ? { low: drag.levelLow + by } : {}),
            ...(drag.which !== 'low' ? { high: drag.levelHigh + by } : {}),
        });
    }
}

/** Sets ends by hand; the other one gives way. */
export function change({ low, high }) {
    const { levelLow, levelHigh } = model.get();
    const round = (level) => Math.round(level * 10) / 10;
    const next = { levelLow: round(low ?? Math.min(levelLow, high - least)), levelHigh: round(high ?? Math.max(levelHigh, low + least)) };
    if (Number.isFinite(next.levelLow) && Number.isFinite(next.levelHigh) && next.levelHigh - next.levelLow >= least) {
        model.set({ autoLevel: false, ...next });
    }
}

function widen(factor) {
    const { levelLow, levelHigh } = model.get();
    const middle = (levelLow + levelHigh) / 2;
    const half = Math.max(1, (levelHigh - levelLow) / 2 * factor);
    change({ low: middle - half, high: middle + half });
}

function draw() {
    const { x, y, width, height } = box();
    const { type } = model.get();
    [canvas, handles.high, handles.low, auto].forEach((one) => { one.hidden = type === null; });
    const { levelLow, levelHigh, autoLevel } = model.get();
    const left = x + width + (axes.geometry.right > 54 ? 8 : 4);
    place(canvas, left, y, axes.geometry.right - (left - x - width), height);
    place(handles.high, left - 3, y + toY(levelHigh) - 7, 18, 14);
    place(handles.low, left - 3, y + toY(levelLow) - 7, 18, 14);
    place(auto, left - 2, 6, axes.geometry.right - 8, 24);
    for (const [which, level] of [['high', levelHigh], ['low', levelLow]]) {
        handles[which].setAttribute('aria-valuenow', String(level));
        handles[which].setAttribute('aria-valuetext', text.level(level));
    }
    auto.setAttribute('aria-pressed', String(autoLevel));
    const ratio = window.devicePixelRatio;
    canvas.width = Math.round(canvas.clientWidth * ratio);
    canvas.height = Math.round(height * ratio);
    const context = canvas.getContext('2d');
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    bar(context, height, drag?.extent ?? extent());
}

function place(one, left, top, width, height) {
    Object.assign(one.style, { left: `${left}px`, top: `${top}px`, width: `${width}px`, height: `${height}px` });
}

/** The colours from the top down, and the levels beside them. @param {CanvasRenderingContext2D} context */
export function bar(context, height, { low, high }) {
    const { map, levelLow, levelHigh } = model.get();
    for (let y = 0; y < height; y++) {
        const [red, green, blue] = colormaps.colourOf(map, high - (y + 0.5) / height * (high - low), levelLow, levelHigh);
        context.fillStyle = `rgb(${red} ${green} ${blue})`;
        context.fillRect(0, y, 12, 1.5);
    }
    context.fillStyle = theme.colour('dim');
    context.font = '11px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';
    context.textBaseline = 'middle';
    for (const level of axes.linearTicks(low, high, height, 40).ticks) {
        const y = (high - level) / (high - low) * height;
        if (y > 5 && y < height - 5) {
            context.fillRect(12, Math.round(y), 3, 1);
            context.fillText(text.minus(level), 17, y);
        }
    }
}
