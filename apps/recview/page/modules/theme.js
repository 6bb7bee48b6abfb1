// Dark and light: as the system says, or as the user set it.
import * as model from './model.js';

const system = window.matchMedia('(prefers-color-scheme: light)');
const listeners = [];

/** True when the page is dark now. */
export function isDark() {
    return model.get().dark ?? !system.matches;
}

/** A colour of the style sheet, by its variable's name without the dashes. */
export function colour(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(`--${name}`).trim();
}

/** Calls back when the colours are others: what is drawn on canvases has to be drawn again. */
export function onChange(callback) {
    listeners.push(callback);
}

/** Takes the state's colours over, now and whenever they change. */
export function start() {
    const apply = () => {
        document.documentElement.dataset.theme = isDark() ? 'dark' : 'light';
        listeners.forEach((callback) => callback());
    };
    system.addEventListener('change', apply);
    model.on('dark', apply);
    apply();
}
