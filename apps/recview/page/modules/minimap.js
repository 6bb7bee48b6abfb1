// The strip above the waterfall: the whole recording, and which part of it is visible.
import * as model from './model.js';
import * as axes from './axes.js';
import * as server from './server.js';
import * as navigate from './navigate.js';
import * as recordings from './recordings.js';
import * as theme from './theme.js';
import { element } from './dom.js';
import { latest } from './latest.js';
import { Picture, sourceOf } from './picture.js';

const strip = { top: 6, height: 28 };
const again = 5000;
let canvas;
let picture = null;
let frame = null;

/** @param {(picture: Picture) => void} arrived the whole recording is there, coarsely */
export function create(container, arrived) {
    canvas = element('canvas', { className: 'minimap', role: 'img', aria: { label: 'The whole recording' } });
    canvas.title = 'The whole recording: click or drag to move the view';
    container.append(canvas);
    const fetchSlowly = latest(() => fetchWhole(arrived), recordings.tell, 250);
    model.on(['recording', 'type', 'of'], fetchSlowly);
    model.on('end', () => (stale() ? fetchSlowly() : undefined));
    recordings.onMade(fetchSlowly);
    model.on(['from', 'to', 'at', 'end', 'levelLow', 'levelHigh', 'map', 'loop'], draw);
    axes.onLayout(draw);
    theme.onChange(draw);
    for (const name of ['pointerdown', 'pointermove']) {
        canvas.addEventListener(name, grasp);
    }
}

function stale() {
    return picture === null || model.get().end - picture.head.toMs > Math.max(again, (model.get().end - picture.head.fromMs) / 50);
}

async function fetchWhole(arrived) {
    const { recording, type, of } = model.get();
    if (recording === null || type === null) {
        picture = null;
        draw();
        return;
    }
    const { from, to, low, high } = navigate.bounds();
    const columns = Math.min(1200, Math.round(axes.geometry.width * window.devicePixelRatio));
    const answer = await server.view({ recording: recording.id, type, from, to, low, high, columns, rows: 96, of, exact: 0 });
    picture = new Picture(answer, sourceOf({ recording, type, of }));
    draw();
    arrived(picture);
}

function grasp(event) {
    if (event.buttons !== 1) {
        return;
    }
    canvas.setPointerCapture(event.pointerId);
    const { from, to } = model.get();
    const all = navigate.bounds();
    const ms = all.from + event.offsetX / axes.geometry.width * (all.to - all.from);
    navigate.show({ from: ms - (to - from) / 2, to: ms + (to - from) / 2 });
}

function draw() {
    frame ??= requestAnimationFrame(drawNow);
}

function drawNow() {
    frame = null;
    const ratio = window.devicePixelRatio;
    const { left, width } = axes.geometry;
    Object.assign(canvas.style, { left: `${left}px`, top: `${strip.top}px`, width: `${width}px`, height: `${strip.height}px` });
    canvas.width = Math.round(width * ratio);
    canvas.height = Math.round(strip.height * ratio);
    const state = model.get();
    const context = canvas.getContext('2d');
    context.fillStyle = theme.colour('raised');
    context.fillRect(0, 0, canvas.width, canvas.height);
    if (state.recording === null) {
        return;
    }
    const all = navigate.bounds();
    if (picture?.source === sourceOf(state)) {
        picture.draw(context, { ...state, ...all }, { x: 0, y: 0, width: canvas.width, height: canvas.height });
    }
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    visible(context, state, (ms) => (ms - all.from) / (all.to - all.from) * width, width);
}

function visible(context, state, x, width) {
    const [left, right] = [x(state.from), Math.max(x(state.to), x(state.from) + 3)];
    context.fillStyle = theme.isDark() ? '#0d1217a8' : '#ffffffa8';
    context.fillRect(0, 0, left, strip.height);
    context.fillRect(right, 0, width - right, strip.height);
    for (const { startMs } of state.recording.files.slice(1)) {
        context.fillStyle = theme.colour('text');
        context.fillRect(Math.round(x(startMs)), 0, 1, 7);
    }
    context.strokeStyle = theme.colour('accent');
    context.lineWidth = 2;
    context.strokeRect(left + 1, 1, Math.max(1, right - left - 2), strip.height - 2);
    if (state.at !== null) {
        context.fillStyle = '#ffffff';
        context.fillRect(Math.round(x(state.at)) - 0.5, 0, 1.5, strip.height);
    }
    if (state.recording.live) {
        context.fillStyle = theme.colour('live');
        context.fillRect(width - 3, 0, 3, strip.height);
    }
}
