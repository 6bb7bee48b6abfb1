// What is taken away of the view: a picture, its data, its address.
import * as model from './model.js';
import * as server from './server.js';
import * as address from './address.js';
import * as levels from './levels.js';
import * as notice from './notice.js';
import * as text from './text.js';
import * as theme from './theme.js';
import * as waterfall from './waterfall.js';
import { element } from './dom.js';

const heading = 46;

/** Saves the waterfall as it is seen, with its title, axes and scale. */
export async function picture() {
    const state = model.get();
    if (state.recording === null) {
        return;
    }
    const blob = await new Promise((done) => drawn(state).toBlob(done, 'image/png'));
    save(URL.createObjectURL(blob), `${state.recording.id}.png`);
}

function drawn(state) {
    const seen = waterfall.canvasNow();
    const ratio = window.devicePixelRatio;
    const top = waterfall.box().y - 20;
    const canvas = element('canvas', { width: seen.width, height: Math.round(seen.height + (heading - top) * ratio) });
    const context = canvas.getContext('2d');
    context.fillStyle = theme.colour('panel');
    context.fillRect(0, 0, canvas.width, canvas.height);
    context.drawImage(seen, 0, Math.round(top * ratio), seen.width, seen.height - Math.round(top * ratio),
        0, Math.round(heading * ratio), seen.width, seen.height - Math.round(top * ratio));
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    titles(context, state);
    const { x, width, height } = waterfall.box();
    context.translate(x + width + 8, heading + 20);
    levels.bar(context, height, levels.extent());
    return canvas;
}

function titles(context, state) {
    const { recording, from, to, low, high, utc, of } = state;
    const spectrum = model.spectrum();
    context.textBaseline = 'top';
    context.fillStyle = theme.colour('text');
    context.font = '600 14px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';
    context.fillText(`${recording.title || recording.id} · ${recording.device}`, waterfall.box().x, 8);
    context.fillStyle = theme.colour('dim');
    context.font = '11px system-ui, "Segoe UI", "DejaVu Sans", sans-serif';
    const what = `${spectrum?.keyword ?? ''} ${of}, ${spectrum?.unit || 'dB'}`;
    const when = `${text.moment(from, utc)} – ${text.moment(to, utc)} ${text.zone(from, utc)}`;
    context.fillText(`${when} · ${text.frequencies(low, high)} · ${what}`, waterfall.box().x, 28);
}

/** Saves every sweep of the view as CSV. */
export function data() {
    const { recording, type, from, to, low, high } = model.get();
    if (recording !== null && type !== null) {
        save(server.address('/api/csv', { recording: recording.id, type, from, to, low, high }), `${recording.id}.csv`);
    }
}

/** Puts the address of the view on the clipboard, or shows it where that is not allowed. */
export async function copyAddress() {
    const link = new URL(address.write(), location.href).href;
    try {
        await navigator.clipboard.writeText(link);
        notice.show('address', 'The address of this view is on the clipboard.');
        setTimeout(() => notice.hide('address'), 4000);
    } catch {
        notice.show('address', `The address of this view: ${link}`);
    }
}

function save(href, name) {
    const link = element('a', { href, download: name });
    document.body.append(link);
    link.click();
    link.remove();
    if (href.startsWith('blob:')) {
        setTimeout(() => URL.revokeObjectURL(href), 10000);
    }
}
