// The panel state.

/** Fills its container. */
export function create(container, model, server) {
}
