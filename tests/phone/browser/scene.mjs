// What the tests of a file have in common: a browser, a computer, and people who visit it.
import axe from "axe-core";
import { after, before } from "node:test";
import { Computer, Visitor, launchBrowser, until } from "./computer.mjs";

export let browser;
export let computer;

before(async () => {
    browser = await launchBrowser();
    computer = await Computer.start();
});

after(async () => {
    await browser.close();
    await computer.close();
});

/** Opens the page for a test, by default as a device that is let in. `more` is as for `Visitor.open`. */
export async function open(t, address = computer.phone("admit").trim(), ...more) {
    const visitor = await Visitor.open(browser, address, ...more);
    t.after(() => visitor.close());
    return visitor;
}

/** Returns what hinders people with a screen reader or a keyboard alone. */
export async function hindrances(visitor) {
    await visitor.page.evaluate(axe.source);
    const { violations } = await visitor.page.evaluate("axe.run()");
    return violations.map(({ id, nodes }) => `${id}: ${nodes.map(({ html }) => html).join(" ")}`);
}

/** Returns what is typed to number lines until the file is there. The last line is then "finished". */
export function numberUntil(file) {
    return `i=0; until [ -e ${file} ]; do printf 'line %d\\n' $((i+=1)) $((i+=1)) $((i+=1)); sleep 0.02; done; echo fin''ished\r`;
}

/** Waits until the terminal shows a line of this number, or of a later one. */
export function reaches(visitor, number) {
    const lines = async () => [...(await visitor.screen()).matchAll(/line (\d+)/g)];
    return until(async () => (await lines()).some(([, each]) => each >= number), `line ${number} on the screen`);
}
