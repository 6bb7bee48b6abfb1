// Bookmarks in the margin above the waterfall, and as a list: jump; with --edit also add, rename and remove.
import { onLayout, timeToX } from './axes.js';
import { button, closedByEscape, element } from './dom.js';
import * as keys from './keys.js';
import { latest } from './latest.js';
import { goTo } from './navigate.js';
import * as text from './text.js';

// Marks that are nearer to each other than this become one with a number.
const nearest = 18;

export function create(container, model, server) {
    new Bookmarks(container, model, server);
}

class Bookmarks {
    constructor(container, model, server) {
        this.model = model;
        this.server = server;
        this.list = [];
        this.build(container);
        this.load = latest(() => this.loadNow(), (error) => this.say(error.message));
        model.on(['recording'], () => this.load());
        model.on(['recordings'], () => this.load());
        model.on(['from', 'to', 'utc'], () => this.draw());
        onLayout(() => this.draw());
        keys.add(['p', 'n'], 'bookmark before, after the cursor', ({ key }) => this.neighbour(key === 'n' ? 1 : -1));
        keys.add('b', 'new bookmark at the cursor', () => this.startAdding());
        this.load();
    }

    build(container) {
        this.margin = element('div', { className: 'bookmark-margin', role: 'group', aria: { label: 'Bookmarks in view' } });
        this.summary = element('summary', {}, 'Bookmarks');
        this.items = element('ul', { className: 'bookmark-list' });
        this.text = element('input', { type: 'text', maxLength: 200, placeholder: 'Text of the bookmark', required: true,
            aria: { label: 'Text of a new bookmark at the cursor' } });
        this.form = element('form', { hidden: true }, this.text, element('button', { type: 'submit' }, 'Add at the cursor'));
        this.form.addEventListener('submit', (event) => {
            event.preventDefault();
            this.add();
        });
        this.note = element('p', { className: 'note error', role: 'alert' });
        this.menu = closedByEscape(element('details', { className: 'menu' }, this.summary,
            element('div', { className: 'menu-body' }, this.form, this.items, this.note)), this.summary);
        container.replaceChildren(this.menu, this.margin);
    }

    moment(ms) {
        return text.moment(ms, this.model.get().utc);
    }

    say(sentence) {
        this.note.textContent = sentence;
        if (sentence) {
            this.menu.open = true;
        }
    }

    async loadNow() {
        const recording = this.model.get().recording;
        const answer = recording ? await this.server.json('/api/bookmarks', { recording: recording.id }) : { bookmarks: [] };
        if (recording === this.model.get().recording) {
            const isTyped = this.of === recording?.id && this.items.querySelector('form') !== null;
            this.of = recording?.id;
            this.take(answer);
            if (!isTyped) {
                this.drawList();
            }
        }
    }

    take(answer) {
        this.list = [...answer.bookmarks].sort((a, b) => a.ms - b.ms);
        this.draw();
    }

    editable() {
        return Boolean(this.model.get().edit);
    }

    draw() {
        const { from, to } = this.model.get();
        const marks = [];
        for (const bookmark of this.list.filter(({ ms }) => ms >= from && ms <= to)) {
            const x = timeToX(bookmark.ms);
            const before = marks.at(-1);
            if (before && x - before.x < nearest) {
                before.bookmarks.push(bookmark);
            } else {
                marks.push({ x, bookmarks: [bookmark] });
            }
        }
        this.margin.hidden = this.list.length === 0;
        this.margin.replaceChildren(...marks.map((mark, index) => {
            const { ms, text: first } = mark.bookmarks[0];
            const words = mark.bookmarks.length > 1 ? `${mark.bookmarks.length} bookmarks, first: ${first}` : first;
            const made = button(mark.bookmarks.length > 1 ? `${mark.bookmarks.length}` : first, () => this.jump(ms),
                { className: 'bookmark', title: `${words}, ${this.moment(ms)}` });
            made.style.left = `${mark.x}px`;
            const next = marks[index + 1];
            made.style.maxWidth = next ? `${next.x - mark.x - 2}px` : '14em';
            return made;
        }));
    }

    drawList() {
        const edit = this.editable();
        this.summary.textContent = `Bookmarks (${this.list.length})`;
        this.form.hidden = !edit;
        this.items.replaceChildren(...this.list.map((bookmark) => {
            const row = element('li', {}, button([element('time', {}, this.moment(bookmark.ms)), ' ', bookmark.text],
                () => this.jump(bookmark.ms), { className: 'jump' }));
            if (edit) {
                row.append(button('Rename', () => this.rename(row, bookmark)),
                    button('Remove', () => this.change({ action: 'remove', ms: bookmark.ms, text: bookmark.text })));
            }
            return row;
        }));
        if (this.list.length === 0) {
            this.items.replaceChildren(element('li', {}, edit ? 'None yet: key B adds one at the cursor.' : 'None.'));
        }
    }

    rename(row, bookmark) {
        const input = element('input', { type: 'text', maxLength: 200, value: bookmark.text, required: true, aria: { label: 'New text' } });
        const form = element('form', {}, input, element('button', { type: 'submit' }, 'Rename'),
            button('Leave it', () => this.drawList()));
        form.addEventListener('submit', (event) => {
            event.preventDefault();
            this.change({ action: 'rename', ms: bookmark.ms, text: bookmark.text, newText: input.value });
        });
        row.replaceChildren(form);
        input.focus();
        input.select();
    }

    async add() {
        const { at } = this.model.get();
        if (at === null || at === undefined) {
            this.say('Put the cursor where the bookmark is to be: click into the waterfall.');
            return;
        }
        if (await this.change({ action: 'add', ms: Math.round(at), text: this.text.value })) {
            this.text.value = '';
            this.menu.open = false;
        }
    }

    /** True when the server took the change. */
    async change(wanted) {
        try {
            const answer = await this.server.post('/api/bookmarks', { recording: this.model.get().recording.id, ...wanted });
            this.say('');
            this.take(answer);
            this.drawList();
            return true;
        } catch (error) {
            this.say(error.message);
            return false;
        }
    }

    jump(ms) {
        this.model.set({ follow: false, playing: false });
        goTo(ms);
    }

    neighbour(direction) {
        const at = this.model.get().at ?? (direction > 0 ? -Infinity : Infinity);
        const found = direction > 0 ? this.list.find(({ ms }) => ms > at) : this.list.findLast(({ ms }) => ms < at);
        if (found) {
            this.jump(found.ms);
        }
    }

    startAdding() {
        if (this.editable()) {
            this.menu.open = true;
            this.text.focus();
        } else {
            this.say('Bookmarks are changed only by a recview that was started with --edit.');
        }
    }
}
