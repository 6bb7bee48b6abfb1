// The line at the top: what went wrong, in a sentence.
import { button, element } from './dom.js';

const lines = new Map();

/**
 * Shows a sentence until hide() of its kind, or for good when the user closes it.
 * @param {string} kind one line each @param {string} sentence
 */
export function show(kind, sentence) {
    lines.set(kind, sentence);
    draw();
}

/** Takes the line of a kind away. */
export function hide(kind) {
    if (lines.delete(kind)) {
        draw();
    }
}

function draw() {
    const box = document.getElementById('notice');
    box.replaceChildren(...[...lines].map(([kind, sentence]) => line(kind, sentence)));
    box.hidden = lines.size === 0;
}

function line(kind, sentence) {
    return element('p', { data: { kind } }, element('span', {}, sentence), button('×', () => hide(kind), { ariaLabel: 'Close' }));
}
