// The panel map.

/** Fills its container. */
export function create(container, model, server) {
}
