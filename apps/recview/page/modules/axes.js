// Axes of time and frequency: where a moment stands in the panels over each other, and the marks with their texts.
import * as model from './model.js';
import * as text from './text.js';

/** The plots' edges in CSS pixels from the left edge of the column; every panel of the column has the same. */
export const geometry = { left: 64, right: 60, width: 800 };
const listeners = [];

/** Calls back when the column was given another width. */
export function onLayout(callback) {
    listeners.push(callback);
}

/** Takes the column's whole width over. */
export function layout(columnWidth) {
    const narrow = columnWidth < 560;
    const next = { left: narrow ? 50 : 64, right: narrow ? 54 : 60 };
    next.width = Math.max(50, columnWidth - next.left - next.right);
    if (Object.keys(next).some((name) => next[name] !== geometry[name])) {
        Object.assign(geometry, next);
        listeners.forEach((callback) => callback(geometry));
    }
}

/** Pixels from the left edge of the column. */
export function timeToX(ms) {
    const { from, to } = model.get();
    return geometry.left + (ms - from) / (to - from) * geometry.width;
}

/** The moment at so many pixels from the left edge of the column. */
export function xToTime(x) {
    const { from, to } = model.get();
    return from + (x - geometry.left) / geometry.width * (to - from);
}

const steps = [1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 10e3, 15e3, 30e3, 60e3, 120e3, 300e3, 600e3, 900e3, 1800e3,
    3600e3, 7200e3, 10800e3, 21600e3, 43200e3, 86400e3, 172800e3, 604800e3, 1209600e3, 2592000e3, 7776000e3, 31536000e3];

/**
 * Marks of the time axis: {ms, text, day}; day is the date where it is another one than at the mark before, else null.
 * @param {number} from @param {number} to @param {number} width pixels @param {boolean} utc
 */
export function timeTicks(from, to, width, utc) {
    const least = (to - from) / Math.max(1, width / 84);
    const step = steps.find((one) => one >= least) ?? steps.at(-1);
    const shift = utc ? 0 : -new Date(from).getTimezoneOffset() * 60000;
    const ticks = [];
    let before = null;
    for (let at = Math.ceil((from + shift) / step) * step - shift; at <= to; at += step) {
        const day = text.date(at, utc);
        ticks.push({ ms: at, text: step >= 86400e3 ? day : text.clock(at, utc, step), day: day === before ? null : day });
        before = day;
    }
    return ticks;
}

/** Step 1, 2 or 5 times a power of ten that leaves so many pixels between marks. */
function niceStep(span, pixels, between) {
    const least = span / Math.max(1, pixels / between);
    const power = 10 ** Math.floor(Math.log10(least));
    return [1, 2, 5, 10].map((factor) => factor * power).find((step) => step >= least * 0.999999);
}

/** Marks of a linear axis: values that are whole steps. */
export function linearTicks(low, high, pixels, between) {
    const step = niceStep(high - low, pixels, between);
    const ticks = [];
    for (let number = Math.ceil(low / step - 1e-6); number * step <= high + step * 1e-6; number++) {
        ticks.push(number * step);
    }
    return { step, ticks };
}

/** Marks of the frequency axis: {unit, ticks: [{hz, text}]}. */
export function frequencyTicks(low, high, pixels, between = 34) {
    const { step, ticks } = linearTicks(low, high, pixels, between);
    const unit = text.frequencyUnit(Math.max(Math.abs(low), Math.abs(high)));
    const digits = Math.max(0, Math.ceil(-Math.log10(step / unit.hz) - 1e-9));
    return { unit: unit.name, ticks: ticks.map((hz) => ({ hz, text: (hz / unit.hz).toFixed(digits) })) };
}

/** A straight line on a canvas, in the stroke that is set. @param {CanvasRenderingContext2D} context */
export function line(context, x1, y1, x2, y2) {
    context.beginPath();
    context.moveTo(x1, y1);
    context.lineTo(x2, y2);
    context.stroke();
}
