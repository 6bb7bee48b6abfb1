// Moves through time and frequency, never beyond what was recorded.
import * as model from './model.js';

const shortest = 5;
const narrowest = 10;

/** Everything there is: {from, to, low, high}. */
export function bounds() {
    const { recording, end, low, high } = model.get();
    const spectrum = model.spectrum();
    const start = recording?.startMs ?? 0;
    return { from: start, to: Math.max(end, start + 1000), low: spectrum?.lowHz ?? low, high: spectrum?.highHz ?? high };
}

/** A span moved into its bounds; not shorter than so much, not longer than these. */
function within(first, last, lowest, highest, least) {
    const span = Math.min(Math.max(last - first, least), Math.max(highest - lowest, least));
    const begin = Math.min(Math.max(first + (last - first - span) / 2, lowest), highest - span);
    return [begin, begin + span];
}

/**
 * Shows this much. A view whose end leaves the newest no longer follows it.
 * @param {{from?: number, to?: number, low?: number, high?: number}} view @param {'jump'} [how]
 */
export function show(view, how) {
    const state = model.get();
    if (state.recording === null) {
        return;
    }
    const all = bounds();
    const [from, to] = within(view.from ?? state.from, view.to ?? state.to, all.from, all.to, shortest);
    const [low, high] = within(view.low ?? state.low, view.high ?? state.high, all.low, all.high, Math.min(narrowest, all.high - all.low));
    const left = state.follow && all.to - to > (to - from) * 0.02;
    model.set({ from, to, low, high, ...(left ? { follow: false } : {}) }, how);
}

/** Zooms in time by a factor (below 1: in) around a moment. */
export function zoomTime(factor, ms) {
    const { from, to, follow, end } = model.get();
    const centre = follow ? end : ms ?? (from + to) / 2;
    show({ from: centre - (centre - from) * factor, to: centre + (to - centre) * factor });
}

/** Zooms in frequency by a factor around a frequency. */
export function zoomFrequency(factor, hz) {
    const { low, high } = model.get();
    const centre = hz ?? (low + high) / 2;
    show({ low: centre - (centre - low) * factor, high: centre + (high - centre) * factor });
}

/** Moves by parts of what is visible. */
export function pan(parts, frequencyParts = 0) {
    const { from, to, low, high } = model.get();
    const ms = parts * (to - from);
    const hz = frequencyParts * (high - low);
    show({ from: from + ms, to: to + ms, low: low + hz, high: high + hz });
}

/** All of the recording, all frequencies. */
export function all() {
    show(bounds(), 'jump');
}

/** The first or the last part of the recording, as long as what is visible. */
export function edge(last) {
    const { from, to } = model.get();
    const limits = bounds();
    show(last ? { from: limits.to - (to - from), to: limits.to } : { from: limits.from, to: limits.from + to - from }, 'jump');
}

/** Puts the cursor at a moment, and the view around it where it is not visible. */
export function goTo(ms, how = 'jump') {
    const { from, to } = model.get();
    model.set({ at: ms }, how);
    if (ms < from || ms > to) {
        show({ from: ms - (to - from) / 2, to: ms + (to - from) / 2 });
    }
}

/** Follows the newest, or no longer. */
export function follow(on) {
    const { from, to, end } = model.get();
    model.set(on ? { follow: true, from: end - (to - from), to: end } : { follow: false });
}
