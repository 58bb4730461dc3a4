// The list of sessions.
import { attentionText } from "./notify.js";

const units = [[86400, "d"], [3600, "h"], [60, "min"]];

/** Returns how long ago a time is, in words; times are seconds since 1970. */
export function ago(since, now) {
    const seconds = Math.max(0, now - since);
    const unit = units.find(([length]) => seconds >= length);
    return unit ? `${Math.floor(seconds / unit[0])} ${unit[1]}` : "less than a minute";
}

/** Returns what is worth knowing about a session, in one line. */
export function factsOf(session, now) {
    const program = session.program.split("/").at(-1);
    const facts = [program, session.folder];
    if (session.exitCode !== undefined)
        facts.push(`ended with status ${session.exitCode}`);
    else {
        facts.push(`for ${ago(session.since, now)}`);
        facts.push(session.viewers === 0 ? "no viewer"
            : session.viewers === 1 ? "one viewer" : `${session.viewers} viewers`);
    }
    return facts.join(" · ");
}

function asks(session) {
    return session.attentionSince !== undefined && session.exitCode === undefined;
}

/** Returns the sessions that ask first, and those that have ended last. */
export function inOrder(sessions) {
    const rank = (session) => (asks(session) ? 0 : session.exitCode === undefined ? 1 : 2);
    return [...sessions].sort((one, other) => rank(one) - rank(other));
}

function element(name, className, text) {
    const made = document.createElement(name);
    made.className = className;
    made.textContent = text;
    return made;
}

export class SessionList {
    #list;
    #empty;
    #actions;
    #rows = new Map(); // by id

    /** `actions`: `open(session)`, `end(session)`, and `mayEnd()`. */
    constructor(list, empty, actions) {
        this.#list = list;
        this.#empty = empty;
        this.#actions = actions;
    }

    /** Shows the sessions, those that ask for a person first. A row keeps its elements, and so the focus. */
    show(sessions, now) {
        const ids = new Set(sessions.map((session) => session.id));
        for (const [id, row] of this.#rows) {
            if (!ids.has(id)) {
                row.item.remove();
                this.#rows.delete(id);
            }
        }
        let before = null;
        for (const session of inOrder(sessions)) {
            const row = this.#rows.get(session.id) ?? this.#add(session.id);
            row.session = session;
            row.name.textContent = session.name;
            row.facts.textContent = factsOf(session, now);
            row.attention.textContent = asks(session) ? attentionText(session) : "";
            row.item.classList.toggle("attention", asks(session));
            const next = before ? before.nextSibling : this.#list.firstChild;
            if (row.item !== next)
                this.#list.insertBefore(row.item, next);
            before = row.item;
            row.end.hidden = session.exitCode !== undefined || !this.#actions.mayEnd();
            row.end.setAttribute("aria-label", `End ${session.name}`);
        }
        this.#empty.hidden = sessions.length > 0;
    }

    #add(id) {
        const item = document.createElement("li");
        const open = element("button", "open", "");
        const name = element("span", "name", "");
        const attention = element("span", "attention-text", "");
        const facts = element("span", "facts", "");
        const end = element("button", "danger", "End");
        const row = { item, name, attention, facts, end, session: null };
        open.type = end.type = "button";
        open.append(name, attention, facts);
        open.addEventListener("click", () => this.#actions.open(row.session));
        end.addEventListener("click", () => this.#actions.end(row.session));
        item.append(open, end);
        this.#rows.set(id, row);
        return row;
    }
}
