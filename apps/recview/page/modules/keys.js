// Keys for everything, and the list of them.
import * as model from './model.js';
import * as navigate from './navigate.js';
import * as sweep from './sweep.js';
import * as theme from './theme.js';
import { element, button } from './dom.js';

const keys = [];

/**
 * A key for something: shown in the list, called unless a field takes the key.
 * @param {string|string[]} names as KeyboardEvent.key has them, with Shift+ in front where it is held
 * @param {string} words what it does @param {(event: KeyboardEvent) => void} action
 */
export function add(names, words, action) {
    keys.push({ names: [names].flat(), words, action });
}

function ofView() {
    add(['ArrowLeft', 'ArrowRight'], 'earlier, later', ({ key }) => navigate.pan(key === 'ArrowLeft' ? -0.1 : 0.1));
    add(['PageUp', 'PageDown'], 'a whole view earlier, later', ({ key }) => navigate.pan(key === 'PageUp' ? -1 : 1));
    add(['ArrowUp', 'ArrowDown'], 'higher, lower frequencies', ({ key }) => navigate.pan(0, key === 'ArrowUp' ? 0.1 : -0.1));
    add(['+', '-'], 'zoom in and out in time', ({ key }) => navigate.zoomTime(key === '+' ? 0.5 : 2, visibleCursor('at', 'from', 'to')));
    add([']', '['], 'zoom in and out in frequency', ({ key }) => navigate.zoomFrequency(key === ']' ? 0.5 : 2, visibleCursor('hz', 'low', 'high')));
    add(['Home', 'End'], 'start and end of the recording', ({ key }) => navigate.edge(key === 'End'));
    add('0', 'all of the recording', navigate.all);
}

function ofCursor() {
    add('Enter', 'cursor into the middle', () => {
        const { from, to, low, high } = model.get();
        model.set({ at: (from + to) / 2, hz: (low + high) / 2 });
    });
    add([',', '.'], 'cursor to the sweep before, after', ({ key }) => sweep.step(key === ',' ? -1 : 1));
    add(['Shift+ArrowUp', 'Shift+ArrowDown'], 'cursor to the channel above, below', ({ key }) => sweep.stepChannel(key === 'ArrowUp' ? 1 : -1));
    add(['Shift+ArrowLeft', 'Shift+ArrowRight'], 'cursor a hundredth of the view earlier, later', ({ key }) => {
        const { from, to, at } = model.get();
        model.set({ at: (at ?? (from + to) / 2) + (key === 'ArrowLeft' ? -1 : 1) * (to - from) / 100 });
    });
    add('c', 'view around the cursor', () => {
        const { from, to, low, high, at, hz } = model.get();
        navigate.show({
            ...(at === null ? {} : { from: at - (to - from) / 2, to: at + (to - from) / 2 }),
            ...(hz === null ? {} : { low: hz - (high - low) / 2, high: hz + (high - low) / 2 }),
        }, 'jump');
    });
    add('Escape', 'no cursor', () => model.set({ at: null, hz: null }));
}

function ofLooks() {
    const next = (list, now) => list[(list.indexOf(now) + 1) % list.length];
    add('m', 'maximum, mean, minimum', () => model.set({ of: next(['max', 'mean', 'min'], model.get().of) }));
    add('k', 'other colours', () => model.set({ map: next(['viridis', 'cividis', 'inferno', 'grey'], model.get().map) }));
    add('a', 'level scale by the data, or as it is', () => model.set({ autoLevel: !model.get().autoLevel }));
    add('f', 'follow the newest, or no longer', () => navigate.follow(!model.get().follow && model.get().recording?.live === true));
    add('u', 'UTC or local time', () => model.set({ utc: !model.get().utc }));
    add('d', 'dark or light', () => model.set({ dark: !theme.isDark() }));
    add('/', 'choose a recording', () => document.getElementById('choose').click());
    add('?', 'these keys', help);
}

function visibleCursor(name, first, last) {
    const state = model.get();
    return state[name] !== null && state[name] >= state[first] && state[name] <= state[last] ? state[name] : undefined;
}

/** Listens for keys. */
export function start() {
    ofView();
    ofCursor();
    ofLooks();
    document.addEventListener('keydown', (event) => {
        if (event.ctrlKey || event.altKey || event.metaKey || event.defaultPrevented || takesKeys(event)) {
            return;
        }
        const shifted = `Shift+${event.key}`;
        const found = event.shiftKey ? keys.find(({ names }) => names.includes(shifted)) : undefined;
        const key = found ?? keys.find(({ names }) => names.includes(event.key));
        if (key !== undefined) {
            event.preventDefault();
            key.action(event);
        }
    });
}

function takesKeys({ target, key }) {
    if (document.querySelector('dialog[open]') !== null) {
        return true;
    }
    const scrolls = target.closest('.scroll, .leaflet-container') !== null && /^(Arrow|Page|Home|End)/.test(key);
    return scrolls || target.matches('input, select, textarea') || (target.matches('button, a, summary') && (key === 'Enter' || key === ' '));
}

const signs = { ArrowLeft: '←', ArrowRight: '→', ArrowUp: '↑', ArrowDown: '↓', PageUp: 'Page ↑', PageDown: 'Page ↓', Escape: 'Esc', ' ': 'Space' };

function keyTexts({ names }) {
    return names.map((name) => {
        const parts = name.length > 1 && name.startsWith('Shift+') ? ['Shift', name.slice(6)] : [name];
        return element('kbd', { textContent: parts.map((part) => signs[part] ?? part).join(' ') });
    });
}

/** Shows all keys and what the mouse does. */
export function help() {
    const row = (first, words) => element('tr', {}, element('th', { scope: 'row' }, ...first), element('td', { textContent: words }));
    const mouse = [['Wheel', 'zoom in time'], ['Shift wheel', 'zoom in frequency, also over its axis'], ['Ctrl wheel, pinch', 'zoom in both'],
        ['Drag', 'move'], ['Shift drag', 'zoom to a box'], ['Click', 'cursor'], ['Double click', 'zoom in']];
    const box = element('dialog', { className: 'help', aria: { label: 'Keys' } },
        element('h2', { textContent: 'Keys and mouse' }),
        element('div', { className: 'columns' },
            element('table', {}, element('tbody', {}, ...keys.map((key) => row(keyTexts(key), key.words)))),
            element('table', {}, element('tbody', {}, ...mouse.map(([name, words]) => row([element('kbd', { textContent: name })], words))))),
        button('Close', () => box.close(), { title: 'Close' }));
    box.addEventListener('close', () => box.remove());
    document.body.append(box);
    box.showModal();
}
