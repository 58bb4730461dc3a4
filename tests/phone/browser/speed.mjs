// Prints how long the page takes to show 10 MiB of coloured output, and xterm.js alone for the same. The
// browser speaks with the bridge itself, and puppeteer does not look at the network: it would have a copy
// of every message.
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { Computer, Visitor, devices, launchBrowser } from "./computer.mjs";

const line = (i) => `\x1b[3${i % 8}mline ${i}\x1b[0m of \x1b[1;4${i % 8}mcoloured\x1b[0m output\r\n`;
const lines = 200_000; // 10 MiB
const rounds = 7;

/** In the page: has `whenShown` promise the time when the terminal in the place shows a mark. */
function prepare() {
    window.whenShown = (place, mark) => new Promise((done) => {
        const rows = document.querySelector(`${place} .xterm-rows`);
        new MutationObserver((_, observer) => {
            if (!rows.textContent.includes(mark))
                return;
            observer.disconnect();
            done(performance.now());
        }).observe(rows, { childList: true, subtree: true, characterData: true });
    });
}

/** In the page: feeds a terminal of its own from memory and returns the seconds until all is shown. */
async function fromMemory(text, size) {
    const { Terminal } = await import("/xterm.js");
    const { optionsFor, usualLetters } = await import("/terminal.js");
    const terminal = new Terminal({ ...optionsFor(usualLetters, false), ...size });
    terminal.open(document.getElementById("list"));
    const bytes = new TextEncoder().encode(text);
    const shown = whenShown("#list", "whole");
    const start = performance.now();
    for (let at = 0; at < bytes.length; at += 65536)
        terminal.write(bytes.subarray(at, at + 65536));
    terminal.write("whole");
    const seconds = (await shown - start) / 1000;
    terminal.dispose();
    return seconds;
}

/** In the page: returns the time, and keeps the promise of when the mark is shown. */
function begin(mark) {
    window.shown = whenShown("#terminal", mark);
    return performance.now();
}

const median = (times) => times.toSorted((one, other) => one - other)[times.length >> 1];

const computer = await Computer.start({ hasNetwork: false });
const browser = await launchBrowser("chrome", { networkEnabled: false });
try {
    const text = Array.from({ length: lines }, (_, i) => line(i)).join("");
    writeFileSync(join(computer.home, "coloured"), text);
    const id = computer.startSession("speed");
    const visitor = await Visitor.open(browser, computer.firstAddress, devices.desktop, prepare);
    await visitor.sees("#list");
    const memory = [];
    const session = [];
    for (let round = 0; round < rounds; ++round) {
        await visitor.openSession("speed");
        await visitor.shows("$");
        await visitor.type(`clear; cat coloured; echo sho''wn${round}`);
        const start = await visitor.page.evaluate(begin, `shown${round}`);
        await visitor.type("\r");
        session.push((await visitor.page.evaluate(() => shown) - start) / 1000);
        await visitor.page.goBack();
        await visitor.sees("#list");
        const { cols, rows } = computer.sessions().find((each) => each.id === id);
        memory.push(await visitor.page.evaluate(fromMemory, text, { cols, rows }));
    }
    console.log(`The page shows ${(text.length / 2 ** 20).toFixed(1)} MiB of coloured output within ${median(session).toFixed(2)} s, `
        + `${(median(session) / median(memory)).toFixed(2)} times as long as xterm.js fed from memory.`);
} finally {
    await browser.close();
    await computer.close();
}
