// The panel spectrum.

/** Fills its container. */
export function create(container, model, server) {
}
