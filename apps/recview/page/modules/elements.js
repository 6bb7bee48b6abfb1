// Parts of panels that have their text beside or in them.
import { element } from './dom.js';

/** A button that says in its text what it does. */
export function button(content, act, properties = {}) {
    const made = element('button', { type: 'button', ...properties }, content);
    made.addEventListener('click', act);
    return made;
}

/** A labelled list to choose one of; entries are [value, text]. */
export function choice(text, entries, changed) {
    const select = element('select', {}, entries.map(([value, words]) => element('option', { value }, words)));
    select.addEventListener('change', changed);
    const label = element('label', {}, `${text} `, select);
    return { label, select, get value() { return select.value; }, set value(value) { select.value = value; } };
}
