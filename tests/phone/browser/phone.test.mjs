// The page in a real browser, as a phone and as a desktop.
import assert from "node:assert/strict";
import { after, afterEach, before, test } from "node:test";
import { Computer, Visitor, devices, launchBrowser, until } from "./computer.mjs";

let browser;
let computer;
let visitors = [];

const open = async (address = computer.phone("admit").trim(), viewport = devices.phone) => {
    const visitor = await Visitor.open(browser, address, viewport);
    visitors.push(visitor);
    return visitor;
};

before(async () => {
    browser = await launchBrowser();
    computer = await Computer.start();
});

afterEach(async () => {
    for (const visitor of visitors)
        await visitor.close();
    visitors = [];
    computer.phone("revoke", "--all");
});

after(async () => {
    await browser.close();
    await computer.close();
});

test("a code lets one browser in, once", async () => {
    const address = computer.firstAddress;
    const phone = await open(address);
    await phone.sees("#list");
    assert.equal(phone.page.url(), `${computer.url}/`, "the code stays in the address");
    assert.match(computer.phone("devices"), /^Android phone, Chrome, since|^Linux, Chrome, since/);
    await phone.page.reload();
    await phone.sees("#list");

    const second = await open(address);
    await second.sees("#admission");
    assert.match(await second.text("#admission-reason"), /used already/);
    const stranger = await open(computer.url);
    await stranger.sees("#admission");
    assert.deepEqual(phone.complaints, []);
});

test("a session is started, typed into and ended", async () => {
    const phone = await open();
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

test("the bar has the keys that a phone lacks", async () => {
    computer.startSession("keys");
    const phone = await open();
    await phone.openSession("keys");
    await phone.shows("$");
    await phone.type("sleep 1000\r");
    await phone.tapKey("Control C");
    await phone.shows("^C");
    await phone.type("cat -v\r");
    await phone.tapKey("Escape");
    await phone.tapKey("Up");
    await phone.tapKey("Control");
    await phone.tapKey("Right");
    await phone.tapKey("Alt");
    await phone.type("xy");
    await phone.tapKey("Control");
    await phone.tapKey("Control");
    await phone.type("ab");
    await phone.tapKey("Control");
    await phone.type("z");
    await phone.page.keyboard.press("Escape");
    await phone.type("\r");
    await phone.shows("^[^[[A^[[1;5C^[xy^A^Bz^[");
    await phone.tapKey("Control D");
    await phone.type("vim -u NONE -N\r");
    await phone.shows("~\n~");
    await phone.type("ihello");
    await phone.tapKey("Escape");
    await phone.type(":q!\r");
    await until(async () => !(await phone.screen()).includes("~\n~"));
});

test("a flood of output is shown to its end", async () => {
    computer.startSession("flood");
    const phone = await open();
    await phone.openSession("flood");
    await phone.shows("$");
    await phone.type("seq 1 2000000; echo don''e\r");
    await until(async () => (await phone.screen()).includes("2000000\ndone"), "the end of the flood", 60);
});

test("a page comes back as the session stands", async () => {
    const id = computer.startSession("away");
    const stayed = await open(undefined, devices.desktop);
    const phone = await open(undefined, devices.desktop);
    await stayed.openSession("away");
    await phone.openSession("away");
    await phone.shows("$");
    await phone.type("for i in $(seq 1 200); do echo line $i; sleep 0.02; done; echo fin''ished\r");
    await phone.shows("line 20");
    computer.network.cut();
    await until(async () => /does not answer/.test(await phone.text("#state")), "the loss is told", 6);
    await phone.type("rm -rf important");
    await phone.sees("#unsent");
    assert.match(await phone.text("#unsent"), /^Not sent: rm -rf important$/);
    await until(() => computer.sessions().find((each) => each.id === id).viewers === 2);
    computer.network.mend();
    await phone.shows("\nfinished");
    await stayed.shows("\nfinished");
    assert.equal(await phone.text("#state"), "");
    assert.equal(await phone.screen(), await stayed.screen());
    assert.doesNotMatch(await phone.screen(), /important/);

    await computer.stopBridge();
    await until(async () => /does not answer/.test(await phone.text("#state")));
    await computer.serve();
    await until(async () => (await phone.text("#state")) === "");
    await phone.type("echo aga''in\r");
    await phone.shows("\nagain");
});

test("who types decides the size, and gives it back", async () => {
    const id = computer.startSession("size");
    const size = () => {
        const { cols, rows } = computer.sessions().find((each) => each.id === id);
        return `${cols} x ${rows}`;
    };
    const desktop = await open(undefined, devices.desktop);
    await desktop.openSession("size");
    await desktop.shows("$");
    const large = await until(() => size() !== "80 x 24" && size());
    const phone = await open();
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

test("a device that may only view changes nothing, and a revoked one sees nothing", async () => {
    computer.startSession("seen");
    const phone = await open(computer.phone("admit", "--view-only").trim());
    await phone.openSession("seen");
    await phone.shows("$");
    assert.equal(await phone.isVisible("#keys"), false);
    await phone.type("echo no\r");
    await phone.page.goBack();
    await phone.sees("#list");
    assert.equal(await phone.isVisible("#start"), false);
    assert.equal(await phone.isVisible("#sessions .danger"), false);
    assert.doesNotMatch(await phone.screen(), /no/);
    const [{ name }] = JSON.parse(computer.phone("devices", "--json"));
    computer.phone("revoke", name);
    await phone.sees("#admission");
});
