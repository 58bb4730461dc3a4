// The terminal of one session.
import { FitAddon } from "./fit.js";
import { FrameReader, framesOfBytes, framesOfText } from "./frames.js";
import { watchFingers } from "./gestures.js";
import { Terminal } from "./xterm.js";

const reportAfter = 64 * 1024; // bytes that are shown until the bridge is told so
const smallestLetters = 6; // pixels
const greatestLetters = 40;
export const usualLetters = 13;

const themes = {
    light: {
        background: "#ffffff", foreground: "#1b1c1e", cursor: "#1b1c1e", selectionBackground: "#b3d1ff",
        black: "#1b1c1e", red: "#b3261e", green: "#1e6b2e", yellow: "#7a5500", blue: "#1f5fbf",
        magenta: "#8a2f8f", cyan: "#0b6670", white: "#6b6e73", brightBlack: "#5b5e63", brightRed: "#c5221f",
        brightGreen: "#137333", brightYellow: "#8a5a00", brightBlue: "#1967d2", brightMagenta: "#9334a6",
        brightCyan: "#00707c", brightWhite: "#3c4043",
    },
    dark: {
        background: "#101113", foreground: "#e8e9ea", cursor: "#e8e9ea", selectionBackground: "#3b5b8c",
    },
};

/** Returns how xterm.js is to show a session. */
export function optionsFor(letters, isDark) {
    return {
        fontSize: letters,
        fontFamily: "ui-monospace, SFMono-Regular, Menlo, 'DejaVu Sans Mono', monospace",
        scrollback: 10000,
        minimumContrastRatio: 4.5,
        screenReaderMode: true,
        macOptionIsMeta: true,
        theme: isDark ? themes.dark : themes.light,
    };
}

// What a terminal answers to a program's question, or says of its focus, comes the same way as what
// a person types.
const answer = /^\x1b(\[[?>=]?[\d;]*[$]?[cnRtyu]|\[[IO]$|[P\]_])/;

export class TerminalView {
    #terminal;
    #fit = new FitAddon();
    #container;
    #services;
    #reader = null;
    #received = 0; // bytes of the stream, frames' headers included
    #reported = 0;
    #follows = null; // the size of the session while another viewer decides it
    #letters = Number(localStorage.getItem("letters")) || usualLetters;
    #lettersBefore = usualLetters;
    #selectionStart = null;
    #unscrolled = 0; // lines, less than one, that a finger has moved since

    /**
     * `services`: `type(text)`, `answer(frames)`, `resize(cols, rows)`, `shown(bytes)`, `ended(code)`,
     * and `selected(text)` with "" when nothing is selected any more.
     */
    constructor(container, services) {
        this.#container = container;
        this.#services = services;
        const scheme = matchMedia("(prefers-color-scheme: dark)");
        this.#terminal = new Terminal(optionsFor(this.#letters, scheme.matches));
        this.#terminal.loadAddon(this.#fit);
        scheme.addEventListener("change", () => this.#colour(scheme.matches));
        this.#colour(scheme.matches);
        this.#terminal.onData(
            (text) => (answer.test(text) ? services.answer(framesOfText(text)) : services.type(text)));
        this.#terminal.onBinary((bytes) => services.answer(framesOfBytes(bytes)));
        this.#terminal.onSelectionChange(() => services.selected(this.#terminal.getSelection()));
    }

    /** Puts the terminal into its container, which must be visible. */
    open() {
        if (this.#terminal.element)
            return;
        this.#terminal.open(this.#container);
        new ResizeObserver(() => this.layOut()).observe(this.#container);
        this.#takeDictation(this.#terminal.textarea);
        watchFingers(this.#container, {
            scroll: (pixels, x, y) => this.#scroll(pixels, x, y),
            tap: () => this.#terminal.focus(),
            beginZoom: () => (this.#lettersBefore = this.#letters),
            zoom: (factor) => this.#zoom(this.#lettersBefore * factor),
            beginSelection: (x, y) => this.#select(x, y, true),
            extendSelection: (x, y) => this.#select(x, y, false),
            endSelection: () => {},
        });
    }

    /** In its mode for screen readers xterm.js leaves out a text that comes without a key. */
    #takeDictation(field) {
        let isKeyDown = false;
        field.addEventListener("keydown", () => (isKeyDown = true));
        field.addEventListener("keyup", () => (isKeyDown = false));
        field.addEventListener("input", (event) => {
            if (event.inputType === "insertText" && event.data && !event.isComposing && !isKeyDown)
                this.#services.type(event.data);
        });
    }

    focus() {
        this.#terminal.focus();
    }

    get size() {
        return { cols: this.#terminal.cols, rows: this.#terminal.rows };
    }

    get usesApplicationKeys() {
        return this.#terminal.modes.applicationCursorKeysMode;
    }

    /** Begins to show a session from its replay on. */
    begin() {
        this.#received = 0;
        this.#reported = 0;
        this.#terminal.reset();
        this.#reader = new FrameReader(
            (bytes) => this.#terminal.write(bytes),
            (code) => this.#terminal.write("", () => this.#services.ended(code)));
    }

    read(bytes) {
        this.#received += bytes.length;
        const received = this.#received;
        const reader = this.#reader;
        reader.read(bytes);
        // Called when everything before it is on the screen.
        this.#terminal.write("", () => {
            if (this.#reader !== reader || received - this.#reported < reportAfter)
                return;
            this.#reported = received;
            this.#services.shown(received);
        });
    }

    /** Pastes a text as the program wants it, in brackets or not. */
    paste(text) {
        this.#terminal.paste(text);
    }

    /** Has this size, which another viewer has decided; the letters become as small as it takes. */
    follow(size) {
        this.#follows = size;
        this.layOut();
    }

    /** Decides the size of the session by the room on this screen. */
    decide() {
        this.#follows = null;
        this.layOut();
        this.#services.resize(this.#terminal.cols, this.#terminal.rows);
    }

    get isFollowing() {
        return this.#follows !== null;
    }

    layOut() {
        if (!this.#terminal.element || this.#container.offsetHeight === 0)
            return;
        this.#terminal.options.fontSize = this.#letters;
        const room = this.#fit.proposeDimensions();
        if (!room || Number.isNaN(room.cols))
            return;
        if (this.#follows)
            return this.#shrinkTo(this.#follows, room);
        const cols = Math.min(Math.max(room.cols, 2), 1000);
        const rows = Math.min(Math.max(room.rows, 1), 500);
        if (cols === this.#terminal.cols && rows === this.#terminal.rows)
            return;
        this.#terminal.resize(cols, rows);
        this.#services.resize(cols, rows);
    }

    #shrinkTo(size, room) {
        const scale = Math.min(1, room.cols / size.cols, room.rows / size.rows);
        this.#terminal.options.fontSize = Math.max(smallestLetters / 2, Math.floor(this.#letters * scale * 2) / 2);
        if (size.cols !== this.#terminal.cols || size.rows !== this.#terminal.rows)
            this.#terminal.resize(size.cols, size.rows);
    }

    #colour(isDark) {
        const theme = isDark ? themes.dark : themes.light;
        this.#terminal.options.theme = theme;
        this.#container.style.setProperty("--terminal-ground", theme.background);
    }

    #zoom(letters) {
        this.#letters = Math.round(Math.min(Math.max(letters, smallestLetters), greatestLetters));
        localStorage.setItem("letters", this.#letters);
        this.layOut();
    }

    /** Scrolls through what is kept, or as a wheel would where the program draws the whole screen or has the mouse. */
    #scroll(pixels, x, y) {
        const screen = this.#terminal.element.querySelector(".xterm-screen");
        if (this.#terminal.buffer.active.type === "normal" && this.#terminal.modes.mouseTrackingMode === "none")
            return this.#scrollLines(pixels / (screen.offsetHeight / this.#terminal.rows));
        screen.dispatchEvent(new WheelEvent("wheel", {
            deltaY: pixels, deltaMode: WheelEvent.DOM_DELTA_PIXEL, clientX: x, clientY: y,
            bubbles: true, cancelable: true,
        }));
    }

    #scrollLines(lines) {
        this.#unscrolled += lines;
        const whole = Math.trunc(this.#unscrolled);
        this.#unscrolled -= whole;
        this.#terminal.scrollLines(whole);
    }

    #select(x, y, isStart) {
        const box = this.#terminal.element.querySelector(".xterm-screen").getBoundingClientRect();
        const { cols, rows, buffer } = this.#terminal;
        const within = (value, most) => Math.min(Math.max(Math.floor(value), 0), most - 1);
        const at = within((y - box.top) / (box.height / rows), rows) * cols
            + within((x - box.left) / (box.width / cols), cols) + buffer.active.viewportY * cols;
        if (isStart)
            this.#selectionStart = at;
        const first = Math.min(at, this.#selectionStart);
        this.#terminal.select(first % cols, Math.floor(first / cols), Math.abs(at - this.#selectionStart) + 1);
    }

    get selection() {
        return this.#terminal.getSelection();
    }

    clearSelection() {
        this.#terminal.clearSelection();
    }
}
