// Chooses a recording from the list: found by its title, device or name; those that grow are marked.
import * as model from './model.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import { element } from './dom.js';

let dialog = null;

/** Opens the list. */
export function open() {
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
    const made = element('button', { type: 'button', data: { id }, aria: { current: String(shown?.id === id) } },
        element('i', { className: 'live', hidden: !live, title: 'Recording now' }), element('b', { textContent: title || id }),
        element('span', { textContent: [device, type].filter(Boolean).join(' · ') }),
        element('small', { textContent: facts.filter(Boolean).join(' · ') }));
    made.addEventListener('click', () => {
        dialog.close();
        model.set(recordings.whole(recording), 'jump');
    });
    return made;
}

function arrows(event, within) {
    const by = { ArrowDown: 1, ArrowUp: -1 }[event.key];
    const buttons = [...within.querySelectorAll('button')];
    if (by !== undefined && buttons.length > 0) {
        event.preventDefault();
        buttons[Math.max(0, Math.min(buttons.length - 1, buttons.indexOf(document.activeElement) + by))].focus();
    }
}
