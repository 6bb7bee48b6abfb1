// The bearings of the visible time span: asked for once, shown by the map and the polar view.
import { colourOf } from './colormaps.js';
import { askAgain, latest } from './latest.js';

// More lines than this say nothing on a screen; the server leaves out evenly and says how many.
const limit = 3000;
const nothing = { positions: [], bearings: [], fixes: [], leftOut: 0 };
// Told apart also by eyes that do not see red or green.
const palette = ['#0072b2', '#d55e00', '#009e73', '#cc79a7', '#b58900', '#56b4e9', '#8c564b', '#7f7f7f'];

let only = null;

/** Everything that shows bearings shares one of these. */
export function bearingsOf(model, server) {
    only ??= new Bearings(model, server);
    return only;
}

class Bearings {
    constructor(model, server) {
        this.model = model;
        this.data = nothing;
        this.error = '';
        this.loadedEnd = 0;
        this.channels = [];
        this.levelSpan = [-120, 0];
        this.colours = new Map();
        this.listeners = [];
        this.ask = latest(() => this.load(server), (error) => this.take(nothing, error.message));
        model.on(['recording', 'from', 'to', 'end'], (state, changed) => this.changed(changed));
        this.ask();
    }

    /** Calls back whenever the data, the cursor or what is chosen changes. */
    listen(callback) {
        this.listeners.push(callback);
        this.model.on(['at', 'hz'], callback);
        callback();
    }

    /** What a recording grew by is of interest only where it is in view. */
    changed(names) {
        if (['recording', 'from', 'to'].some((name) => names.has(name)) || this.model.get().to >= this.loadedEnd) {
            this.ask();
        }
    }

    async load(server) {
        const { recording, from, to } = this.model.get();
        if (!recording?.hasBearings || !(to > from)) {
            this.take(nothing, '');
            return;
        }
        this.loadedEnd = recording.endMs;
        const answer = await server.json('/api/bearings', { recording: recording.id, from, to, limit });
        this.take(answer, '');
        askAgain(answer, this.ask);
    }

    take(data, error) {
        this.data = { ...data, positions: track(data) };
        this.error = error;
        const channels = [...new Set(data.bearings.map((bearing) => bearing.hz))].sort((a, b) => a - b);
        // A channel keeps its colour while the view moves.
        for (const hz of channels) {
            if (!this.colours.has(hz)) {
                this.colours.set(hz, palette[this.colours.size % palette.length]);
            }
        }
        this.channels = channels;
        const levels = data.bearings.map(({ level }) => level).filter((level) => typeof level === 'number');
        const lowest = Math.floor(levels.reduce((a, b) => Math.min(a, b), Infinity));
        this.levelSpan = levels.length === 0 ? [-120, 0] : [lowest,
            Math.max(lowest + 1, Math.ceil(levels.reduce((a, b) => Math.max(a, b))))];
        this.listeners.forEach((callback) => callback());
    }

    /** The last bearing of each channel at or before the cursor: what is in force there. */
    inForce() {
        const at = this.model.get().at;
        const last = new Map();
        if (at !== null) {
            for (const bearing of this.data.bearings) {
                if (bearing.ms <= at && !(last.get(bearing.hz)?.ms > bearing.ms)) {
                    last.set(bearing.hz, bearing);
                }
            }
        }
        return new Set(last.values());
    }

    /** Where the station was at the cursor, or null. */
    positionAtCursor() {
        const at = this.model.get().at;
        const before = this.data.positions.filter((position) => position.ms <= at);
        return before.at(-1) ?? this.data.positions[0] ?? null;
    }

    colourOf(bearing) {
        return this.colours.get(bearing.hz) ?? palette[0];
    }

    /** By its level, with the colours of the waterfall. */
    levelColour({ level }) {
        const [lowest, highest] = this.levelSpan;
        return `rgb(${colourOf(this.model.get().map, level ?? NaN, lowest, highest).join(' ')})`;
    }

    /** Puts the cursor on a bearing and shows its record. */
    choose(bearing) {
        this.model.set({ at: bearing.ms, hz: bearing.hz, record: { at: bearing.ms, code: bearing.code, hz: bearing.hz } });
    }
}

/** Where the station was: as the overview has it, which may be thinned out, and where it took its bearings. */
function track({ positions, bearings }) {
    const all = [...positions, ...bearings.filter(({ lat }) => typeof lat === 'number')].sort((a, b) => a.ms - b.ms);
    return all.filter(({ lat, lon }, at) => at === 0 || lat !== all[at - 1].lat || lon !== all[at - 1].lon)
        .map(({ ms, lat, lon }) => ({ ms, lat, lon }));
}
