// Over the waterfall: the cursor's cross, the pointer's hair lines and figures, a box that is drawn, what is looped.
import * as model from './model.js';
import * as axes from './axes.js';
import * as theme from './theme.js';
import { element } from './dom.js';

let canvas;
let plotBox;
let frame = null;
const pointer = { at: null, box: null };
const listeners = [];
let boxes = [];

/** Puts the surface over the waterfall; it takes pointer and keys. */
export function create(container, theBox) {
    plotBox = theBox;
    canvas = element('canvas', { className: 'overlay', tabIndex: 0, role: 'application',
        ariaLabel: 'Waterfall. Arrow keys move, plus and minus zoom, question mark shows all keys.' });
    container.append(canvas);
    model.on(['at', 'hz', 'from', 'to', 'low', 'high', 'loop', 'end'], draw);
    theme.onChange(draw);
}

/** The element that takes pointer and keys. */
export function surface() {
    return canvas;
}

/** The container has another size. */
export function resized() {
    canvas.width = Math.round(canvas.clientWidth * window.devicePixelRatio);
    canvas.height = Math.round(canvas.clientHeight * window.devicePixelRatio);
    draw();
}

/** Calls back with {ms, hz} under the pointer, null when it leaves. */
export function onPointer(callback) {
    listeners.push(callback);
}

/** The pointer is over a moment and frequency, or nowhere. @param {?{ms: number, hz: number}} at */
export function point(at) {
    pointer.at = at;
    listeners.forEach((callback) => callback(at));
    draw();
}

/** A box that is being drawn, in CSS pixels, or none. */
export function select(corners) {
    pointer.box = corners;
    draw();
}

/** What is framed: [{from, to, low, high}]. */
export function box(all) {
    boxes = all;
    draw();
}

/** Draws with the next frame. */
export function draw() {
    frame ??= requestAnimationFrame(drawNow);
}

function drawNow() {
    frame = null;
    const context = canvas.getContext('2d');
    const ratio = window.devicePixelRatio;
    const inside = plotBox();
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, canvas.clientWidth, canvas.clientHeight);
    context.save();
    context.beginPath();
    context.rect(inside.x, inside.y - 18, inside.width, inside.height + 22);
    context.clip();
    loop(context, inside);
    frames(context, inside);
    if (pointer.at !== null && pointer.box === null) {
        cross(context, inside, pointer.at.ms, pointer.at.hz, 0.35, [2, 3]);
    }
    const { at, hz } = model.get();
    cross(context, inside, at, hz, 0.75, []);
    rubber(context);
    end(context, inside);
    context.restore();
}

/** Light lines with a dark edge are seen on every colour. */
function stroke(context, x1, y1, x2, y2, alpha) {
    for (const [colour, width] of [['#000000', 3], ['#ffffff', 1]]) {
        context.globalAlpha = colour === '#000000' ? alpha * 0.5 : alpha;
        context.strokeStyle = colour;
        context.lineWidth = width;
        axes.line(context, x1, y1, x2, y2);
    }
    context.globalAlpha = 1;
}

function cross(context, inside, ms, hz, alpha, dash) {
    const { low, high } = model.get();
    context.setLineDash(dash);
    if (ms !== null) {
        const x = Math.round(axes.timeToX(ms)) + 0.5;
        stroke(context, x, inside.y, x, inside.y + inside.height, alpha);
    }
    if (hz !== null) {
        const y = Math.round(inside.y + (high - hz) / (high - low) * inside.height) + 0.5;
        if (y >= inside.y && y <= inside.y + inside.height) {
            stroke(context, inside.x, y, inside.x + inside.width, y, alpha);
        }
    }
    context.setLineDash([]);
}

function loop(context, inside) {
    const span = model.get().loop;
    if (span === null) {
        return;
    }
    const [left, right] = span.map(axes.timeToX);
    context.fillStyle = theme.colour('accent');
    context.globalAlpha = 0.9;
    context.fillRect(left, inside.y - 3, right - left, 3);
    context.globalAlpha = 0.1;
    context.fillRect(left, inside.y, right - left, inside.height);
    context.globalAlpha = 1;
}

/** Frames with a dark edge, so large that they are seen. */
function frames(context, inside) {
    const least = 5;
    const { low, high } = model.get();
    const y = (hz) => inside.y + (high - hz) / (high - low) * inside.height;
    for (const one of boxes) {
        const [left, right] = [one.from, one.to].map(axes.timeToX);
        const [top, bottom] = [one.high, one.low].map(y);
        const width = Math.max(right - left, least);
        const height = Math.max(bottom - top, least);
        for (const [colour, line] of [['#000000b0', 3], ['#ffffff', 1]]) {
            context.strokeStyle = colour;
            context.lineWidth = line;
            context.strokeRect((left + right - width) / 2, (top + bottom - height) / 2, width, height);
        }
    }
}

function rubber(context) {
    if (pointer.box !== null) {
        const { x1, y1, x2, y2 } = pointer.box;
        context.fillStyle = '#ffffff30';
        context.fillRect(x1, y1, x2 - x1, y2 - y1);
        context.strokeStyle = '#ffffff';
        context.lineWidth = 1;
        context.strokeRect(x1, y1, x2 - x1, y2 - y1);
    }
}

/** Where a recording that grows ends now. */
function end(context, inside) {
    const { recording, end: ms, to } = model.get();
    if (recording?.live && ms <= to) {
        const x = Math.min(axes.timeToX(ms), inside.x + inside.width - 1);
        context.fillStyle = theme.colour('live');
        context.fillRect(x - 1, inside.y, 2, inside.height);
    }
}
