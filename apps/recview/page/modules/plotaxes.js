// Draws what stands around the waterfall: times, frequencies, the marks of gaps, new ranges and files.
import * as axes from './axes.js';
import * as text from './text.js';
import * as theme from './theme.js';

const font = '11px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';

/** @param {CanvasRenderingContext2D} context @param {object} box the plot in CSS pixels @param {?object} head of the picture */
export function draw(context, state, box, head, ratio = window.devicePixelRatio) {
    context.save();
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.font = font;
    context.lineWidth = 1;
    times(context, state, box);
    if (state.type !== null) {
        marks(context, state, box, head);
        frequencies(context, state, box);
    }
    context.strokeStyle = theme.colour('line');
    context.strokeRect(box.x - 0.5, box.y - 0.5, box.width + 1, box.height + 1);
    context.restore();
}

function crisp(at) {
    return Math.round(at) + 0.5;
}

function times(context, state, box) {
    const bottom = box.y + box.height;
    context.textAlign = 'center';
    context.textBaseline = 'top';
    const zone = text.zone(state.from, state.utc);
    const right = box.x + box.width + axes.geometry.right - 6;
    const last = right - context.measureText(zone).width - 34;
    let free = -Infinity;
    for (const { ms, text: words, day } of axes.timeTicks(state.from, state.to, box.width, state.utc)) {
        const x = crisp(axes.timeToX(ms));
        context.strokeStyle = theme.colour('dim');
        axes.line(context, x, bottom + 1, x, bottom + 5);
        context.fillStyle = theme.colour('text');
        context.fillText(words, x, bottom + 7);
        if (day !== null && day !== words && x - 32 > free && x < last) {
            context.fillStyle = theme.colour('dim');
            context.fillText(day, x, bottom + 21);
            free = x + 34;
        }
    }
    context.textAlign = 'right';
    context.fillStyle = theme.colour('dim');
    context.fillText(zone, right, bottom + 21);
}

function frequencies(context, state, box) {
    const { unit, ticks } = axes.frequencyTicks(state.low, state.high, box.height);
    context.textAlign = 'right';
    context.textBaseline = 'middle';
    for (const { hz, text: words } of ticks) {
        const y = crisp(box.y + (state.high - hz) / (state.high - state.low) * box.height);
        context.strokeStyle = theme.colour('dim');
        axes.line(context, box.x - 5, y, box.x - 1, y);
        context.fillStyle = theme.colour('text');
        context.fillText(words, box.x - 8, Math.max(box.y + 2, Math.min(y, box.y + box.height - 3)));
    }
    context.fillStyle = theme.colour('dim');
    context.fillText(unit, box.x - 8, box.y - 10);
}

/** Above the plot: hatched where nothing was measured, flags where channel ranges and files begin. */
function marks(context, state, box, head) {
    const y = box.y - 17;
    context.save();
    context.beginPath();
    context.rect(box.x, y, box.width, box.height + 17);
    context.clip();
    for (const [from, to] of head?.made < 1 ? [] : head?.gaps ?? []) {
        gap(context, box, y, axes.timeToX(from), axes.timeToX(to), to - from);
    }
    let free = box.x;
    for (const { ms, lowHz, highHz } of head?.ranges ?? []) {
        free = flag(context, box, y, ms, text.frequencies(lowHz, highHz), free, 'accent');
    }
    for (const { startMs } of state.recording.files.slice(1)) {
        const x = crisp(axes.timeToX(startMs));
        context.strokeStyle = theme.colour('dim');
        axes.line(context, x, y, x, y + 16);
    }
    context.restore();
}

function gap(context, box, y, left, right, ms) {
    const x = Math.max(left, box.x);
    const width = Math.max(2, Math.min(right, box.x + box.width) - x);
    if (right < box.x || left > box.x + box.width) {
        return;
    }
    context.fillStyle = theme.colour('warn');
    context.fillRect(x, y + 12, width, 3);
    const words = `gap ${text.duration(ms)}`;
    if (width > context.measureText(words).width + 8) {
        context.textAlign = 'center';
        context.textBaseline = 'alphabetic';
        context.fillText(words, x + width / 2, y + 9);
    }
}

/** A line through the plot with words above it, where there is room for them; gives the end of what is written. */
function flag(context, box, y, ms, words, free, colour) {
    const x = crisp(axes.timeToX(ms));
    const width = context.measureText(words).width;
    if (x < box.x - 1 || x > box.x + box.width) {
        return free;
    }
    context.strokeStyle = theme.colour(colour);
    context.globalAlpha = 0.8;
    context.setLineDash([4, 3]);
    axes.line(context, x, y, x, box.y + box.height);
    context.setLineDash([]);
    context.globalAlpha = 1;
    if (x < free || x + width + 6 > box.x + box.width) {
        return free;
    }
    context.fillStyle = theme.colour(colour);
    context.textAlign = 'left';
    context.textBaseline = 'alphabetic';
    context.fillText(words, x + 4, y + 9);
    return x + width + 14;
}
