// Talks to the server: questions that a newer one of their kind overtakes, and events.
const running = new Map();

/** True for what a question throws that was overtaken: nothing to tell anybody. */
export function isOvertaken(error) {
    return error?.name === 'AbortError';
}

/** The address of a question; parameters that are null or undefined are left out. */
export function address(path, parameters = {}) {
    const given = Object.entries(parameters).filter(([, value]) => value !== null && value !== undefined);
    const query = new URLSearchParams(given.map(([name, value]) => [name, String(value)])).toString();
    return query === '' ? path : `${path}?${query}`;
}

/**
 * Asks for JSON. With a kind, an older question of this kind that still runs is given up.
 * Throws an Error with the server's sentence and its status.
 * @param {string} path @param {object} [parameters] @param {string} [kind] @returns {Promise<any>}
 */
export function json(path, parameters, kind) {
    return ask(address(path, parameters), {}, kind, async (answer) => there(await answer.json()));
}

/** What is not there yet, or never, is told as an error, too: of status 503 or 404. */
function there(content) {
    const sentence = content.again ?? content.nothing;
    if (sentence !== undefined) {
        throw Object.assign(new Error(sentence), { status: content.again === undefined ? 404 : 503 });
    }
    return content;
}

/** Sends JSON, gives the answer's. */
export function post(path, content) {
    const headers = { 'Content-Type': 'application/json' };
    return ask(path, { method: 'POST', headers, body: JSON.stringify(content) }, undefined, (answer) => answer.json());
}

/**
 * Asks for a grid of levels: {head, levels}, levels row by row from the highest frequency, NaN where nothing was measured.
 * @returns {Promise<{head: object, levels: Float32Array}>}
 */
export function view(parameters, kind) {
    return ask(address('/api/view', parameters), {}, kind, async (answer) => {
        const bytes = await answer.arrayBuffer();
        const length = new DataView(bytes).getUint32(0, true);
        const head = JSON.parse(new TextDecoder().decode(new Uint8Array(bytes, 4, length)));
        return { head, levels: new Float32Array(bytes, 4 + length, head.columns * head.rows) };
    });
}

/** Gives up the question of this kind, if one runs. */
export function giveUp(kind) {
    running.get(kind)?.abort();
    running.delete(kind);
}

async function ask(where, options, kind, read) {
    const control = new AbortController();
    if (kind !== undefined) {
        giveUp(kind);
        running.set(kind, control);
    }
    try {
        const answer = await fetch(where, { ...options, signal: control.signal });
        if (!answer.ok) {
            throw await problem(answer);
        }
        return await read(answer);
    } catch (error) {
        if (error instanceof TypeError) {
            throw Object.assign(new Error('The server does not answer.'), { status: 0 });
        }
        throw error;
    } finally {
        if (running.get(kind) === control) {
            running.delete(kind);
        }
    }
}

async function problem(answer) {
    const text = await answer.text();
    let sentence = `The server answered ${answer.status}.`;
    try {
        sentence = JSON.parse(text).error ?? sentence;
    } catch {
        // No JSON: the status says it.
    }
    return Object.assign(new Error(sentence), { status: answer.status });
}

/**
 * Listens for events from now on; a lost server is asked again after growing pauses.
 * @param {object} events callbacks of the server's events by their names, with their JSON
 * @param {() => void} lost the server does not answer @param {() => void} found it answers again
 */
export function listen(events, lost, found, pause = 500) {
    const source = new EventSource('/api/events');
    let wait = pause;
    source.onopen = () => {
        wait = 500;
        found();
    };
    source.onerror = () => {
        source.close();
        lost();
        setTimeout(() => listen(events, lost, found, Math.min(wait * 2, 15000)), wait);
    };
    for (const [name, callback] of Object.entries(events)) {
        source.addEventListener(name, (event) => callback(JSON.parse(event.data)));
    }
}
