// The libraries that come with the page and are no modules: each is loaded when the first panel needs it.
import { element } from './dom.js';

const loading = new Map();

/** Loads a script of the page's libraries once; fails with a sentence. */
export function script(name) {
    if (!loading.has(name)) {
        loading.set(name, new Promise((resolve, reject) => {
            const onerror = () => reject(new Error(`The page's library ${name} could not be loaded.`));
            document.head.append(element('script', { src: `/vendor/${name}`, onload: resolve, onerror }));
        }));
    }
    return loading.get(name);
}
