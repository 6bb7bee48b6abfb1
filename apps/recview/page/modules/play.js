// Play: the cursor runs through the recording, at any speed, in a loop, record by record, or follows the newest.
import { button, element, labelledChoice } from './dom.js';
import * as keys from './keys.js';
import { latest } from './latest.js';
import * as navigate from './navigate.js';

const speeds = [0.25, 0.5, 1, 2, 5, 10, 20, 50, 100, 200, 500, 1000];
const picturesASecond = 20;
// The cursor goes through this part of the view, then the view goes with it.
const turningPoint = 0.75;

export function create(container, model, server) {
    new Player(container, model, server);
}

class Player {
    constructor(container, model, server) {
        this.model = model;
        this.server = server;
        this.note = element('span', { className: 'note', role: 'status' });
        this.build(container);
        this.moving = false;
        this.last = null;
        this.direction = 0;
        this.stepNow = latest(() => this.stepOnce(), (error) => this.say(error.message));
        model.on(['playing'], () => this.changed());
        model.on(['speed', 'loop', 'follow', 'recording'], () => this.show());
        model.on(['end', 'follow'], () => this.toNewest());
        model.on(['recording'], () => model.set({ playing: false }));
        keys.add(' ', 'play, pause', () => this.toggle());
        keys.add(['<', '>'], 'record before, after the cursor', ({ key }) => this.step(key === '<' ? -1 : 1));
        keys.add('l', 'loop what is visible, or no longer', () => this.toggleLoop());
        this.show();
    }

    build(container) {
        this.playButton = button('Play', () => this.toggle(), { title: 'Space' });
        this.speed = labelledChoice('Speed', speeds.map((speed) => [String(speed), speed < 1 ? `1/${1 / speed}` : `${speed}×`]),
            () => this.model.set({ speed: Number(this.speed.value) }));
        this.loop = button('Loop what is visible', () => this.toggleLoop());
        this.follow = button('Live', () => navigate.follow(!this.model.get().follow));
        container.replaceChildren(button('◀ Record', () => this.step(-1), { title: 'Key <' }), this.playButton,
            button('Record ▶', () => this.step(1), { title: 'Key >' }), this.speed.label, this.loop, this.follow, this.note);
        container.setAttribute('role', 'group');
        container.setAttribute('aria-label', 'Play');
    }

    say(text) {
        this.note.textContent = text;
    }

    show() {
        const { playing, speed, loop, follow, recording } = this.model.get();
        this.playButton.textContent = playing ? 'Pause' : 'Play';
        this.playButton.setAttribute('aria-pressed', String(Boolean(playing)));
        this.speed.value = String(speed ?? 1);
        this.loop.setAttribute('aria-pressed', String(Boolean(loop)));
        this.loop.textContent = loop ? 'End the loop' : 'Loop what is visible';
        this.follow.hidden = !recording?.live;
        this.follow.setAttribute('aria-pressed', String(Boolean(follow)));
        this.follow.textContent = follow ? 'Live: following' : 'Live: follow the newest';
    }

    toggle() {
        const { playing, recording, at, from, loop } = this.model.get();
        if (!recording) {
            return;
        }
        const [start, end] = loop ?? [recording.startMs, this.model.get().end];
        // At the end play begins anew, as every player does.
        const begin = at === null ? Math.max(from, start) : at >= end ? start : at;
        this.say('');
        this.model.set(playing ? { playing: false } : { playing: true, follow: false, at: begin });
    }

    toggleLoop() {
        const { loop, from, to, at } = this.model.get();
        this.model.set(loop ? { loop: null } : { loop: [from, to], at: at >= from && at <= to ? at : from });
    }

    changed() {
        this.show();
        if (this.model.get().playing && !this.running) {
            this.running = true;
            this.last = null;
            requestAnimationFrame((now) => this.frame(now));
        }
    }

    frame(now) {
        if (!this.model.get().playing) {
            this.running = false;
            return;
        }
        this.last ??= now;
        if (now - this.last >= 1000 / picturesASecond) {
            // A page that was hidden does not leap.
            this.advance(Math.min(now - this.last, 500) * (this.model.get().speed ?? 1));
            this.last = now;
        }
        requestAnimationFrame((next) => this.frame(next));
    }

    advance(distance) {
        const { recording, loop, at } = this.model.get();
        const [start, end] = loop ?? [recording.startMs, this.model.get().end];
        let next = at + distance;
        if (loop && (next > end || next < start)) {
            next = start + (end > start ? Math.max(0, next - end) % (end - start) : 0);
        }
        if (next >= end) {
            this.place(end, { playing: false });
            return;
        }
        this.place(next);
    }

    /** Sets the cursor and takes the view along. */
    place(at, changes = {}) {
        const { from, to, end } = this.model.get();
        const span = to - from;
        this.model.set({ at, ...changes });
        if (at < from || (at > from + span * turningPoint && to < end)) {
            navigate.show({ from: at - span * turningPoint, to: at + span * (1 - turningPoint) });
        }
    }

    step(direction) {
        this.direction = direction;
        this.stepNow();
    }

    async stepOnce() {
        const { recording, at } = this.model.get();
        if (!recording) {
            return;
        }
        this.model.set({ playing: false, follow: false });
        const wanted = { recording: recording.id, at: at ?? recording.startMs, step: at === null ? 0 : this.direction };
        const answer = await this.server.json('/api/record', wanted);
        this.say('');
        this.place(answer.ms, { record: { at: answer.ms, answer } });
    }

    /** The cursor stands at the newest where it is followed. */
    toNewest() {
        const { follow, end } = this.model.get();
        if (follow) {
            this.model.set({ at: end, playing: false });
        }
    }
}
