// The sweep in force at the cursor, for every panel that shows it.
import * as model from './model.js';
import * as server from './server.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import { latest } from './latest.js';

let sweep = null;
let asked;
const listeners = [];

/** What the server told of the sweep, with `hz`, its channels' frequencies; null without one. */
export function get() {
    return sweep;
}

/** Calls back when it is another one. */
export function on(callback) {
    listeners.push(callback);
}

/** The moment the panels at the cursor show: the cursor's, or the newest while it is followed; null without. */
export function moment() {
    const { at, follow, end } = model.get();
    return at ?? (follow ? end : null);
}

/** {hz, level} of the channel next to a frequency; null where the sweep has none near it. */
export function channelAt(hz) {
    if (sweep === null || hz === null || sweep.hz.length === 0) {
        return null;
    }
    const index = nearest(sweep.hz, hz);
    const width = Math.abs((sweep.hz[index + 1] ?? sweep.hz[index]) - (sweep.hz[index - 1] ?? sweep.hz[index]));
    const far = Math.abs(sweep.hz[index] - hz) > Math.max(width, 1);
    return far ? null : { hz: sweep.hz[index], level: sweep.levels[index], step: width / 2 };
}

function nearest(sorted, wanted) {
    let [low, high] = [0, sorted.length - 1];
    while (high - low > 1) {
        const middle = (low + high) >> 1;
        [low, high] = sorted[middle] > wanted ? [low, middle] : [middle, high];
    }
    return wanted - sorted[low] <= sorted[high] - wanted ? low : high;
}

async function ask() {
    const { recording, type } = model.get();
    const at = moment();
    let next = null;
    if (recording !== null && type !== null && at !== null) {
        try {
            next = await server.json('/api/sweep', { recording: recording.id, type, at });
            next.hz = text.channels(next.channels);
        } catch (error) {
            if (error.status === 503) {
                setTimeout(asked, 500); // the recording is still being looked through
            } else if (error.status !== 404) {
                throw error;
            }
        }
    }
    sweep = next;
    listeners.forEach((callback) => callback(sweep));
}

/** Puts the cursor at the sweep before (-1) or after (1). */
export function step(by) {
    const { from, to, at } = model.get();
    if (at === null || sweep === null) {
        model.set({ at: (from + to) / 2 });
        return;
    }
    const next = by < 0 ? sweep.previousMs : sweep.nextMs;
    if (next !== null && next !== undefined) {
        model.set({ at: next });
    }
}

/** Puts the cursor at the channel below (-1) or above (1). */
export function stepChannel(by) {
    const { low, high, hz } = model.get();
    const channel = channelAt(hz);
    if (hz === null || channel === null) {
        model.set({ hz: hz ?? (low + high) / 2 });
        return;
    }
    const next = sweep.hz[sweep.hz.indexOf(channel.hz) + by];
    if (next !== undefined) {
        model.set({ hz: next });
    }
}

/** Starts following the cursor. */
export function start() {
    asked = latest(ask, recordings.tell, 30);
    recordings.onMade(asked);
    model.on(['recording', 'type', 'at'], asked);
    model.on(['end', 'follow'], (state) => (state.follow && state.at === null ? asked() : undefined));
}
