// Numbers, times and values as texts.
const units = [{ name: 'GHz', hz: 1e9 }, { name: 'MHz', hz: 1e6 }, { name: 'kHz', hz: 1e3 }, { name: 'Hz', hz: 1 }];

/** GHz from 10 GHz, MHz from 1 MHz, kHz from 1 kHz, else Hz. */
export function frequencyUnit(hz) {
    return hz >= 1e10 ? units[0] : hz >= 1e6 ? units[1] : hz >= 1e3 ? units[2] : units[3];
}

/** A frequency with its unit, to 1 Hz but without zeros at the end. */
export function frequency(hz) {
    if (hz === null || !Number.isFinite(hz)) {
        return '–';
    }
    const unit = frequencyUnit(Math.abs(hz));
    const digits = Math.round(Math.log10(unit.hz));
    const full = (hz / unit.hz).toFixed(digits);
    return `${full.includes('.') ? full.replace(/\.?0+$/, '') : full} ${unit.name}`;
}

/** Two frequencies in the unit of the higher one: 420 – 460 MHz */
export function frequencies(low, high) {
    const unit = frequencyUnit(Math.abs(high));
    const digits = Math.round(Math.log10(unit.hz));
    const words = [low, high].map((hz) => String(Number((hz / unit.hz).toFixed(digits))));
    return `${words.join(' – ')} ${unit.name}`;
}

/** A frequency of a fixed width, to the digits that matter for a step. */
export function frequencyTo(hz, step) {
    const unit = frequencyUnit(Math.abs(hz));
    const digits = Math.min(9, Math.max(0, Math.ceil(-Math.log10(Math.max(step, 1) / unit.hz))));
    return `${(hz / unit.hz).toFixed(digits)} ${unit.name}`;
}

/** A level in its unit; a dash when nothing was measured. */
export function level(value, unit = 'dB') {
    return value === null || value === undefined || Number.isNaN(value) ? '–' : `${minus(value.toFixed(1))} ${unit}`;
}

/** With the sign that is as wide as a plus. */
export function minus(number) {
    return String(number).replace('-', '−');
}

/** The parts of the clock at a moment, UTC or local, as texts of fixed width. */
function parts(ms, utc) {
    const date = new Date(utc ? ms : ms - new Date(ms).getTimezoneOffset() * 60000);
    const iso = Number.isNaN(date.getTime()) ? '????-??-??T??:??:??.???' : date.toISOString();
    return { date: iso.slice(0, -14), clock: iso.slice(-13, -1) };
}

/** 2026-03-01 */
export function date(ms, utc) {
    return parts(ms, utc).date;
}

/** 10:00, 10:00:05 or 10:00:05.250, as a step of so many ms asks for it. */
export function clock(ms, utc, step = 1) {
    const whole = parts(ms, utc).clock;
    return step >= 60000 ? whole.slice(0, 5) : step >= 1000 ? whole.slice(0, 8) : whole;
}

/** 2026-03-01 10:00:05.250 */
export function moment(ms, utc, step = 1) {
    return ms === null ? '–' : `${date(ms, utc)} ${clock(ms, utc, step)}`;
}

/** UTC, or the local zone as +01:00. */
export function zone(ms, utc) {
    if (utc) {
        return 'UTC';
    }
    const minutes = -new Date(ms).getTimezoneOffset();
    const two = (number) => String(number).padStart(2, '0');
    return `${minutes < 0 ? '−' : '+'}${two(Math.floor(Math.abs(minutes) / 60))}:${two(Math.abs(minutes) % 60)}`;
}

/** 250 ms, 12.5 s, 5 min 20 s, 8 h 0 min, 3 d 4 h */
export function duration(ms) {
    if (ms < 1000) {
        return `${Math.round(ms)} ms`;
    }
    const s = ms / 1000;
    if (s < 60) {
        return `${s.toFixed(s < 10 ? 2 : 1)} s`;
    }
    const [whole, part, names] = s < 3600 ? [60, 1, ['min', 's']] : s < 86400 ? [3600, 60, ['h', 'min']] : [86400, 3600, ['d', 'h']];
    return `${Math.floor(s / whole)} ${names[0]} ${Math.floor(s % whole / part)} ${names[1]}`;
}

/** 681 kB */
export function bytes(count) {
    const power = count < 1e3 ? 0 : count < 1e6 ? 1 : count < 1e9 ? 2 : 3;
    return `${(count / 1000 ** power).toFixed(power === 0 ? 0 : 1)} ${['B', 'kB', 'MB', 'GB'][power]}`;
}

/** The lowest and highest frequency of a range as records have it, and how many channels. */
function channelRange(range) {
    const all = channels(range);
    return all.length === 0 ? 'no channels' : `${frequency(all[0])} to ${frequency(all.at(-1))}, ${all.length} channels`;
}

/** The frequencies of a range as records have it. @param {{startHz: number, stepHz: number, count: number}|{channelsHz: number[]}} [range] */
export function channels(range) {
    return range?.channelsHz ?? Array.from({ length: range?.count ?? 0 }, (_, index) => range.startHz + index * range.stepHz);
}

/** A value as records have it, in a line. */
export function value(content, unit = '') {
    if (content === null || content === undefined) {
        return 'not understood';
    }
    switch (content.kind) {
    case 'Bool':
        return content.value ? 'yes' : 'no';
    case 'Numeric':
    case 'NumericWithOffset':
        return unit === 'Hz' ? frequency(content.value) : `${minus(content.value ?? '–')}${unit === '' ? '' : ` ${unit}`}`;
    case 'LevelMap':
    case 'BearingMap':
    case 'FastBearingMap':
        return cells(content);
    default:
        return String(content.value ?? '–');
    }
}

function cells(content) {
    const measured = content.cells.filter((cell) => cell !== null);
    const levels = measured.map((cell) => (typeof cell === 'number' ? cell : cell.levelDb)).filter((one) => one !== null);
    const between = levels.length === 0 ? '' : `, ${minus(levels.reduce((a, b) => Math.min(a, b)))} to ${minus(levels.reduce((a, b) => Math.max(a, b)))} dB`;
    return `${channelRange(content.range)}, ${measured.length} measured${between}`;
}
