// The panel channel.

/** Fills its container. */
export function create(container, model, server) {
}
