// The line at the bottom: what is under the pointer, and how much is visible.
import * as model from './model.js';
import * as overlay from './overlay.js';
import * as recordings from './recordings.js';
import * as text from './text.js';
import * as waterfall from './waterfall.js';
import { element } from './dom.js';

/** Fills its container. */
export function create(container) {
    const pointer = element('span', { id: 'pointer' });
    const view = element('span', { id: 'view' });
    container.append(pointer, view);
    overlay.onPointer((at) => { pointer.textContent = at === null ? '' : under(at); });
    const show = () => { view.textContent = visible(); };
    model.on(['recording', 'from', 'to', 'low', 'high', 'of', 'end'], show);
    recordings.onMade(show);
}

function under({ ms, hz }) {
    const { from, to, low, high, utc } = model.get();
    const level = waterfall.picture()?.levelAt(ms, hz) ?? NaN;
    const step = (to - from) / 1000;
    const words = Number.isNaN(level) ? 'not measured' : text.level(level, model.spectrum()?.unit || 'dB');
    return `${text.moment(ms, utc, step >= 1000 ? 1000 : 1)}   ${text.frequencyTo(hz, (high - low) / 1000)}   ${words}`;
}

function visible() {
    const { recording, from, to, low, high } = model.get();
    if (recording === null) {
        return '';
    }
    const making = recording.made < 1 ? `Overview ${Math.floor(recording.made * 100)} % made · ` : '';
    const unknown = recording.timesKnown === false ? 'Times are missing · ' : '';
    return `${making}${unknown}${text.duration(to - from)} × ${text.frequency(high - low)}`;
}
