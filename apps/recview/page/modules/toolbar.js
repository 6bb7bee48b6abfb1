// The line of controls: recording, spectrum, what is drawn and how, and what is taken away.
import * as model from './model.js';
import * as recordings from './recordings.js';
import * as levels from './levels.js';
import * as colormaps from './colormaps.js';
import * as keys from './keys.js';
import * as picker from './picker.js';
import * as takeaway from './takeaway.js';
import * as text from './text.js';
import * as theme from './theme.js';
import { button, choice, element, fill } from './dom.js';

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
    const made = button([live, title, device], picker.open, { id: 'choose', title: 'Choose a recording (/)' });
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
        entry('Picture (PNG)', 'The waterfall with its axes and scale', takeaway.picture),
        entry('Data (CSV)', 'Every sweep of the view, a line each', takeaway.data),
        entry('Copy address', 'Opened again it shows this view', takeaway.copyAddress)));
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
