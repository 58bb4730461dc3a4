// The bar of keys that a phone's keyboard lacks.

// The label, its name for a screen reader, and what is typed; a pair is for normal and application
// cursor keys.
const keys = [
    ["Esc", "Esc", "\x1b"],
    ["Tab", "Tab", "\t"],
    ["Ctrl", "Ctrl", null],
    ["Alt", "Alt", null],
    ["←", "Left", ["\x1b[D", "\x1bOD"]],
    ["↓", "Down", ["\x1b[B", "\x1bOB"]],
    ["↑", "Up", ["\x1b[A", "\x1bOA"]],
    ["→", "Right", ["\x1b[C", "\x1bOC"]],
    ["^C", "Control C", "\x03"],
    ["^D", "Control D", "\x04"],
    ["^Z", "Control Z", "\x1a"],
    ["|", "Pipe", "|"],
    ["/", "Slash", "/"],
    ["~", "Tilde", "~"],
    ["Home", "Home", ["\x1b[H", "\x1bOH"]],
    ["End", "End", ["\x1b[F", "\x1bOF"]],
    ["PgUp", "PgUp", "\x1b[5~"],
    ["PgDn", "PgDn", "\x1b[6~"],
];

const repeatDelay = 400; // milliseconds
const repeatPause = 60; // milliseconds

/** Control and Alt on the bar: a tap is for the next key, a second tap stays, a third one ends it. */
export class Latch {
    state = "off"; // or "once", "locked"

    tap() {
        this.state = { off: "once", once: "locked", locked: "off" }[this.state];
    }

    /** Tells whether the latch is on, and releases it if it was for one key. */
    take() {
        const isOn = this.state !== "off";
        if (this.state === "once")
            this.state = "off";
        return isOn;
    }
}

/** Returns what a terminal sends for a key with Control; the key itself if there is no such thing. */
export function withControl(key) {
    if (key === " " || key === "2")
        return "\0";
    if (key === "?")
        return "\x7f";
    if (/^[a-zA-Z@[\\\]^_]$/.test(key))
        return String.fromCharCode(key.toUpperCase().charCodeAt(0) & 0x1f);
    return key;
}

/** Returns a cursor key, or a key like it, with modifiers: "ESC [ A" becomes "ESC [ 1 ; 5 A". */
function withModifiers(sequence, control, alt) {
    if (!control && !alt)
        return sequence;
    const modifier = 1 + (alt ? 2 : 0) + (control ? 4 : 0);
    const cursor = /^\x1b[[O]([A-H])$/.exec(sequence);
    if (cursor)
        return `\x1b[1;${modifier}${cursor[1]}`;
    const page = /^\x1b\[(\d)~$/.exec(sequence);
    return page ? `\x1b[${page[1]};${modifier}~` : sequence;
}

/** Returns what is typed for a key while Control and Alt of the bar are on or off. */
export function modified(key, control, alt) {
    if (key.startsWith("\x1b") && key.length > 1)
        return withModifiers(key, control, alt);
    if ([...key].length !== 1)
        return key;
    const plain = control ? withControl(key) : key;
    return alt ? `\x1b${plain}` : plain;
}

export class KeyBar {
    #control = new Latch();
    #alt = new Latch();
    #buttons = new Map();
    #services;

    /**
     * `services`: `type(text)`; `usesApplicationKeys()` as the program has asked for; and `paste()`,
     * for which a page needs an encrypted way, or one on the same computer.
     */
    constructor(bar, services) {
        this.#services = services;
        for (const [label, name, typed] of keys)
            bar.append(this.#button(label, name, typed));
        if (navigator.clipboard) {
            const button = this.#plainButton("Paste", "Paste");
            button.addEventListener("click", () => services.paste());
            bar.append(button);
        }
    }

    /** Returns what the keyboard's text means while a key of the bar is latched. */
    apply(text) {
        const control = this.#control.take();
        const alt = this.#alt.take();
        this.#show();
        return modified(text, control, alt);
    }

    #plainButton(label, name) {
        const button = document.createElement("button");
        button.type = "button";
        button.textContent = label;
        button.setAttribute("aria-label", name);
        // The terminal keeps the focus, and with it the phone its keyboard.
        button.addEventListener("mousedown", (event) => event.preventDefault());
        return button;
    }

    #button(label, name, typed) {
        const button = this.#plainButton(label, name);
        if (typed === null)
            this.#latches(button, label === "Ctrl" ? this.#control : this.#alt);
        else
            this.#repeats(button, typed);
        return button;
    }

    #latches(button, latch) {
        this.#buttons.set(button, latch);
        button.setAttribute("aria-pressed", "false");
        button.addEventListener("click", () => {
            latch.tap();
            this.#show();
        });
    }

    #repeats(button, typed) {
        let timer = null;
        let hasRepeated = false;
        const type = () => {
            const text = Array.isArray(typed) ? typed[this.#services.usesApplicationKeys() ? 1 : 0] : typed;
            this.#services.type(this.apply(text));
        };
        const again = () => {
            hasRepeated = true;
            type();
            timer = setTimeout(again, repeatPause);
        };
        const stop = () => clearTimeout(timer);
        button.addEventListener("pointerdown", () => {
            hasRepeated = false;
            clearTimeout(timer);
            timer = setTimeout(again, repeatDelay);
        });
        for (const end of ["pointerup", "pointercancel", "pointerleave"])
            button.addEventListener(end, stop);
        button.addEventListener("contextmenu", (event) => event.preventDefault());
        button.addEventListener("click", () => {
            stop();
            if (!hasRepeated)
                type();
            hasRepeated = false;
        });
    }

    #show() {
        for (const [button, latch] of this.#buttons) {
            button.setAttribute("aria-pressed", String(latch.state !== "off"));
            button.classList.toggle("locked", latch.state === "locked");
        }
    }
}
