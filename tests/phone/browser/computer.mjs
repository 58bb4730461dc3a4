// A computer with a session host and the bridge, and a network between it and the phones.
import { execFileSync, spawn } from "node:child_process";
import { once } from "node:events";
import { existsSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import net from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import puppeteer from "puppeteer-core";

const programs = process.env.VELMO_PROGRAMS;

/** A network that can be cut: a port that leads to the bridge. */
class Network {
    #connections = new Set();
    #isCut = false;
    #server = net.createServer((phone) => this.#accept(phone));
    target = 0;

    async open() {
        this.#server.listen(0, "127.0.0.1");
        await once(this.#server, "listening");
        return this.#server.address().port;
    }

    /** Keeps the connections open, and lets nothing through any more, as a tunnel does. */
    cut() {
        this.#isCut = true;
        for (const { phone, bridge } of this.#connections) {
            phone.pause();
            bridge.pause();
        }
    }

    /** Mends the network; the earlier connections are gone. */
    mend() {
        this.#isCut = false;
        this.dropAll();
    }

    dropAll() {
        for (const { phone, bridge } of this.#connections) {
            phone.destroy();
            bridge.destroy();
        }
    }

    close() {
        this.dropAll();
        this.#server.close();
    }

    #accept(phone) {
        const bridge = net.connect(this.target, "127.0.0.1");
        const connection = { phone, bridge };
        this.#connections.add(connection);
        for (const [from, to] of [[phone, bridge], [bridge, phone]]) {
            from.on("error", () => to.destroy());
            from.on("close", () => {
                to.destroy();
                this.#connections.delete(connection);
            });
            from.pipe(to);
        }
        if (this.#isCut) {
            phone.unpipe();
            bridge.unpipe();
        }
    }
}

export class Computer {
    network = new Network();
    home = mkdtempSync(join(tmpdir(), "velmo-phone-"));
    #bridge = null;
    #daemon = null;

    /** Without a network the phones reach the bridge itself. */
    static async start({ hasNetwork = true } = {}) {
        const computer = new Computer();
        writeFileSync(join(computer.home, ".bash_profile"), "PS1='$ '\n");
        if (hasNetwork)
            computer.url = `http://127.0.0.1:${await computer.network.open()}`;
        await computer.serve();
        return computer;
    }

    /** Plays a Mac with a power daemon, on which the bridge is started anew. */
    async becomeMac() {
        this.mac = join(this.home, "mac");
        execFileSync(join(programs, "velmo-mac"), ["create", this.mac], { stdio: "ignore" });
        this.#daemon = spawn(join(programs, "VelmoPowerDaemonSimulated"), [this.mac], { stdio: "ignore" });
        await this.stopBridge();
        await this.serve();
    }

    setMac(...words) {
        execFileSync(join(programs, "velmo-mac"), ["set", this.mac, ...words], { stdio: "ignore" });
    }

    get environment() {
        return {
            HOME: this.home, PATH: process.env.PATH,
            SHELL: "/bin/bash", LANG: "C.UTF-8", TERM: "xterm-256color", ...(this.mac && { VELMO_MAC: this.mac }),
        };
    }

    /** Starts the bridge, and waits until it has printed its address. */
    async serve() {
        this.#bridge = spawn(join(programs, "velmo-phone"), this.url ? ["--url", this.url] : [],
            { env: this.environment, stdio: ["ignore", "pipe", "inherit"] });
        const ended = once(this.#bridge, "exit").then(() => Promise.reject(new Error("the bridge has ended")));
        ended.catch(() => {}); // of no interest later
        const [lines] = await Promise.race([once(this.#bridge.stdout.setEncoding("utf8"), "data"), ended]);
        this.firstAddress = lines.split("\n")[0];
        this.network.target = JSON.parse(this.#read("phone.json")).port;
    }

    #read(name) {
        return readFileSync(join(this.home, ".velmo/velmo-phone", name), "utf8");
    }

    async stopBridge() {
        const ended = once(this.#bridge, "exit");
        this.#bridge.kill();
        return ended;
    }

    phone(...words) {
        return execFileSync(join(programs, "velmo-phone"), words, { env: this.environment, cwd: this.home, encoding: "utf8" });
    }

    session(...words) {
        return execFileSync(join(programs, "velmo-session"), words, { env: this.environment, cwd: this.home, encoding: "utf8" });
    }

    sessions() {
        return JSON.parse(this.session("list", "--json"));
    }

    /** Returns the bytes of memory that the bridge has. */
    bridgeMemory() {
        return 1024 * /VmRSS:\s*(\d+)/.exec(readFileSync(`/proc/${this.#bridge.pid}/status`, "utf8"))[1];
    }

    /** Makes a file for a program that waits for it. */
    touch(name) {
        writeFileSync(join(this.home, name), "");
    }

    /** Starts a session with a shell on the computer and returns its id. */
    startSession(name) {
        return this.session("start", "--detached", "--name", name).trim();
    }

    endSessions() {
        for (const { id, exitCode } of this.sessions()) {
            if (exitCode === undefined)
                this.session("end", id);
        }
    }

    async close() {
        this.endSessions();
        this.network.close();
        await this.stopBridge();
        await until(() => this.sessions().every((each) => each.exitCode !== undefined));
        const lock = join(this.home, ".velmo/velmo-term/host.lock");
        if (existsSync(lock))
            process.kill(Number(readFileSync(lock, "utf8")));
        this.#daemon?.kill();
        rmSync(this.home, { recursive: true, force: true });
    }
}

/** Waits until the check returns something true, and returns that. */
export async function until(check, what = check.toString(), seconds = 20) {
    const end = Date.now() + seconds * 1000;
    for (;;) {
        const found = await check();
        if (found)
            return found;
        if (Date.now() > end)
            throw new Error(`waited in vain for: ${what}`);
        await new Promise((resolve) => setTimeout(resolve, 50));
    }
}

export const devices = {
    phone: { width: 390, height: 844, isMobile: true, hasTouch: true, deviceScaleFactor: 1 },
    landscape: { width: 844, height: 390, isMobile: true, hasTouch: true, isLandscape: true, deviceScaleFactor: 1 },
    fine: { width: 390, height: 844, isMobile: true, hasTouch: true, deviceScaleFactor: 3 },
    desktop: { width: 1280, height: 800, deviceScaleFactor: 1 },
};

export const firefoxPath = process.env.VELMO_FIREFOX;

/** `more` are options of puppeteer's. */
export function launchBrowser(browser = "chrome", more = {}) {
    if (browser === "firefox")
        return puppeteer.launch({ browser, executablePath: firefoxPath });
    return puppeteer.launch({
        executablePath: process.env.VELMO_CHROMIUM,
        // Chromium refuses its sandbox to root, as which containers run.
        args: ["--disable-gpu", ...(process.getuid() === 0 ? ["--no-sandbox"] : [])],
        ...more,
    });
}

/** A browser with cookies of its own, and the page in it. */
export class Visitor {
    /** `prepare(...facts)` runs in the page, before the page's own scripts. */
    static async open(browser, address, viewport = devices.phone, prepare = () => {}, ...facts) {
        const visitor = new Visitor();
        visitor.context = await browser.createBrowserContext();
        if (browser.process().spawnfile !== firefoxPath)
            await visitor.context.overridePermissions(new URL(address).origin, ["clipboard-read", "clipboard-write", "clipboard-sanitized-write"]);
        visitor.page = await visitor.context.newPage();
        await visitor.page.evaluateOnNewDocument(prepare, ...facts);
        visitor.complaints = [];
        visitor.page.on("console", (message) => {
            if (message.type() === "error")
                visitor.complaints.push(message.text());
        });
        visitor.page.on("pageerror", (error) => visitor.complaints.push(error.message));
        await visitor.page.setViewport(viewport);
        await visitor.page.goto(address);
        return visitor;
    }

    /** Returns what the terminal shows, one line of text a row. */
    screen() {
        return this.page.$$eval(".xterm-rows > div", (rows) => rows.map((row) => row.textContent.trimEnd()).join("\n"));
    }

    shows(text) {
        return until(async () => (await this.screen()).includes(text), `"${text}" on the screen`);
    }

    /** Scrolls up and returns the last lines that the terminal has shown, which must be a screen more than these. */
    async lastLines(count) {
        const lines = [];
        for (;;) {
            const screen = await this.screen();
            // A page up keeps the first line in sight.
            lines.unshift(...screen.split("\n").slice(0, lines.length === 0 ? undefined : -1));
            if (lines.length >= count)
                return lines.slice(-count);
            await this.page.keyboard.down("Shift");
            await this.page.keyboard.press("PageUp");
            await this.page.keyboard.up("Shift");
            await until(async () => (await this.screen()) !== screen, "the terminal scrolls");
        }
    }

    text(selector) {
        return this.page.$eval(selector, (element) => element.textContent);
    }

    isVisible(selector) {
        return this.page.$eval(selector, (element) => element.checkVisibility());
    }

    sees(selector) {
        return until(() => this.isVisible(selector), selector);
    }

    async openSession(name) {
        const row = await until(async () => {
            for (const each of await this.page.$$("#sessions .open")) {
                if (await each.$eval(".name", (element, name) => element.textContent === name, name))
                    return each;
            }
            return null;
        }, `session ${name} in the list`);
        await row.click();
        await this.sees("#watch");
    }

    type(text) {
        return this.page.keyboard.type(text);
    }

    /** Draws the page into a file, in light or dark. */
    async draw(path, scheme) {
        await this.page.emulateMediaFeatures([{ name: "prefers-color-scheme", value: scheme }]);
        await this.page.evaluate(() => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done))));
        await this.page.screenshot({ path });
    }

    async tapKey(name) {
        await this.page.tap(`#keys [aria-label="${name}"]`);
    }

    close() {
        return this.context.close();
    }
}
