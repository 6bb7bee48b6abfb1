// The panel toolbar.

/** Fills its container. */
export function create(container, model, server) {
}
