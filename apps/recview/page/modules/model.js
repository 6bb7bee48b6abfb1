// The one state of the page: what is shown, where the cursor is, how it looks.

/**
 * @typedef {object} State
 * @property {object[]} recordings what the server has
 * @property {boolean} edit bookmarks may be changed
 * @property {?object} recording the one that is shown
 * @property {number} end of the recording, its newest moment; grows while it is recorded, also in recording.endMs
 * @property {?number} type code of the spectrum that is shown
 * @property {number} from first moment shown, ms since 1970 UTC
 * @property {number} to last moment shown
 * @property {number} low lowest frequency shown, Hz
 * @property {number} high highest frequency shown, Hz
 * @property {?number} at the cursor's moment
 * @property {?number} hz the cursor's frequency
 * @property {number} levelLow level of the lowest colour
 * @property {number} levelHigh level of the highest colour
 * @property {boolean} autoLevel the colours' levels follow the data
 * @property {string} map name of the colours
 * @property {string} of max, mean or min
 * @property {boolean} utc else the local clock
 * @property {?boolean} dark null: as the system says
 * @property {boolean} follow the newest stays at the right edge
 * @property {boolean} playing
 * @property {number} speed of playing
 * @property {number[]} values codes of the values under the waterfall
 * @property {?number[]} loop the span that is played again and again
 * @property {string} panel state, answers, map or polar
 * @property {?object} record the one that is shown: {at, code, hz} to ask for, or {at, answer}
 */

/** @type {State} */
const state = {
    recordings: [], edit: false, recording: null, end: 0, type: null,
    from: 0, to: 1, low: 0, high: 1,
    at: null, hz: null,
    levelLow: -120, levelHigh: -40, autoLevel: true, map: 'viridis', of: 'max',
    utc: true, dark: null,
    follow: false, playing: false, speed: 1, values: [], loop: null,
    panel: 'state', record: null,
};
const listeners = [];

/** The state as it is; changed by set() only. */
export function get() {
    return state;
}

/**
 * Takes changes over and tells who asked for one of them. A jump is a change the back button undoes.
 * @param {Partial<State>} changes
 * @param {'jump'} [how]
 */
export function set(changes, how) {
    const changed = new Set();
    for (const [name, value] of Object.entries(changes)) {
        if (!Object.is(state[name], value)) {
            state[name] = value;
            changed.add(name);
        }
    }
    if (changed.size === 0) {
        return;
    }
    for (const { names, callback } of [...listeners]) {
        if (names.some((name) => changed.has(name))) {
            callback(state, changed, how);
        }
    }
}

/**
 * Calls back after every change of one of these names, at once.
 * @param {string|string[]} names
 * @param {(state: State, changed: Set<string>, how?: string) => void} callback
 */
export function on(names, callback) {
    listeners.push({ names: [names].flat(), callback });
}

/** The spectrum of the recording that is shown: {code, keyword, unit, lowHz, highHz}; null without one. */
export function spectrum() {
    return state.recording?.spectra.find((one) => one.code === state.type) ?? null;
}
