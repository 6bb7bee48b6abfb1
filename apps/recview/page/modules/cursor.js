// The panel cursor.

/** Fills its container. */
export function create(container, model, server) {
}
