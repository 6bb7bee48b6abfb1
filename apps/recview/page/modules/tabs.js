// The panel tabs.

/** Fills its container. */
export function create(container, model, server) {
}
