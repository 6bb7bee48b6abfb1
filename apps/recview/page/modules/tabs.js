// State, answers, map and polar view in one place: answers only where there are spectra, map and polar view where there are bearings.
import * as model from './model.js';

const names = ['state', 'answers', 'map', 'polar'];

/** Fills its container. */
export function create(container) {
    const tabs = [...container.querySelectorAll('[role=tab]')];
    tabs.forEach((tab, index) => {
        tab.addEventListener('click', () => model.set({ panel: names[index] }));
        tab.addEventListener('keydown', (event) => {
            const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
            const open = tabs.filter((one) => !one.hidden);
            if (by !== undefined) {
                event.preventDefault();
                event.stopPropagation();
                const next = open[(open.indexOf(tab) + by + open.length) % open.length];
                next.focus();
                next.click();
            }
        });
    });
    const show = () => {
        const { panel, recording } = model.get();
        const has = { state: true, answers: recording?.spectra.length > 0, map: recording?.hasBearings, polar: recording?.hasBearings };
        const chosen = has[panel] || recording === null ? panel : 'state';
        tabs.forEach((tab, index) => {
            tab.hidden = !has[names[index]];
            tab.setAttribute('aria-selected', String(names[index] === chosen));
            tab.tabIndex = names[index] === chosen ? 0 : -1;
            document.getElementById(names[index]).hidden = names[index] !== chosen;
        });
    };
    model.on(['panel', 'recording'], show);
    show();
}
