// The panel polar.

/** Fills its container. */
export function create(container, model, server) {
}
