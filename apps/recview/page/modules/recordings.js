// Which recording is shown: the server's list, the first view of one, and what a growing one changes.
import * as model from './model.js';
import * as server from './server.js';
import * as notice from './notice.js';

/** Asks for the list and keeps it; what could not be read is told. */
export async function load() {
    const answer = await server.json('/api/recordings', {}, 'recordings');
    const problems = answer.problems.map(({ name, error }) => `${name}: ${error}`);
    if (problems.length === 0) {
        notice.hide('problems');
    } else {
        const more = problems.length > 3 ? ` And ${problems.length - 3} more.` : '';
        notice.show('problems', problems.slice(0, 3).join(' ') + more);
    }
    const shown = answer.recordings.find((one) => one.id === model.get().recording?.id);
    model.set({ recordings: answer.recordings, edit: answer.edit, ...(shown ? refreshed(shown) : {}) }, 'address');
    return answer.recordings;
}

/** A recording that is better known by now: a view that shows all of it still does. */
function refreshed(recording) {
    const state = model.get();
    const [before, now] = [model.spectrum(), recording.spectra.find((one) => one.code === state.type)];
    const times = state.from === state.recording.startMs && state.to === state.end ? { from: recording.startMs, to: recording.endMs } : {};
    const all = before !== null && state.low === before.lowHz && state.high === before.highHz;
    const frequencies = now === undefined || all ? firstSpectrum(recording, state.type) : {};
    return { recording, end: recording.endMs, ...(state.recording.live ? {} : times), ...frequencies };
}

function firstSpectrum(recording, type) {
    const spectrum = recording.spectra.find((one) => one.code === type) ?? recording.spectra[0];
    return spectrum ? { type: spectrum.code, low: spectrum.lowHz, high: spectrum.highHz } : { type: null, low: 0, high: 1 };
}

/** The changes that show all of a recording. */
export function whole(recording, type) {
    const { startMs, endMs } = recording;
    return {
        recording, end: endMs, from: startMs, to: Math.max(endMs, startMs + 1000), at: null, hz: null,
        follow: false, playing: false, loop: null, ...firstSpectrum(recording, type),
    };
}

/** The changes that show another spectrum of the recording that is shown. */
export function otherSpectrum(type) {
    return { hz: null, ...firstSpectrum(model.get().recording, type) };
}

/** What is shown when nobody says which: one that grows, else the newest; with a spectrum where there is one. */
function first(recordings) {
    const rank = ({ live, spectra, startMs }) => [spectra.length > 0 ? 1 : 0, live ? 1 : 0, startMs];
    const before = (one, other) => rank(other).map((part, at) => part - rank(one)[at]).find((by) => by !== 0) ?? 0;
    return [...recordings].sort(before)[0];
}

/** Shows what an address asks for; of another recording all, where it does not say. */
export function open({ id, changes }) {
    const { recordings } = model.get();
    const recording = recordings.find((one) => one.id === id) ?? (id === null ? first(recordings) : undefined);
    if (recording === undefined) {
        notice.show('recording', id === null ? 'There are no recordings here yet.' : `There is no recording ${id} here.`);
        return recordings.length > 0 && id !== null ? open({ id: null, changes: {} }) : undefined;
    }
    notice.hide('recording');
    const view = { ...whole(recording, changes.type), ...changes };
    if (!recording.spectra.some((one) => one.code === view.type)) {
        Object.assign(view, firstSpectrum(recording));
    }
    return model.set(view.follow ? { ...view, ...newest(view, recording.endMs) } : view, 'address');
}

function newest({ from, to }, end) {
    return { from: end - (to - from), to: end };
}

/** Takes what a growing recording has become over: the newest stays at the right edge where it is followed. */
function grown({ recording: id, endMs }) {
    const state = model.get();
    const known = state.recordings.find((one) => one.id === id);
    if (known) {
        known.endMs = endMs;
    }
    if (state.recording?.id === id && endMs > state.end) {
        state.recording.endMs = endMs;
        model.set({ end: endMs, ...(state.follow ? newest(state, endMs) : {}) });
    }
}

const madeListeners = [];

/** Calls back when more of the overview of the recording that is shown is made: 0 to 1. */
export function onMade(callback) {
    madeListeners.push(callback);
}

/** So much of the overview of a recording is made, as an event or an answer tells. */
export function made({ recording: id, made: part }) {
    const { recording } = model.get();
    if (recording?.id === id && recording.made !== part) {
        recording.made = part;
        madeListeners.forEach((callback) => callback(part));
    }
}

const unanswered = 'The server does not answer. What is shown is what it last told; it is asked again and again.';

/** Follows the server's events. */
export function start() {
    let lost = false;
    const changed = () => load().then(openFirst).catch(tell);
    server.listen({ grown, made, changed }, () => {
        lost = true;
        notice.show('server', unanswered);
    }, () => {
        notice.hide('server');
        if (lost) {
            lost = false;
            changed();
        }
    });
}

function openFirst(recordings) {
    if (model.get().recording === null && recordings.length > 0) {
        open({ id: null, changes: {} });
    }
}

let forgetting = null;

/** Tells a server's error in the line at the top for a while; what was overtaken is no error. */
export function tell(error) {
    if (server.isOvertaken(error)) {
        return;
    }
    if (error.status === 0) {
        notice.show('server', unanswered);
        return;
    }
    notice.show('error', error.message);
    clearTimeout(forgetting);
    forgetting = setTimeout(() => notice.hide('error'), 15000);
}
