// The panel waterfall.

/** Fills its container. */
export function create(container, model, server) {
}
