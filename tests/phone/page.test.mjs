// What the page's modules decide without a browser.
import assert from "node:assert/strict";
import { test } from "node:test";
import { deviceName } from "../../phone/page/admission.js";
import { Connection } from "../../phone/page/connection.js";
import { FrameReader, dataFrames, framesOfBytes, framesOfText, resizeFrame } from "../../phone/page/frames.js";
import { Latch, modified } from "../../phone/page/keys.js";
import { ago, factsOf, inOrder } from "../../phone/page/list.js";
import { Notifier, attentionText, newlyAsking } from "../../phone/page/notify.js";
import { powerFacts, powerLabel, powerWhy } from "../../phone/page/power.js";
import { startCall, wordsOf } from "../../phone/page/start.js";

test("frames are read however they are cut", () => {
    const stream = new Uint8Array([
        5, 0, 0, 0, 4, 0, 0, 0x12, 0x67, 1, 0, 0, 0, 3, 97, 98, 99, 1, 0, 0, 0, 0, 1, 0, 0, 0, 1, 100,
        3, 0, 0, 0, 4, 0xff, 0xff, 0xff, 0xff,
    ]);
    for (let size = 1; size <= stream.length; ++size) {
        let text = "";
        const codes = [];
        const reader = new FrameReader(
            (bytes) => (text += new TextDecoder().decode(bytes)), (code) => codes.push([code, text]));
        for (let at = 0; at < stream.length; at += size)
            reader.read(stream.subarray(at, at + size));
        assert.deepEqual([text, codes], ["abcd", [[-1, "abcd"]]], `in pieces of ${size}`);
    }
    let length = 0;
    const [longest] = dataFrames(new Uint8Array(65536));
    new FrameReader((bytes) => (length += bytes.length)).read(longest);
    assert.equal(length, 65536);
});

test("what is typed goes into frames of at most 65536 bytes", () => {
    assert.deepEqual(dataFrames(new Uint8Array([108, 115])), [new Uint8Array([1, 0, 0, 0, 2, 108, 115])]);
    assert.deepEqual(dataFrames(new Uint8Array(65537)).map((frame) => frame.length), [65541, 6]);
    assert.deepEqual(dataFrames(new Uint8Array(0)), []);
    assert.deepEqual(framesOfText("\u00e9"), [new Uint8Array([1, 0, 0, 0, 2, 0xc3, 0xa9])]);
    assert.deepEqual(framesOfBytes("\u00e9"), [new Uint8Array([1, 0, 0, 0, 1, 0xe9])]);
    assert.deepEqual(resizeFrame(80, 300), new Uint8Array([2, 0, 0, 0, 4, 0, 80, 1, 44]));
});

test("keys mean what a terminal sends for them", () => {
    for (const [key, control, alt, typed] of [
        ["a", false, false, "a"], ["a", true, false, "\x01"], ["Z", true, false, "\x1a"],
        ["[", true, false, "\x1b"], [" ", true, false, "\0"], ["?", true, false, "\x7f"],
        ["1", true, false, "1"], ["é", true, false, "é"], ["x", false, true, "\x1bx"],
        ["c", true, true, "\x1b\x03"], ["\x1b", false, true, "\x1b\x1b"], ["\t", false, true, "\x1b\t"],
        ["\x1b[A", false, false, "\x1b[A"], ["\x1b[A", true, false, "\x1b[1;5A"],
        ["\x1bOC", false, true, "\x1b[1;3C"], ["\x1b[5~", true, true, "\x1b[5;7~"],
        ["two", true, true, "two"],
    ])
        assert.equal(modified(key, control, alt), typed, JSON.stringify([key, control, alt]));
});

test("a latch is for one key, or stays", () => {
    const latch = new Latch();
    const takes = () => [latch.take(), latch.take()];
    assert.deepEqual(takes(), [false, false]);
    latch.tap();
    assert.deepEqual(takes(), [true, false]);
    latch.tap();
    latch.tap();
    assert.deepEqual(takes(), [true, true]);
    latch.tap();
    assert.deepEqual(takes(), [false, false]);
});

test("a command line is split as a shell splits it", () => {
    for (const [line, words] of [
        ["claude --continue", ["claude", "--continue"]], ["  a\tb ", ["a", "b"]], ["", []],
        ["a 'b c' \"d 'e\"", ["a", "b c", "d 'e"]], ["a\\ b ''", ["a b", ""]],
        ["\"a\\\"b\" 'c\\d'", ['a"b', "c\\d"]], ["x'y'z", ["xyz"]], ["'open", ["open"]], ["end\\", ["end"]],
    ])
        assert.deepEqual(wordsOf(line), words, line);
    assert.deepEqual(startCall({ name: " a ", folder: "", program: "bash -l" }, { cols: 80, rows: 24 }),
        { call: "start", cols: 80, rows: 24, name: "a", words: ["bash", "-l"] });
});

test("the list tells in words", () => {
    const session = { name: "work", program: "/bin/bash", folder: "/home/me", since: 1000, viewers: 0 };
    assert.equal(factsOf(session, 1000 + 7300), "bash · /home/me · for 2 h · no viewer");
    assert.equal(factsOf({ ...session, viewers: 2 }, 1059), "bash · /home/me · for less than a minute · 2 viewers");
    assert.equal(factsOf({ ...session, exitCode: 0 }, 1059), "bash · /home/me · ended with status 0");
    assert.deepEqual([59, 60, 3599, 3600, 86400].map((age) => ago(0, age)),
        ["less than a minute", "1 min", "59 min", "1 h", "1 d"]);
    assert.equal(ago(10, 0), "less than a minute");
    const phone = "Mozilla/5.0 (iPhone; CPU iPhone OS 18_0 like Mac OS X) AppleWebKit/605 Version/18.0 Safari/604.1";
    assert.equal(deviceName(phone), "iPhone, Safari");
    assert.equal(deviceName(""), "browser");
});

test("a session that asks for a person comes first, and is told once", () => {
    const sessions = [
        { id: "a", exitCode: 0, attentionSince: 5 }, { id: "b" }, { id: "c", attentionSince: 7, notice: "Proceed?" },
        { id: "d", attentionSince: 3 },
    ];
    assert.deepEqual(inOrder(sessions).map(({ id }) => id), ["c", "d", "b", "a"]);
    assert.deepEqual(sessions.slice(2).map(attentionText), ["Proceed?", "rings"]);
    const known = new Map([["c", 7], ["d", 2]]);
    assert.deepEqual(newlyAsking(sessions, known).map(({ id }) => id), ["a", "d"]);
});

test("a session that asks again is notified again, and only while the page is not looked at", async () => {
    const notified = [];
    const worker = { showNotification: (name, { body }) => notified.push(`${name}: ${body}`) };
    const document = { visibilityState: "hidden" };
    const values = {
        isSecureContext: true, document, Notification: { permission: "granted" },
        window: { Notification: {} }, navigator: { serviceWorker: { register: async () => worker } },
    };
    for (const [name, value] of Object.entries(values))
        Object.defineProperty(globalThis, name, { value, configurable: true });
    const notifier = new Notifier({ addEventListener: () => {} });
    await new Promise(setImmediate);
    for (const [attentionSince, visibilityState] of [[1, "hidden"], [1, "hidden"], [2, "visible"], [2, "hidden"], [3, "hidden"]]) {
        document.visibilityState = visibilityState;
        notifier.show([{ id: "a", name: "agent", attentionSince, notice: `at ${attentionSince}` }, { id: "b", name: "other" }]);
    }
    assert.deepEqual(notified, ["agent: at 1", "agent: at 3"]);
});

test("the power is told in words", () => {
    const power = { battery: 80, mains: false, hasDaemon: true, keeps: false, isAwake: false };
    for (const [change, label, facts, why] of [
        [{}, "80 %", "Battery at 80 %, on battery power, may sleep.", /^$/],
        [{ keeps: true, isAwake: true, holder: "velmo-phone" }, "80 % · awake",
            "Battery at 80 %, on battery power, kept awake by velmo-phone.", /^$/],
        [{ battery: undefined, mains: true, hasDaemon: false }, "power", "On mains power, no power daemon answers.", /^$/],
        [{ keeps: true, why: "battery", whyAt: 0 }, "80 %", "Battery at 80 %, on battery power, may sleep.",
            /^Not kept awake since .*: the battery is below 20 %\. The switch asks again\.$/],
        [{ why: "no session", whyAt: 0 }, "80 %", "Battery at 80 %, on battery power, may sleep.",
            /^No longer kept awake since .*: no session runs any more\.$/],
        [{ why: "something new", whyAt: 0 }, "80 %", "Battery at 80 %, on battery power, may sleep.", /something new/],
    ]) {
        const changed = { ...power, ...change };
        assert.deepEqual([powerLabel(changed), powerFacts(changed)], [label, facts]);
        assert.match(powerWhy(changed), why);
    }
});

/** A connection with a clock and a network of its own. */
class World {
    now = 0;
    timers = [];
    sockets = [];
    told = [];
    isLetIn = true;
    hiddenPause = null;
    connection = new Connection({
        open: () => {
            const socket = { sent: [], send: (content) => socket.sent.push(content), close: () => (socket.isClosed = true) };
            this.sockets.push(socket);
            return socket;
        },
        after: (milliseconds, work) => {
            const timer = { due: this.now + milliseconds, work };
            this.timers.push(timer);
            return () => (this.timers = this.timers.filter((each) => each !== timer));
        },
        isLetIn: async () => this.isLetIn,
        hiddenPause: () => this.hiddenPause,
        onOpen: () => this.told.push("open"),
        onLost: () => this.told.push("lost"),
        onRefused: () => this.told.push("refused"),
        onEvent: (event) => this.told.push(event),
        onFrames: (bytes) => this.told.push(bytes.length),
    });

    get socket() {
        return this.sockets.at(-1);
    }

    async pass(milliseconds) {
        const end = this.now + milliseconds;
        for (;;) {
            await new Promise(setImmediate);
            const next = this.timers.filter(({ due }) => due <= end).sort((a, b) => a.due - b.due)[0];
            if (!next)
                break;
            this.timers = this.timers.filter((each) => each !== next);
            this.now = next.due;
            next.work();
        }
        this.now = end;
    }

    answer() {
        this.socket.onmessage({ data: '{"event":"sessions","sessions":[]}' });
    }
}

test("a connection asks every two seconds while the page is visible", async () => {
    const world = new World();
    world.connection.wake();
    world.socket.onopen();
    assert.deepEqual(world.told, ["open"]);
    for (let i = 0; i < 5; ++i) {
        world.answer();
        world.answer();
        await world.pass(2000);
    }
    assert.equal(world.socket.sent.length, 6);
    world.connection.sleep();
    world.answer();
    await world.pass(60_000);
    assert.equal(world.socket.sent.length, 6);
    assert.equal(world.timers.length, 0);
    world.connection.wake();
    assert.equal(world.socket.sent.length, 7);
    assert.equal(world.sockets.length, 1);
    world.answer();
    world.hiddenPause = 15_000;
    world.connection.sleep();
    await world.pass(15_000);
    assert.equal(world.socket.sent.length, 8);
    world.socket.onclose({ code: 1006 });
    await world.pass(15_000);
    assert.equal(world.sockets.length, 2);
});

test("silence is told within five seconds, and the connection is made anew", async () => {
    const world = new World();
    world.connection.wake();
    world.socket.onopen();
    world.answer();
    await world.pass(4899);
    assert.equal(world.connection.sendFrames([new Uint8Array(1)]), true);
    await world.pass(1);
    assert.equal(world.told.at(-1), "lost");
    assert.equal(world.sockets[0].isClosed, true);
    assert.equal(world.connection.call({ call: "list" }), false);
    assert.equal(world.connection.sendFrames([new Uint8Array(1)]), false);
    world.sockets[0].onmessage({ data: new ArrayBuffer(3) }); // too late
    assert.equal(world.told.at(-1), "lost");
    await world.pass(30_000);
    assert.ok(world.sockets.length > 5, "it tries again and again");
    while (world.socket.isClosed)
        await world.pass(100);
    world.socket.onopen();
    assert.equal(world.told.at(-1), "open");
    world.socket.onmessage({ data: new ArrayBuffer(3) });
    assert.equal(world.told.at(-1), 3);
});

test("a closed connection is made anew at once, unless the device is let in no more", async () => {
    const world = new World();
    world.connection.wake();
    world.socket.onopen();
    world.socket.onclose({ code: 1006 });
    await world.pass(1);
    assert.equal(world.sockets.length, 2);
    world.socket.onclose({ code: 1006 });
    await world.pass(250);
    assert.equal(world.sockets.length, 3);
    world.isLetIn = false;
    world.socket.onclose({ code: 1006 });
    await world.pass(10_000);
    assert.deepEqual(world.told, ["open", "lost", "refused"]);
    assert.equal(world.sockets.length, 3);

    const other = new World();
    other.connection.wake();
    other.socket.onopen();
    other.socket.onclose({ code: 4001 });
    await other.pass(10_000);
    assert.deepEqual(other.told, ["open", "lost", "refused"]);
    assert.equal(other.sockets.length, 1);
});

test("a page that becomes visible connects at once", async () => {
    const world = new World();
    world.connection.wake();
    world.socket.onopen();
    world.connection.sleep();
    world.socket.onclose({ code: 1006 });
    await world.pass(10_000);
    assert.equal(world.sockets.length, 1);
    world.connection.wake();
    assert.equal(world.sockets.length, 2);
    world.socket.onopen();
    world.connection.drop();
    await world.pass(0);
    assert.equal(world.sockets.length, 3);
});
