// The panel status.

/** Fills its container. */
export function create(container, model, server) {
}
