// The figures at the cursor: time, frequency, level as recorded, and the sweep they are of.
import * as model from './model.js';
import * as sweep from './sweep.js';
import * as text from './text.js';
import { element, button } from './dom.js';

/** Fills its container. */
export function create(container) {
    const time = element('output', { id: 'cursor-time' });
    const frequency = element('output', { id: 'cursor-hz' });
    const level = element('output', { id: 'cursor-level' });
    const source = element('p', { id: 'cursor-source' });
    const steps = element('span', { className: 'steps' },
        button('‹', () => sweep.step(-1), { title: 'Sweep before (,)' }), button('›', () => sweep.step(1), { title: 'Sweep after (.)' }),
        button('×', () => model.set({ at: null, hz: null }), { title: 'No cursor (Esc)' }));
    const figure = (label, output) => element('div', { className: 'figure' }, element('label', { textContent: label, htmlFor: output.id }), output);
    container.append(element('div', { className: 'figures' }, figure('Time', time), figure('Frequency', frequency), figure('Level', level), steps), source);

    const show = () => {
        const state = model.get();
        const at = sweep.moment();
        const now = sweep.get();
        const channel = sweep.channelAt(state.hz);
        time.textContent = at === null ? '–' : text.moment(at, state.utc);
        frequency.textContent = text.frequency(channel?.hz ?? state.hz);
        level.textContent = channel === null ? '–' : figureOf(channel.level);
        source.textContent = at === null ? 'Click in the waterfall to read it.' : now === null ? 'Nothing was measured at this time.'
            : `Sweep of ${text.clock(now.ms, state.utc)}, ${(now.timeMs / 1000).toFixed(3)} s in ${now.file}`;
    };
    sweep.on(show);
    model.on(['at', 'hz', 'utc', 'recording', 'type', 'end', 'follow'], show);
    sweep.start();
    show();
}

/** As it is recorded: to hundredths. */
function figureOf(level) {
    const unit = model.spectrum()?.unit || 'dB';
    return level === null ? 'not measured' : `${text.minus(level)} ${unit}`;
}
