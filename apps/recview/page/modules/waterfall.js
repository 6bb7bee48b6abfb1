// The waterfall: levels over time and frequency, drawn at once from what is there while the server is asked for more.
import * as axes from './axes.js';
import * as theme from './theme.js';
import * as recordings from './recordings.js';
import * as plotaxes from './plotaxes.js';
import * as overlay from './overlay.js';
import * as gestures from './gestures.js';
import * as levels from './levels.js';
import * as minimap from './minimap.js';
import { element } from './dom.js';
import { Loader, scaleOf, sourceOf } from './picture.js';

/** What is recorded may come so late into the overview. */
const lateMs = 3000;
/** How often the view is asked for again while an overview is being made. */
const againMs = 400;
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
function deviceBox() {
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
    canvas = element('canvas', { className: 'plot' });
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
    model.on('end', ({ to, end }) => (end - to < lateMs ? loader.moved() : undefined));
}

/** While the overview of a recording is being made the view is asked for again as it grows. */
function watchMaking(made) {
    const { recording } = model.get();
    recordings.made({ recording: recording.id, made });
    if (made < 1) {
        setTimeout(() => (picture()?.head.made < 1 ? loader.moved() : undefined), againMs);
    }
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
    if (picture() !== null) {
        watchMaking(next.head.made);
    }
    draw.now();
    const rests = next.shows(model.get());
    document.body.dataset.drawn = String(Number(document.body.dataset.drawn) + 1);
    performance.measure('view-drawn', { start: since, detail: { exact: next.head.exact, rests } });
}

/** The scale follows the data, but not every breath of it; what was read off a rough picture the exact one corrects. */
function followLevels() {
    const { autoLevel, levelLow, levelHigh } = model.get();
    const scale = autoLevel && picture() !== null ? scaleOf(picture().levels) : null;
    if (scale === null) {
        return;
    }
    const source = sourceOf(model.get());
    const exact = settledAs(model.get()) === 'exact';
    const near = shown.scaled === source && Math.abs(scale.low - levelLow) < 3 && Math.abs(scale.high - levelHigh) < 4;
    if (!near || (exact && !shown.scaledExactly)) {
        Object.assign(shown, { scaled: source, scaledExactly: exact });
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
    canvas.parentElement.classList.toggle('bare', state.type === null);
    if (state.type !== null) {
        pictures(context, state);
    }
    if (state.recording !== null) {
        plotaxes.draw(context, state, box(), picture()?.head);
    }
    const words = wordsOver(state);
    if (words !== null) {
        say(context, words);
    }
    overlay.draw();
    document.body.dataset.settled = settledAs(state);
};

function settledAs(state) {
    const now = picture();
    if (state.recording !== null && state.type === null) {
        return 'exact';
    }
    if (now === null || !now.shows(state)) {
        return '';
    }
    return now.head.made < 1 ? 'making' : now.head.exact || loader.exact === loader.view ? 'exact' : 'view';
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

/** What is said in place of levels, or over them while they are not all known; null when there is nothing to say. */
function wordsOver(state) {
    if (state.recording === null) {
        return 'No recording is open.';
    }
    if (state.type === null) {
        return 'This recording has no spectra.';
    }
    const made = picture()?.head.made ?? 1;
    return made < 1 ? `The recording is being looked through: ${Math.floor(made * 100)} %` : null;
}

function say(context, words) {
    const ratio = window.devicePixelRatio;
    const { x, y, width, height } = box();
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.font = '13px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';
    context.textAlign = 'center';
    context.textBaseline = 'middle';
    const half = context.measureText(words).width / 2 + 14;
    context.fillStyle = theme.colour('panel');
    context.fillRect(x + width / 2 - half, y + height / 2 - 15, 2 * half, 30);
    context.fillStyle = theme.colour('text');
    context.fillText(words, x + width / 2, y + height / 2);
}

/** The canvas as it is drawn, for pictures that are taken away. */
export function canvasNow() {
    return canvas;
}
