// Prints how long the page takes to show 10 MiB of coloured output, and xterm.js alone for the same.
import { writeFileSync } from "node:fs";
import { join } from "node:path";
import { Computer, Visitor, devices, launchBrowser } from "./computer.mjs";

const line = (i) => `\x1b[3${i % 8}mline ${i}\x1b[0m of \x1b[1;4${i % 8}mcoloured\x1b[0m output\r\n`;
const lines = 200_000; // 10 MiB
const rounds = 5;

/** In the page: feeds a terminal of its own from memory and returns the seconds until all is shown. */
async function fromMemory(text) {
    const { Terminal } = await import("/xterm.js");
    const place = document.getElementById("list");
    const terminal = new Terminal({ cols: 120, rows: 40, scrollback: 10000, minimumContrastRatio: 4.5, screenReaderMode: true });
    terminal.open(place);
    const bytes = new TextEncoder().encode(text);
    const start = performance.now();
    for (let at = 0; at < bytes.length; at += 65536)
        terminal.write(bytes.subarray(at, at + 65536));
    await new Promise((done) => terminal.write("", done));
    const seconds = (performance.now() - start) / 1000;
    terminal.dispose();
    return seconds;
}

/** In the page: returns the time when the mark is on the screen. */
async function whenShown(mark) {
    while (!document.querySelector("#terminal .xterm-rows").textContent.includes(mark))
        await new Promise((done) => requestAnimationFrame(done));
    return performance.now();
}

const median = (times) => times.toSorted((one, other) => one - other)[times.length >> 1];

const computer = await Computer.start();
const browser = await launchBrowser();
try {
    const text = Array.from({ length: lines }, (_, i) => line(i)).join("");
    writeFileSync(join(computer.home, "coloured"), text);
    computer.startSession("speed");
    const visitor = await Visitor.open(browser, computer.firstAddress, devices.desktop);
    await visitor.sees("#list");
    const memory = [];
    const session = [];
    for (let round = 0; round < rounds; ++round) {
        memory.push(await visitor.page.evaluate(fromMemory, text));
        await visitor.openSession("speed");
        await visitor.shows("$");
        await visitor.type(`clear; cat coloured; echo sho''wn${round}`);
        const start = await visitor.page.evaluate(() => performance.now());
        await visitor.type("\r");
        session.push((await visitor.page.evaluate(whenShown, `shown${round}`) - start) / 1000);
        await visitor.page.goBack();
        await visitor.sees("#list");
    }
    console.log(`The page shows ${(text.length / 2 ** 20).toFixed(1)} MiB of coloured output within ${median(session).toFixed(2)} s, `
        + `${(median(session) / median(memory)).toFixed(2)} times as long as xterm.js fed from memory.`);
} finally {
    await browser.close();
    await computer.close();
}
