// Fetches pictures for the view: a quick one while it moves, an exact one when it rests; never more than two at a time.
import * as server from './server.js';
import { Picture, sourceOf } from './picture.js';

const restMs = 150;

export class Loader {
    /**
     * @param {() => ?object} wanted the question for what is visible now, without exact; null when nothing can be asked
     * @param {(picture: Picture, since: number) => void} arrived with the time (performance.now()) it was asked for
     * @param {(error: Error) => void} failed
     */
    constructor(wanted, arrived, failed) {
        Object.assign(this, { wanted, arrived, failed });
        this.running = new Map(); // kind -> number of the view it was asked for
        this.view = 0;
        this.quick = 0; // newest view asked for quickly
        this.shown = 0; // newest view that arrived
        this.exact = 0; // newest view that arrived and cannot be shown more exactly
        this.since = 0;
        this.timer = null;
    }

    /** The view is another one. @param {boolean} other also the data: what runs is of no use any more */
    moved(other = false) {
        this.view++;
        this.since = performance.now();
        server.giveUp('view-exact');
        if (other) {
            server.giveUp('view-0');
            server.giveUp('view-1');
            this.shown = this.view - 1;
        }
        clearTimeout(this.timer);
        this.timer = setTimeout(() => this.rested(), restMs);
        this.next();
    }

    next() {
        const free = ['view-0', 'view-1'].find((kind) => !this.running.has(kind));
        if (this.quick < this.view && free !== undefined && this.running.size < 2) {
            this.quick = this.view;
            this.ask(free, 0);
        }
    }

    rested() {
        if (this.exact === this.view) {
            return;
        }
        if (this.running.size < 2) {
            this.ask('view-exact', 1);
        } else {
            this.timer = setTimeout(() => this.rested(), 20);
        }
    }

    async ask(kind, exact) {
        const question = this.wanted();
        if (question === null) {
            return;
        }
        const { view, since } = this;
        const source = sourceOf({ ...question, recording: { id: question.recording } });
        this.running.set(kind, view);
        try {
            const answer = await server.view({ ...question, exact }, kind);
            const late = exact === 0 && this.exact === view; // a quick answer behind the exact one
            if (view >= this.shown && !late) {
                this.shown = view;
                this.exact = exact === 1 || answer.head.exact ? view : this.exact;
                this.arrived(new Picture(answer, source), since);
            }
        } catch (error) {
            if (!server.isOvertaken(error)) {
                this.failed(error);
            }
        } finally {
            this.running.delete(kind);
            this.next();
        }
    }
}
