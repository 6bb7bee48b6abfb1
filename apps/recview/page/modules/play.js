// The panel play.

/** Fills its container. */
export function create(container, model, server) {
}
