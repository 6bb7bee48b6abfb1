// The line of controls: recording, spectrum, what is drawn and how, and what is taken away.
import * as model from './model.js';
import * as recordings from './recordings.js';
import * as levels from './levels.js';
import * as colormaps from './colormaps.js';
import * as keys from './keys.js';
import * as text from './text.js';
import * as theme from './theme.js';
import * as server from './server.js';
import * as address from './address.js';
import * as notice from './notice.js';
import * as waterfall from './waterfall.js';
import { button, choice, element, fill } from './dom.js';

let dialog = null;
const heading = 46;

/** Fills its container. */
export function create(container) {
    container.append(
        recordingButton(), spectrumChoice(),
        element('span', { className: 'group' }, ...[['max', 'Max'], ['mean', 'Mean'], ['min', 'Min']].map(ofButton)),
        element('span', { className: 'group' }, mapChoice(), levelField('low', 'Lowest level of the scale'), levelField('high', 'Highest level of the scale')),
        element('span', { className: 'space' }),
        clockButton(), themeButton(), takeawayMenu(),
        button('?', keys.help, { title: 'Keys and mouse (?)' }));
}

function recordingButton() {
    const title = element('b');
    const device = element('small');
    const live = element('i', { className: 'live', hidden: true });
    const made = button([live, title, device], openPicker, { id: 'choose', title: 'Choose a recording (/)' });
    model.on(['recording', 'recordings'], ({ recording }) => {
        title.textContent = recording === null ? 'No recording' : recording.title || recording.id;
        device.textContent = recording?.device ?? '';
        live.hidden = !recording?.live;
        document.title = recording === null ? 'recview' : `${recording.title || recording.id} – recview`;
    });
    return made;
}

function spectrumChoice() {
    const made = choice('Spectrum', [], '', (code) => model.set(recordings.otherSpectrum(Number(code)), 'jump'));
    made.id = 'spectra';
    model.on(['recording', 'type'], ({ recording, type }) => {
        const spectra = recording?.spectra ?? [];
        made.hidden = spectra.length === 0;
        fill(made, spectra.map((one) => [one.code, `${one.keyword} · ${text.frequencies(one.lowHz, one.highHz)}`]), type);
    });
    return made;
}

function ofButton([of, words]) {
    const titles = { max: 'The largest level of each spot', mean: 'The mean level of each spot', min: 'The smallest level of each spot' };
    const made = button(words, () => model.set({ of }), { title: `${titles[of]} (m)` });
    const show = () => made.setAttribute('aria-pressed', String(model.get().of === of));
    model.on('of', show);
    show();
    return made;
}

function mapChoice() {
    const made = choice('Colours', colormaps.maps, model.get().map, (map) => model.set({ map }));
    model.on('map', ({ map }) => { made.value = map; });
    return made;
}

function levelField(end, label) {
    const name = end === 'low' ? 'levelLow' : 'levelHigh';
    const made = element('input', { type: 'number', step: '1', title: label, aria: { label } });
    const show = () => { made.value = String(model.get()[name]); };
    made.addEventListener('change', () => {
        if (made.value !== '') {
            levels.change({ [end]: Number(made.value) });
        }
        show();
    });
    model.on(name, show);
    show();
    return made;
}

function clockButton() {
    const made = button('UTC', () => model.set({ utc: !model.get().utc }), { title: 'UTC or local time (u)' });
    const show = () => { made.textContent = model.get().utc ? 'UTC' : 'Local'; };
    model.on('utc', show);
    show();
    return made;
}

function themeButton() {
    const made = button('', () => model.set({ dark: !theme.isDark() }), { title: 'Dark or light (d)' });
    const show = () => { made.textContent = theme.isDark() ? 'Dark' : 'Light'; };
    theme.onChange(show);
    show();
    return made;
}

function takeawayMenu() {
    const open = element('summary', { textContent: 'Take away', title: 'Picture, data or address of the view' });
    const menu = element('details', { className: 'menu' }, open);
    const entry = (words, title, action) => button(words, () => {
        menu.open = false;
        action();
    }, { title });
    menu.append(element('div', {},
        entry('Picture (PNG)', 'The waterfall with its axes and scale', savePicture),
        entry('Data (CSV)', 'Every sweep of the view, a line each', saveData),
        entry('Copy address', 'Opened again it shows this view', copyAddress)));
    menu.addEventListener('focusout', ({ relatedTarget }) => {
        if (relatedTarget !== null && !menu.contains(relatedTarget)) {
            menu.open = false;
        }
    });
    document.addEventListener('pointerdown', ({ target }) => {
        if (!menu.contains(target)) {
            menu.open = false;
        }
    });
    menu.addEventListener('keydown', (event) => {
        if (event.key === 'Escape' && menu.open) {
            event.stopPropagation();
            menu.open = false;
            open.focus();
        }
    });
    return menu;
}

/** Opens the list of recordings: found by title, device or name; those that grow are marked. */
function openPicker() {
    const search = element('input', { type: 'search', placeholder: 'Search', aria: { label: 'Search recordings' } });
    const list = element('div', { className: 'list scroll' });
    dialog = element('dialog', { className: 'picker', aria: { label: 'Recordings' } }, search, list);
    const draw = () => list.replaceChildren(...entries(search.value));
    search.addEventListener('input', draw);
    dialog.addEventListener('keydown', (event) => arrows(event, dialog));
    dialog.addEventListener('close', () => dialog.remove());
    dialog.addEventListener('click', (event) => (event.target === dialog ? dialog.close() : undefined));
    document.body.append(dialog);
    draw();
    dialog.showModal();
    search.focus();
}

/** Live ones first, then the newest. */
function entries(searched) {
    const wanted = searched.trim().toLowerCase();
    const { recordings: all } = model.get();
    const fitting = all.filter(({ id, title, device, type }) => `${id} ${title} ${device} ${type}`.toLowerCase().includes(wanted));
    fitting.sort((a, b) => Number(b.live) - Number(a.live) || b.startMs - a.startMs);
    return fitting.length > 0 ? fitting.map(entry) : [element('p', { textContent: 'No recording is called so.' })];
}

function entry(recording) {
    const { utc, recording: shown } = model.get();
    const { title, id, device, type, startMs, endMs, files, live } = recording;
    const size = files.reduce((sum, { bytes }) => sum + bytes, 0);
    const facts = [text.moment(startMs, utc, 1000), text.duration(endMs - startMs), text.bytes(size), files.length > 1 ? `${files.length} files` : ''];
    return button([
        element('i', { className: 'live', hidden: !live, title: 'Recording now' }), element('b', { textContent: title || id }),
        element('span', { textContent: [device, type].filter(Boolean).join(' · ') }),
        element('small', { textContent: facts.filter(Boolean).join(' · ') })], () => {
        dialog.close();
        model.set(recordings.whole(recording), 'jump');
    }, { data: { id }, aria: { current: String(shown?.id === id) } });
}

function arrows(event, within) {
    const by = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    const buttons = [...within.querySelectorAll('button')];
    if (by !== undefined && buttons.length > 0) {
        event.preventDefault();
        buttons[Math.max(0, Math.min(buttons.length - 1, buttons.indexOf(document.activeElement) + by))].focus();
    }
}

/** Saves the waterfall as it is seen, with its title, axes and scale. */
async function savePicture() {
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
function saveData() {
    const { recording, type, from, to, low, high } = model.get();
    if (recording !== null && type !== null) {
        save(server.address('/api/csv', { recording: recording.id, type, from, to, low, high }), `${recording.id}.csv`);
    }
}

/** Puts the address of the view on the clipboard, or shows it where that is not allowed. */
async function copyAddress() {
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
