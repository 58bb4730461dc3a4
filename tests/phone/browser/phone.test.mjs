// The page in a real browser, as a phone and as a desktop.
import assert from "node:assert/strict";
import { join } from "node:path";
import { test } from "node:test";
import { Computer, Visitor, devices, firefoxPath, launchBrowser, until } from "./computer.mjs";
import { computer, hindrances, numberUntil, open, reaches } from "./scene.mjs";

/** Returns where a picture is drawn; two of them stand in README. */
function picture(name) {
    const folder = { "phone-list-3x-light": "list", "phone-terminal-3x-dark": "terminal" }[name];
    return folder ? join(process.env.VELMO_IMAGES, `phone-${folder}.png`) : `${name}.png`;
}

/** In the page: gives the computer's temporary home folder the same name in every picture. */
function nameHome(home) {
    const { parse } = JSON;
    JSON.parse = (text) => parse(text.replaceAll(home, "/home/ann"));
}

/** In the page: what the computer sends arrives late, the sessions too. */
function delayMessages() {
    window.WebSocket = class extends WebSocket {
        set onmessage(take) {
            super.onmessage = (message) => setTimeout(() => take(message), 300);
        }
    };
}

test("a code lets one browser in, once", async (t) => {
    const address = computer.firstAddress;
    const phone = await open(t, address);
    await phone.sees("#list");
    assert.equal(phone.page.url(), `${computer.url}/`, "the code stays in the address");
    assert.match(computer.phone("devices"), /^Android phone, Chrome, since|^Linux, Chrome, since/);
    await phone.page.reload();
    await phone.sees("#list");

    const second = await open(t, address);
    await second.sees("#admission");
    assert.match(await second.text("#admission-reason"), /used already/);
    const stranger = await open(t, computer.url);
    await stranger.sees("#admission");
    assert.deepEqual(phone.complaints, []);
});

test("a session is started, typed into and ended", async (t) => {
    const phone = await open(t, undefined, devices.phone, delayMessages);
    await phone.sees("#start");
    assert.ok(await phone.isVisible("#no-sessions"), "the list moves the button when it comes later");
    await phone.page.tap("#start");
    await phone.page.type("[name=name]", "work");
    await phone.page.type("[name=folder]", "/etc");
    await phone.page.tap("#start-dialog .main-action");
    await until(async () => (await phone.text("#start-refusal")) === "No session may work in this folder.");
    await phone.page.$eval("[name=folder]", (field) => (field.value = "~"));
    await phone.page.tap("#start-dialog .main-action");
    await phone.sees("#watch");
    await phone.shows("$");
    await phone.type("echo $((6*7))\r");
    await phone.shows("\n42\n");
    const [session] = computer.sessions();
    assert.ok(session.cols < 60 && session.rows > 30, "the terminal fits the phone");

    await phone.page.tap("#back");
    await phone.sees("#list");
    await phone.page.waitForSelector("#sessions .danger");
    await phone.page.tap("#sessions .danger");
    await phone.page.tap("#end-dialog .danger");
    await until(async () => /ended with status/.test(await phone.text("#sessions .facts")));
    assert.deepEqual(phone.complaints, []);
});

test("the bar has the keys that a phone lacks", async (t) => {
    computer.startSession("keys");
    const phone = await open(t);
    await phone.openSession("keys");
    await phone.shows("$");
    await phone.type("sleep 1000\r");
    await phone.tapKey("Control C");
    await phone.shows("^C");
    await phone.type("echo list''ens; cat -v\r"); // the shell no longer reads what is typed now
    await phone.shows("listens\n");
    await phone.tapKey("Esc");
    await phone.tapKey("Up");
    await phone.tapKey("Ctrl");
    await phone.tapKey("Right");
    await phone.tapKey("Alt");
    await phone.type("xy");
    await phone.tapKey("Ctrl");
    await phone.tapKey("Ctrl");
    await phone.type("ab");
    await phone.tapKey("Ctrl");
    await phone.type("z");
    await phone.page.keyboard.press("Escape");
    await phone.type("\r");
    await phone.shows("^[^[[A^[[1;5C^[xy^A^Bz^[");
    await phone.tapKey("Control D");
    await phone.type("vim -u NONE -N\r");
    await phone.shows("~\n~");
    await phone.type("ihello");
    await phone.tapKey("Esc");
    await phone.type(":q!\r");
    await until(async () => !(await phone.screen()).includes("~\n~"));

    await phone.type("echo rea''dy; cat >/dev/null\r");
    await phone.shows("ready\n");
    const pipe = await phone.page.$('#keys [aria-label="Pipe"]');
    await pipe.scrollIntoView();
    const { x, y } = await pipe.clickablePoint();
    const finger = await phone.page.touchscreen.touchStart(x, y);
    await phone.shows("|||");
    await finger.move(x, y - 200); // so that it ends in no click
    await finger.end();
    await phone.type("a");
    await phone.page.evaluate(() => new Promise((done) => setTimeout(done, 200))); // the bar's timers come before
    await phone.type("z");
    await until(async () => /\|\|\|a.*z/.test(await phone.screen()));
    assert.match(await phone.screen(), /\|\|\|az/, "a key that is released is typed no more");

    await phone.tapKey("Control C");
    await phone.tapKey("Ctrl");
    computer.session("send", "keys", "printf '\\033[6n'; cat -v", "Enter");
    await until(async () => /\^\[\[\d+;\d+R/.test(await phone.screen()));
    await phone.type("a"); // the terminal's answer has left the latch as it was
    await phone.shows("R^A");
});

test("who types decides the size, and gives it back", async (t) => {
    const id = computer.startSession("size");
    const size = () => {
        const { cols, rows } = computer.sessions().find((each) => each.id === id);
        return `${cols} x ${rows}`;
    };
    const desktop = await open(t, undefined, devices.desktop);
    await desktop.openSession("size");
    await desktop.shows("$");
    const large = await until(() => size() !== "80 x 24" && size());
    const phone = await open(t);
    await phone.openSession("size");
    const small = await until(() => size() !== large && size());
    await until(() => desktop.isVisible("#give-back").then((is) => !is), "the desktop follows");
    await phone.page.setViewport(devices.landscape);
    const rotated = await until(() => size() !== small && size());
    assert.ok(parseInt(rotated) > parseInt(small));
    await phone.page.setViewport(devices.phone);
    await until(() => size() === small);
    await phone.page.tap("#give-back");
    await until(() => size() === large, "the desktop's size is back");
    await phone.type("x");
    await until(() => size() === small);
});

test("rotation in the midst of output loses no line", async (t) => {
    const id = computer.startSession("turns");
    const phone = await open(t);
    await phone.openSession("turns");
    await phone.shows("$");
    const rows = () => computer.sessions().find((each) => each.id === id).rows;
    const upright = await until(() => rows() !== 24 && rows());
    await phone.type(numberUntil("turned"));
    await reaches(phone, 20);
    for (let turn = 0; turn < 3; ++turn) {
        await phone.page.setViewport(devices.landscape);
        await until(() => rows() < upright);
        await phone.page.setViewport(devices.phone);
        await until(() => rows() === upright);
    }
    await reaches(phone, 300);
    computer.touch("turned");
    await phone.shows("\nfinished");
    const [last] = /\d+(?=\nfinished)/.exec(await phone.screen());
    const lines = (await phone.lastLines(250)).join("\n").trimEnd().split("\n");
    const numbers = Array.from({ length: lines.length - 2 }, (_, i) => `line ${last - lines.length + 3 + i}`);
    assert.deepEqual(lines, [...numbers, "finished", "$"]);
});

test("a device that may only view changes nothing, and a revoked one sees nothing", async (t) => {
    computer.startSession("seen");
    const phone = await open(t, computer.phone("admit", "--view-only").trim());
    await phone.openSession("seen");
    await phone.shows("$");
    assert.equal(await phone.isVisible("#keys"), false);
    assert.equal((await phone.screen()).split("\n").length, 24, "the page follows the session's size");
    await phone.type("echo no\r");
    await phone.page.goBack();
    await phone.sees("#list");
    assert.equal(await phone.isVisible("#start"), false);
    assert.equal(await phone.isVisible("#sessions .danger"), false);
    assert.doesNotMatch(await phone.screen(), /no/);
    const { name } = JSON.parse(computer.phone("devices", "--json")).find(({ rights }) => rights === "view");
    computer.phone("revoke", name);
    await phone.sees("#admission");
});

test("a screen reader and a keyboard alone are enough", async (t) => {
    computer.startSession("reader");
    const stranger = await open(t, computer.url);
    await stranger.sees("#admission");
    assert.deepEqual(await hindrances(stranger), []);
    for (const scheme of ["light", "dark"]) {
        const desktop = await open(t, undefined, devices.desktop);
        await desktop.page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
        await desktop.page.waitForSelector("#sessions .open");
        assert.deepEqual(await hindrances(desktop), [], scheme);
        await desktop.page.focus("#start");
        await desktop.page.keyboard.press("Enter");
        await desktop.sees("#start-dialog");
        assert.deepEqual(await hindrances(desktop), [], scheme);
        await desktop.page.keyboard.press("Escape");
        const name = await until(() => desktop.page.$$("#sessions .open").then((rows) => rows.at(-1)));
        await name.focus();
        await desktop.page.keyboard.press("Enter");
        await desktop.sees("#watch");
        assert.deepEqual(await hindrances(desktop), [], scheme);
    }
});

test("fingers scroll, zoom, select and copy, and a paste is bracketed", async (t) => {
    computer.startSession("fingers");
    const phone = await open(t);
    await phone.openSession("fingers");
    await phone.shows("$");
    await phone.type("seq 1 300\r");
    await phone.shows("\n300\n");
    const finger = await phone.page.touchscreen.touchStart(200, 300);
    for (let y = 300; y <= 700; y += 20)
        await finger.move(200, y);
    await finger.end();
    await until(async () => !(await phone.screen()).includes("\n300\n"), "it has scrolled up");

    const letters = () => phone.page.$eval(".xterm-rows", (rows) => parseFloat(getComputedStyle(rows).fontSize));
    const before = await letters();
    const [one, other] = [await phone.page.touchscreen.touchStart(150, 400), await phone.page.touchscreen.touchStart(250, 400)];
    await other.move(350, 400);
    await one.end();
    await other.end();
    await until(async () => (await letters()) > before * 1.5, "the letters are larger");

    await phone.type("clear; echo word-to-copy\r");
    await until(async () => (await phone.screen()).startsWith("word-to-copy"));
    const { x, y, width, height } = await phone.page.$eval(".xterm-rows > div", (row) => row.getBoundingClientRect().toJSON());
    const press = await phone.page.touchscreen.touchStart(x + 3, y + height / 2);
    await phone.sees("#selection");
    await press.move(x + width - 3, y + height / 2);
    await press.end();
    await phone.page.tap("#copy");
    await until(async () => (await phone.page.evaluate("navigator.clipboard.readText()")).trim() === "word-to-copy");
    assert.equal(await phone.isVisible("#selection"), false);

    await phone.page.evaluate('navigator.clipboard.writeText("pasted\\ntext")');
    await phone.type("printf '\\033[?2004hbrack''ets'; cat -v\r");
    await until(async () => (await phone.screen()).replaceAll("\n", "").endsWith("brackets"), "the large letters' line");
    await phone.tapKey("Paste");
    await phone.shows("^[[200~pasted");
    await phone.tapKey("Control C");
});

test("composition types what was meant, once", async (t) => {
    computer.startSession("compose");
    const phone = await open(t);
    await phone.openSession("compose");
    await phone.shows("$");
    await phone.type("echo list''ens; cat\r");
    await phone.shows("listens\n");
    const browserSide = await phone.page.createCDPSession();
    for (const text of ["n", "ni", "nih"])
        await browserSide.send("Input.imeSetComposition", { text, selectionStart: text.length, selectionEnd: text.length });
    await browserSide.send("Input.insertText", { text: "\u4f60" });
    await phone.type(" ");
    await browserSide.send("Input.insertText", { text: "dictated" });
    await phone.type("\r");
    await until(async () => (await phone.screen()).split("\n").filter((line) => line.replace(/ +/g, " ") === "\u4f60 dictated").length === 2,
        "the line and its echo");
});

test("what asks for a person comes first, and is drawn for README", async (t) => {
    const studio = await Computer.start();
    t.after(() => studio.close());
    const letIn = () => studio.phone("admit").trim();
    studio.startSession("notes");
    studio.startSession("agent");
    studio.session("send", "agent", "clear; printf '\\033]777;notify;agent;All 42 tests pass. Shall I commit?\\007'", "Enter");
    for (const [scale, viewport] of [["1x", devices.phone], ["3x", devices.fine]]) {
        const phone = await open(t, letIn(), viewport, nameHome, studio.home);
        await until(async () => (await phone.text("#sessions")).startsWith("agent"), "the agent comes first");
        assert.match(await phone.text("#sessions .attention-text"), /All 42 tests pass. Shall I commit\?/);
        for (const scheme of ["light", "dark"])
            await phone.draw(picture(`phone-list-${scale}-${scheme}`), scheme);
    }
    const phone = await open(t, letIn(), devices.fine);
    await phone.openSession("agent");
    await phone.type("clear; for i in 1 2 3 4 5 6; do printf '\\033[1;3%dm%s\\033[0m compiled\\n' $i unit$i.cpp; done\r");
    await phone.shows("unit6.cpp compiled\n");
    for (const scheme of ["light", "dark"])
        await phone.draw(picture(`phone-terminal-3x-${scheme}`), scheme);
    await phone.page.goBack();
    await phone.sees("#list");
    await until(async () => !(await phone.isVisible("#sessions .attention-text")), "a person has looked");
});

test("Firefox goes the whole way", { skip: !firefoxPath && "firefox-esr is not installed" }, async (t) => {
    const firefox = await launchBrowser("firefox");
    t.after(() => firefox.close());
    computer.startSession("fox");
    const visitor = await Visitor.open(firefox, computer.phone("admit").trim(), devices.desktop);
    await visitor.openSession("fox");
    await visitor.shows("$");
    await visitor.type("echo $((6*7))\r");
    await visitor.shows("\n42\n");
    await visitor.page.click('#keys [aria-label="Control D"]');
    await until(async () => /Ended with status 0/.test(await visitor.text("#state")));
    await visitor.page.click("#back");
    await visitor.sees("#list");
    assert.deepEqual(visitor.complaints, []);
    assert.match(computer.phone("devices"), /Firefox/);
});
