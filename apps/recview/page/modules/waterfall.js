// The waterfall: levels over time and frequency, drawn at once from what is there while the server is asked for more.
import * as axes from './axes.js';
import * as theme from './theme.js';
import * as recordings from './recordings.js';
import * as plotaxes from './plotaxes.js';
import * as overlay from './overlay.js';
import * as gestures from './gestures.js';
import * as levels from './levels.js';
import * as minimap from './minimap.js';
import { Loader } from './loader.js';
import { scaleOf, sourceOf } from './picture.js';

const margins = { top: 58, bottom: 38 };
const shown = { picture: null, whole: null };
let canvas;
let model;
let frame = null;
let loader;

/** The plot in CSS pixels of its container. */
export function box() {
    const height = Math.max(20, canvas.clientHeight - margins.top - margins.bottom);
    return { x: axes.geometry.left, y: margins.top, width: axes.geometry.width, height };
}

/** The plot in pixels of the screen. */
export function deviceBox() {
    const { x, y, width, height } = box();
    const ratio = window.devicePixelRatio;
    const round = (number) => Math.round(number * ratio);
    return { x: round(x), y: round(y), width: Math.max(1, round(width)), height: Math.max(1, round(height)) };
}

/** The picture that is shown: of the server's newest answer; null before the first. */
export function picture() {
    return shown.picture?.source === sourceOf(model.get()) ? shown.picture : null;
}

/** Fills its container. */
export function create(container, theModel) {
    model = theModel;
    canvas = document.createElement('canvas');
    canvas.className = 'plot';
    container.append(canvas);
    loader = new Loader(question, arrived, recordings.tell);
    overlay.create(container, box);
    minimap.create(container, (whole) => {
        shown.whole = whole;
        draw();
    });
    levels.create(container, box, picture);
    gestures.create(overlay.surface(), box);
    new ResizeObserver(resized).observe(container);
    axes.onLayout(resized);
    theme.onChange(draw);
    model.on(['recording', 'type', 'of'], () => loader.moved(true));
    model.on(['from', 'to', 'low', 'high'], (state, changed) => (changed.has('type') ? undefined : loader.moved()));
    model.on(['recording', 'type', 'of', 'from', 'to', 'low', 'high', 'map', 'levelLow', 'levelHigh', 'utc', 'end'], draw);
    model.on('autoLevel', followLevels);
    watchPyramid();
}

/** While the overview of a recording is being made the view is asked for again as it grows. */
function watchPyramid() {
    recordings.onMade((made) => {
        if (picture()?.head.made < made) {
            loader.moved();
        }
    });
}

function resized() {
    const ratio = window.devicePixelRatio;
    canvas.width = Math.round(canvas.clientWidth * ratio);
    canvas.height = Math.round(canvas.clientHeight * ratio);
    overlay.resized();
    draw.now();
    loader.moved();
}

function question() {
    const { recording, type, from, to, low, high, of } = model.get();
    if (recording === null || type === null) {
        return null;
    }
    const { width, height } = deviceBox();
    return { recording: recording.id, type, from, to, low, high, columns: Math.min(width, 4096), rows: Math.min(height, 2160), of };
}

function arrived(next, since) {
    shown.picture = next;
    followLevels();
    draw.now();
    const rests = next.shows(model.get());
    document.body.dataset.drawn = String(Number(document.body.dataset.drawn) + 1);
    document.body.dataset.settled = rests ? (next.head.exact ? 'exact' : 'view') : '';
    performance.measure('view-drawn', { start: since, detail: { exact: next.head.exact, rests } });
}

/** The scale follows the data, but not every breath of it. */
function followLevels() {
    const { autoLevel, levelLow, levelHigh } = model.get();
    const scale = autoLevel && picture() !== null ? scaleOf(picture().levels) : null;
    const known = shown.scaled === sourceOf(model.get());
    if (scale !== null && !(known && Math.abs(scale.low - levelLow) < 3 && Math.abs(scale.high - levelHigh) < 4)) {
        shown.scaled = sourceOf(model.get());
        model.set({ levelLow: scale.low, levelHigh: scale.high });
    }
}

/** Draws with the next frame. */
function draw() {
    document.body.dataset.settled = '';
    frame ??= requestAnimationFrame(draw.now);
}

draw.now = () => {
    cancelAnimationFrame(frame);
    frame = null;
    const state = model.get();
    const context = canvas.getContext('2d');
    context.setTransform(1, 0, 0, 1, 0, 0);
    context.clearRect(0, 0, canvas.width, canvas.height);
    if (state.recording === null || state.type === null) {
        return empty(context, state);
    }
    pictures(context, state);
    plotaxes.draw(context, state, box(), picture()?.head);
    overlay.draw();
    document.body.dataset.settled = settledAs(state);
};

function settledAs(state) {
    const now = picture();
    return now === null || !now.shows(state) ? '' : now.head.exact || loader.exact === loader.view ? 'exact' : 'view';
}

function pictures(context, state) {
    const inside = deviceBox();
    context.save();
    context.beginPath();
    context.rect(inside.x, inside.y, inside.width, inside.height);
    context.clip();
    context.fillStyle = theme.colour('raised');
    context.fillRect(inside.x, inside.y, inside.width, inside.height);
    for (const one of [shown.whole, shown.picture]) {
        if (one?.source === sourceOf(state)) {
            one.draw(context, state, inside);
        }
    }
    context.restore();
}

function empty(context, state) {
    const ratio = window.devicePixelRatio;
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.fillStyle = theme.colour('dim');
    context.font = '14px system-ui, sans-serif';
    context.textAlign = 'center';
    const sentence = state.recording === null ? 'No recording is open.' : 'This recording has no spectra.';
    context.fillText(sentence, canvas.clientWidth / 2, canvas.clientHeight / 2);
}

/** The canvas as it is drawn, for pictures that are taken away. */
export function canvasNow() {
    return canvas;
}
