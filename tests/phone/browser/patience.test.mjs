// The page in a real browser, where time has to pass or much has to be shown.
import assert from "node:assert/strict";
import { test } from "node:test";
import { devices, until } from "./computer.mjs";
import { computer, hindrances, numberUntil, open, reaches } from "./scene.mjs";

/**
 * In the page: has the bridge told late what is shown, and notes how far the bridge was ahead,
 * whether the page has got more by then than it has shown, and whether a connection was closed.
 */
function tellLate() {
    const late = 100; // milliseconds
    let got, told;
    window.mostAhead = 0;
    window.hasMore = window.isClosed = false;
    window.WebSocket = class extends WebSocket {
        constructor(address) {
            super(address);
            this.addEventListener("close", () => (window.isClosed = true));
            this.addEventListener("message", ({ data }) => {
                if (typeof data === "string" && JSON.parse(data).event === "watching")
                    got = told = 0;
                got += data.byteLength ?? 0;
                window.mostAhead = Math.max(window.mostAhead, got - told || 0);
            });
        }

        send(data) {
            const { call, bytes } = typeof data === "string" ? JSON.parse(data) : {};
            if (call !== "shown")
                return super.send(data);
            window.hasMore ||= got > bytes;
            setTimeout(() => {
                told = bytes;
                super.send(data);
            }, late);
        }
    };
}

test("a page that was away for 20 s comes back as the session stands", async (t) => {
    const id = computer.startSession("away");
    const stayed = await open(t, undefined, devices.desktop);
    const phone = await open(t, undefined, devices.desktop);
    await stayed.openSession("away");
    await phone.openSession("away");
    await phone.shows("$");
    await phone.type(numberUntil("back"));
    await reaches(phone, 20);
    computer.network.cut();
    const tunnel = new Promise((done) => setTimeout(done, 20_000));
    await until(async () => /does not answer/.test(await phone.text("#state")), "the loss is told", 6);
    await phone.type("rm -rf important");
    await phone.sees("#unsent");
    assert.match(await phone.text("#unsent"), /^Not sent: rm -rf important$/);
    await until(() => computer.sessions().find((each) => each.id === id).viewers === 2);
    await tunnel;
    computer.network.mend();
    await until(async () => (await phone.text("#state")) === "", "the page is back");
    computer.touch("back");
    await phone.shows("\nfinished");
    await stayed.shows("\nfinished");
    assert.deepEqual(await phone.lastLines(500), await stayed.lastLines(500));
    assert.doesNotMatch(await phone.screen(), /important/);

    await computer.stopBridge();
    await until(async () => /does not answer/.test(await phone.text("#state")));
    await computer.serve();
    await until(async () => (await phone.text("#state")) === "");
    await phone.type("echo aga''in\r");
    await phone.shows("\nagain");
});

test("a flood of output is shown to its end, and to a slow phone late", async (t) => {
    computer.startSession("flood");
    const phone = await open(t);
    const slow = await open(t, undefined, devices.phone, tellLate);
    await slow.openSession("flood");
    await phone.openSession("flood");
    await phone.shows("$");
    await slow.shows("$");
    const before = computer.bridgeMemory();
    await phone.type("seq 1 2000000; echo don''e\r");
    const isWhole = async (visitor) => (await visitor.screen()).includes("2000000\ndone");
    await until(async () => {
        assert.ok(computer.bridgeMemory() - before < 8 << 20, "the bridge keeps what the slow phone has not shown");
        return (await isWhole(phone)) && (await isWhole(slow));
    }, "the end of the flood", 90);
    const ahead = await slow.page.evaluate("mostAhead");
    // The next stream is counted from its own beginning.
    await slow.page.goBack();
    await slow.openSession("flood");
    await until(() => isWhole(slow));
    assert.equal(await slow.page.evaluate("isClosed"), false);
    assert.ok(await slow.page.evaluate("hasMore"), "the page tells what it has got as shown");
    assert.ok(ahead > 192 << 10 && ahead <= 256 << 10, `${ahead} bytes ahead of what is shown`);
});

test("a switch keeps a simulated Mac awake as long as a session runs", async (t) => {
    await computer.becomeMac();
    computer.startSession("awake");
    const phone = await open(t);
    await phone.sees("#power");
    await until(async () => (await phone.text("#power")) === "80 %");
    await phone.page.tap("#power");
    await until(() => phone.page.$eval("#awake", (button) => !button.disabled));
    assert.deepEqual(await hindrances(phone), []);
    await phone.page.tap("#awake");
    await until(async () => (await phone.text("#power")) === "80 % · awake");
    assert.match(await phone.text("#power-facts"), /kept awake by velmo-phone/);
    computer.setMac("--mains", "off", "--battery", "19");
    await until(async () => /: the battery is below 20 %/.test(await phone.text("#power-why")));
    computer.setMac("--mains", "on");
    await until(async () => (await phone.text("#power")) === "19 % · awake");
    computer.endSessions();
    await until(async () => /no session runs any more/.test(await phone.text("#power-why")), "the switch turns off", 30);
    await until(async () => (await phone.text("#power")) === "19 %", "the hold has ended");
});
