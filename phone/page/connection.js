// The connection to the bridge, which goes away and comes back. What is sent while it is away is
// not sent at all, and the caller is told so.

const askAfter = 2000; // milliseconds from an answer to the next question, while the page is visible
const patience = 2900; // milliseconds without an answer until the connection counts as lost
const retries = [0, 250, 500, 1000, 2000]; // milliseconds; the last one again and again
const revoked = 4001; // the close code for a device that is let in no more

export class Connection {
    #services;
    #socket = null;
    #isOpen = false;
    #isVisible = true;
    #failures = 0;
    #timer = null; // of the next question or the next attempt
    #isAsking = false; // a question has no answer yet

    /**
     * `services`: `open()` returns a new WebSocket; `after(milliseconds, work)` returns a function
     * that cancels; `onOpen()`, `onLost()`, `onEvent(event)`, `onFrames(bytes)`,
     * and `onRefused()` for a device that is not let in; `isLetIn()` promises whether it is.
     * `hiddenPause()` returns the milliseconds between two questions of a hidden page, or null.
     */
    constructor(services) {
        this.#services = services;
    }

    get isOpen() {
        return this.#isOpen;
    }

    /** Connects, or asks at once whether the connection still stands. */
    wake() {
        this.#isVisible = true;
        if (this.#isOpen) {
            this.#ask();
        } else if (this.#socket === null) {
            this.#failures = 0;
            this.#connect();
        }
    }

    /** Asks only as often as a hidden page needs until `wake`, or not at all. */
    sleep() {
        this.#isVisible = false;
        this.#plan(this.#isOpen ? this.#pause : null, () => this.#ask());
    }

    /** Drops a connection that the browser knows to be gone, and connects anew. */
    drop() {
        this.#lose();
    }

    /** Makes a call. Returns false, and sends nothing, while the connection is away. */
    call(call) {
        return this.#send(JSON.stringify(call));
    }

    /** Sends frames; likewise. */
    sendFrames(frames) {
        return this.#isOpen && frames.every((frame) => this.#send(frame));
    }

    #send(content) {
        if (!this.#isOpen)
            return false;
        this.#socket.send(content);
        return true;
    }

    #connect() {
        this.#plan(null);
        const socket = this.#services.open();
        this.#socket = socket;
        socket.binaryType = "arraybuffer";
        const ifCurrent = (work) => (event) => this.#socket === socket && work(event);
        socket.onopen = ifCurrent(() => {
            this.#isOpen = true;
            this.#failures = 0;
            this.#services.onOpen();
            this.#ask();
        });
        socket.onmessage = ifCurrent(({ data }) => {
            this.#answered();
            if (typeof data === "string")
                this.#services.onEvent(JSON.parse(data));
            else
                this.#services.onFrames(new Uint8Array(data));
        });
        socket.onclose = ifCurrent(({ code }) => this.#closed(code));
        this.#plan(patience, () => this.#lose());
    }

    async #closed(code) {
        const wasOpen = this.#isOpen;
        this.#forget();
        if (wasOpen)
            this.#services.onLost();
        // A browser does not tell why a connection could not be opened.
        const mayTry = code !== revoked && (wasOpen || (await this.#services.isLetIn().catch(() => true)));
        if (!mayTry)
            return this.#services.onRefused();
        if (this.#socket === null)
            this.#retry();
    }

    #ask() {
        this.#isAsking = true;
        this.call({ call: "list" });
        this.#plan(patience, () => this.#lose());
    }

    get #pause() {
        return this.#isVisible ? askAfter : this.#services.hiddenPause();
    }

    /** Whatever comes answers the question, since it shows that the connection stands. */
    #answered() {
        if (!this.#isAsking)
            return;
        this.#isAsking = false;
        this.#plan(this.#pause, () => this.#ask());
    }

    #lose() {
        const wasOpen = this.#isOpen;
        const socket = this.#socket;
        this.#forget();
        socket?.close();
        if (wasOpen)
            this.#services.onLost();
        this.#retry();
    }

    #forget() {
        this.#plan(null);
        this.#socket = null;
        this.#isOpen = false;
        this.#isAsking = false;
    }

    #retry() {
        const pause = retries[Math.min(this.#failures++, retries.length - 1)];
        const hidden = this.#services.hiddenPause();
        if (this.#isVisible || hidden !== null)
            this.#plan(this.#isVisible ? pause : hidden, () => this.#connect());
    }

    #plan(milliseconds, work) {
        this.#timer?.();
        this.#timer = milliseconds === null ? null : this.#services.after(milliseconds, work);
    }
}
