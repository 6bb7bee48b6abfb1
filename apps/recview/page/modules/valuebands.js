// A text, a selection or a yes and no over time as bands, each with what it was.
import { geometry, timeToX } from './axes.js';
import { element } from './dom.js';
import * as text from './text.js';

// Bands that are narrower come together as one that says how many changes it holds.
const narrowest = 4;

export class Bands {
    constructor(place, model) {
        this.place = place;
        this.model = model;
        this.strip = element('div', { className: 'bands' });
        this.left = element('p', { className: 'note' });
        this.colours = new Map();
        place.replaceChildren(this.strip, this.left);
        this.changes = [];
    }

    /** @param {boolean} yesAndNo of a value that is true or false */
    take(data, yesAndNo) {
        const words = yesAndNo ? { true: 'yes', false: 'no' } : {};
        this.changes = data.changes.map(({ ms, text: one }) => ({ ms, text: words[one] ?? one }));
        this.left.textContent = data.more > 0 ? `${data.more} more changes are left out: look at a shorter time for all of them.` : '';
        for (const { text: one } of this.changes) {
            if (!this.colours.has(one)) {
                this.colours.set(one, this.colours.size % 6);
            }
        }
        this.draw();
    }

    draw() {
        const { from, to, recording } = this.model.get();
        const last = Math.min(to, recording?.endMs ?? to);
        const made = [];
        let crowd = null;
        this.changes.forEach(({ ms, text: words }, index) => {
            const begin = Math.max(from, ms);
            const end = Math.min(last, this.changes[index + 1]?.ms ?? last);
            if (end < from || begin > last) {
                return;
            }
            const [x, right] = [timeToX(begin), timeToX(end)];
            if (right - x >= narrowest) {
                crowd = null;
                made.push({ x, right, words, ms, count: 1, colour: this.colours.get(words) });
            } else if (crowd && x - crowd.right < narrowest) {
                crowd.right = right;
                crowd.count += 1;
            } else {
                crowd = { x, right, words, ms, count: 1, colour: this.colours.get(words) };
                made.push(crowd);
            }
        });
        this.strip.replaceChildren(...made.map((band) => this.element(band)));
        this.strip.style.width = `${geometry.left + geometry.width}px`;
    }

    element({ x, right, words, ms, count, colour }) {
        const since = text.moment(ms, this.model.get().utc);
        const band = element('div', { className: count > 1 ? 'band crowd' : `band band-${colour}`,
            title: count > 1 ? `${count} changes from ${since}` : `${words} since ${since}` }, count > 1 ? '' : words);
        band.style.left = `${x}px`;
        band.style.width = `${Math.max(1, right - x)}px`;
        return band;
    }

    textAt(ms) {
        return this.changes.findLast((change) => change.ms <= ms)?.text ?? '';
    }

    remove() {
        this.strip.remove();
    }
}
