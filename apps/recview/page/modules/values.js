// The panel values.

/** Fills its container. */
export function create(container, model, server) {
}
