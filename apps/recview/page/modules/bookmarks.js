// The panel bookmarks.

/** Fills its container. */
export function create(container, model, server) {
}
