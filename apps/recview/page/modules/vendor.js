// The libraries that come with the page and are no modules: each is loaded when the first panel needs it.
const loading = new Map();

/** Loads a script of the page's libraries once; fails with a sentence. */
export function script(name) {
    if (!loading.has(name)) {
        loading.set(name, new Promise((resolve, reject) => {
            const made = document.createElement('script');
            made.src = `/vendor/${name}`;
            made.onload = resolve;
            made.onerror = () => reject(new Error(`The page's library ${name} could not be loaded.`));
            document.head.append(made);
        }));
    }
    return loading.get(name);
}
