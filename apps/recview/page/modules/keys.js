// Keys for everything.

/** Listens for keys. */
export function start() {
}
