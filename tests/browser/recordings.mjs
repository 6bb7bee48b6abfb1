// The recordings that browser tests look at.

const rx = '/Devices/Rx1';
export const sweepMs = 250;
export const channels = 100;
export const lowest = 430e6;
export const step = 25e3;
/** The burst: one cell of one sweep. */
export const burst = { sweep: 1234, channel: 37, level: -23.5 };

function beginning(caption) {
    return [
        { at: 0, path: '/DEVICE_CAPTION', create: 'text', value: caption },
        { at: 0, path: `${rx}/Adm/DRIVERNAME`, create: 'text', value: caption },
        { at: 0, path: `${rx}/Scn/RfSpectrum`, create: 'levels', range: { start: lowest, step, count: channels } },
        { at: 0, path: '/LEVEL', create: 'number', value: -90, lower: -150, upper: 50 },
        { at: 0, path: '/IFSPAN', create: 'selection', items: [{ name: '100 kHz', value: 100e3, key: 1 }, { name: '1 MHz', value: 1e6, key: 2 }], select: 1 },
        { at: 0, record: 'On' },
    ];
}

/** A level that depends on sweep and channel only. */
export function levelOf(sweep, channel) {
    const noise = (Math.imul(sweep, 7919) + Math.imul(channel, 104729)) >>> 0;
    return burst.sweep === sweep && burst.channel === channel ? burst.level : -110 + noise % 1000 / 100;
}

export function sweepLine(sweep, at = (sweep + 1) * sweepMs) {
    return { at, path: `${rx}/Scn/RfSpectrum`, cells: Array.from({ length: channels }, (_, channel) => levelOf(sweep, channel)) };
}

/** Minutes of sweeps with one burst, a level that changes every second, and spans. */
export function receiver({ caption = 'RX 1', sweeps = 2400 } = {}) {
    const lines = beginning(caption);
    for (let sweep = 0; sweep < sweeps; ++sweep) {
        lines.push(sweepLine(sweep));
        if (sweep % 4 === 0) {
            lines.push({ at: (sweep + 1) * sweepMs + 10, path: '/LEVEL', set: -90 + sweep % 40 / 2 });
        }
        if (sweep % 400 === 399) {
            lines.push({ at: (sweep + 1) * sweepMs + 20, path: '/IFSPAN', select: sweep % 800 === 399 ? '1 MHz' : '100 kHz' });
        }
    }
    lines.push({ at: (sweeps + 1) * sweepMs, record: 'Off' });
    return lines;
}

/** The first lines of a recording that goes on. */
export function live() {
    return beginning('Live RX');
}

