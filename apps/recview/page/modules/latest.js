// Work that is asked for faster than it is done: one at a time, and then once more for the newest.

/**
 * Gives a function that starts the work, or has it done again when it runs already.
 * @param {() => Promise<void>} work @param {(error: Error) => void} failed @param {number} [rest] ms that it waits for more changes, and leaves the server to what is more urgent
 */
export function latest(work, failed, rest = 0) {
    let running = false;
    let again = false;
    const run = async () => {
        if (running) {
            again = true;
            return;
        }
        running = true;
        if (rest > 0) {
            await new Promise((done) => setTimeout(done, rest));
        }
        again = false;
        try {
            await work();
        } catch (error) {
            failed(error);
        }
        running = false;
        if (again) {
            run();
        }
    };
    return run;
}

const unfinishedMs = 400;

/** Has it asked again soon when the overview that an answer was made of is not complete yet. */
export function askAgain({ made }, ask) {
    if (made < 1) {
        setTimeout(ask, unfinishedMs);
    }
}
