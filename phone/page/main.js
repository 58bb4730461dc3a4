// The page: who is let in, the list, one session, and the connection under them.
import { isLetIn, letIn } from "./admission.js";
import { Connection } from "./connection.js";
import { framesOfText, resizeFrame } from "./frames.js";
import { KeyBar } from "./keys.js";
import { SessionList } from "./list.js";
import { Notifier } from "./notify.js";
import { powerFacts, powerLabel, powerWhy } from "./power.js";
import { refusals, startCall } from "./start.js";
import { TerminalView } from "./terminal.js";

const $ = (id) => document.getElementById(id);
const views = ["admission", "list", "watch"];
const usualSize = { cols: 80, rows: 24 }; // of a session that is started from the list
const hiddenPause = 15000; // milliseconds between two looks at the sessions of a hidden page
const powerEvery = 30; // seconds between two questions for the power
const listsUntilFollowing = 2; // that show another size until the page believes it

let rights = "view";
let sessions = [];
let watched = null; // the session that is shown
let isWatching = false; // the bridge relays its frames
let hasEnded = false;
let powerAskedAt = 0; // seconds since 1970
let differing = 0; // lists in a row that show another size than this page's

const connection = new Connection({
    open: () => new WebSocket(`${location.protocol === "https:" ? "wss" : "ws"}://${location.host}/socket`),
    after(milliseconds, work) {
        const timer = setTimeout(work, milliseconds);
        return () => clearTimeout(timer);
    },
    isLetIn,
    hiddenPause: () => (notifier.isOn ? hiddenPause : null),
    onOpen() {
        askForPower();
        if (watched && !hasEnded)
            connection.call({ call: "watch", session: watched.id });
        else
            showState("");
    },
    onLost() {
        isWatching = false;
        showState("The computer does not answer");
    },
    onRefused: () => showAdmission("This browser is let in no more."),
    onEvent: (event) => events[event.event]?.(event),
    onFrames: (bytes) => isWatching && terminal.read(bytes),
});

const terminal = new TerminalView($("terminal"), {
    type: (text) => type(bar.apply(text)),
    answer: (frames) => mayType() && connection.sendFrames(frames),
    resize: (cols, rows) => mayType() && connection.sendFrames([resizeFrame(cols, rows)]),
    shown: (bytes) => connection.call({ call: "shown", bytes }),
    ended: (code) => {
        hasEnded = true;
        showState(`Ended with status ${code}`);
    },
    selected: (text) => ($("selection").hidden = text === ""),
});

const bar = new KeyBar($("keys"), {
    type,
    usesApplicationKeys: () => terminal.usesApplicationKeys,
    async paste() {
        terminal.paste(await navigator.clipboard.readText());
        terminal.focus();
    },
});

const notifier = new Notifier($("notify"));

const list = new SessionList($("sessions"), $("no-sessions"), {
    open: watch,
    end: askToEnd,
    mayEnd: () => rights === "use",
});

const events = {
    hello(event) {
        rights = event.rights;
        $("start").hidden = $("keys").hidden = rights !== "use";
    },
    sessions(event) {
        sessions = event.sessions;
        list.show(sessions, Date.now() / 1000);
        $("list").setAttribute("aria-busy", "false");
        notifier.show(sessions);
        followSize();
        if (Date.now() / 1000 - powerAskedAt >= powerEvery)
            askForPower();
    },
    power({ power }) {
        $("power").hidden = false;
        $("power").textContent = powerLabel(power);
        $("power-facts").textContent = powerFacts(power);
        $("power-why").textContent = powerWhy(power);
        $("awake").setAttribute("aria-checked", String(power.keeps));
        $("awake").disabled = rights !== "use" || !power.hasDaemon;
    },
    watching() {
        isWatching = true;
        showState("");
        terminal.begin();
        if (rights === "use" && !terminal.isFollowing)
            terminal.decide();
        else
            followNow();
    },
    gone() {
        isWatching = false;
        if (!hasEnded)
            showState("The session host has closed the session");
    },
    started(event) {
        $("start-dialog").close();
        watch({ id: event.session, name: event.session, ...usualSize });
    },
    refused(event) {
        if (event.call === "power")
            return; // this computer's power can't be reached
        const reason = refusals[event.reason] ?? `Refused: ${event.reason}`;
        if (event.call === "start")
            $("start-refusal").textContent = reason;
        else if (event.call !== "list" || event.reason !== "unreachable")
            showState(reason);
        else
            events.sessions({ sessions: [] });
    },
};

function askForPower() {
    powerAskedAt = Date.now() / 1000;
    connection.call({ call: "power" });
}

function mayType() {
    return rights === "use" && isWatching;
}

/** Types, or says that it was not sent: what is typed into the void is never sent later. */
function type(text) {
    if (rights !== "use")
        return;
    if (terminal.isFollowing)
        decideSize();
    const wasSent = isWatching && connection.sendFrames(framesOfText(text));
    const unsent = $("unsent");
    if (wasSent)
        unsent.hidden = true;
    else if (!hasEnded) {
        const before = unsent.hidden ? "Not sent: " : unsent.textContent;
        unsent.textContent = before + text.replace(/[\x00-\x1f\x7f]/g, "·");
        unsent.hidden = false;
    }
}

function decideSize() {
    differing = 0;
    $("give-back").hidden = false;
    terminal.decide();
}

/** Leaves and comes back without a size, so that the viewer before this one decides it again. */
function giveSizeBack() {
    $("give-back").hidden = true;
    terminal.follow(sizeOf(watched.id) ?? terminal.size);
    connection.call({ call: "watch", session: watched.id });
    terminal.focus();
}

function sizeOf(id) {
    const session = sessions.find((each) => each.id === id);
    return session && { cols: session.cols, rows: session.rows };
}

function followNow() {
    const size = sizeOf(watched.id);
    if (size)
        terminal.follow(size);
}

/** Takes over the size that another viewer has given the session since. */
function followSize() {
    const size = watched && isWatching ? sizeOf(watched.id) : null;
    if (!size)
        return;
    const isSame = size.cols === terminal.size.cols && size.rows === terminal.size.rows;
    differing = isSame ? 0 : differing + 1;
    if (terminal.isFollowing ? !isSame : differing >= listsUntilFollowing) {
        $("give-back").hidden = true;
        terminal.follow(size);
    }
    const known = sessions.find((each) => each.id === watched.id);
    $("title").textContent = known.name;
}

function show(view) {
    for (const each of views)
        $(each).hidden = each !== view;
    $("back").hidden = view !== "watch";
    $("give-back").hidden = view !== "watch" || terminal.isFollowing || rights !== "use";
    $("unsent").hidden = true;
    if (view !== "watch")
        $("title").textContent = "Sessions";
}

function showState(text) {
    $("state").textContent = text;
    $("state").classList.toggle("lost", text !== "" && !connection.isOpen);
}

function showAdmission(reason) {
    connection.sleep();
    $("admission-reason").textContent = reason;
    showState("");
    show("admission");
}

function watch(session) {
    watched = session;
    hasEnded = false;
    isWatching = false;
    terminal.follow(null);
    $("title").textContent = session.name;
    show("watch");
    showState("");
    terminal.open();
    history.pushState({ session: session.id }, "");
    connection.call({ call: "watch", session: session.id });
    terminal.focus();
}

function leave() {
    if (!watched)
        return;
    watched = null;
    isWatching = false;
    connection.call({ call: "leave" });
    connection.call({ call: "list" });
    showState("");
    show("list");
}

function askToStart() {
    $("start-refusal").textContent = "";
    $("start-dialog").showModal();
}

function start(event) {
    event.preventDefault();
    const fields = Object.fromEntries(new FormData(event.target));
    $("start-refusal").textContent = "";
    if (!connection.call(startCall(fields, usualSize)))
        $("start-refusal").textContent = "The computer does not answer.";
}

function askToEnd(session) {
    $("end-name").textContent = session.name;
    $("end-dialog").onclose = () => {
        if ($("end-dialog").returnValue === "end")
            connection.call({ call: "end", session: session.id });
    };
    $("end-dialog").returnValue = "";
    $("end-dialog").showModal();
}

/** The page is as high as what the on-screen keyboard leaves. */
function followKeyboard() {
    const viewport = window.visualViewport;
    const change = () => {
        document.body.style.setProperty("--visible-height", `${viewport.height}px`);
        window.scrollTo(0, 0);
    };
    viewport.addEventListener("resize", change);
    viewport.addEventListener("scroll", change);
    change();
}

function wakeOrSleep() {
    if ($("admission").hidden)
        document.visibilityState === "visible" ? connection.wake() : connection.sleep();
}

$("back").addEventListener("click", () => history.back());
window.addEventListener("popstate", leave);
$("give-back").addEventListener("click", giveSizeBack);
$("power").addEventListener("click", () => {
    askForPower();
    $("power-dialog").showModal();
});
$("awake").addEventListener("click", () =>
    connection.call({ call: "awake", on: $("awake").getAttribute("aria-checked") !== "true" }));
$("start").addEventListener("click", askToStart);
$("start-cancel").addEventListener("click", () => $("start-dialog").close());
$("start-dialog").querySelector("form").addEventListener("submit", start);
$("unsent").addEventListener("click", () => ($("unsent").hidden = true));
$("copy").addEventListener("click", async () => {
    await navigator.clipboard.writeText(terminal.selection);
    terminal.clearSelection();
    terminal.focus();
});
document.addEventListener("visibilitychange", wakeOrSleep);
window.addEventListener("online", () => connection.drop());
followKeyboard();

const refusal = await letIn().catch(() => "The computer does not answer. Load the page again.");
if (refusal === undefined) {
    show("list");
    wakeOrSleep();
} else {
    showAdmission(refusal);
}
