// Notifications of the browser for sessions that ask for a person, while the page is open but not
// looked at.

/** Returns the sessions that have begun to ask since `known`, a map from id to time, was last kept. */
export function newlyAsking(sessions, known) {
    return sessions.filter(
        (session) => session.attentionSince !== undefined && !(known.get(session.id) >= session.attentionSince));
}

/** Returns what a notification and the list say of a session that asks for a person. */
export function attentionText(session) {
    return session.notice || "rings";
}

export class Notifier {
    #button;
    #known = new Map();
    #worker = null;

    /** The button asks for the person's permission; it is gone where a page can't notify. */
    constructor(button) {
        this.#button = button;
        button.addEventListener("click", async () => {
            await Notification.requestPermission();
            this.#prepare();
        });
        this.#prepare();
    }

    get isOn() {
        return this.#canNotify && Notification.permission === "granted";
    }

    /** Notifies of what is new, if the page is not looked at. */
    show(sessions) {
        const asking = newlyAsking(sessions, this.#known);
        for (const session of asking)
            this.#known.set(session.id, session.attentionSince);
        if (this.isOn && document.visibilityState !== "visible")
            asking.forEach((session) => this.#notify(session));
    }

    get #canNotify() {
        return isSecureContext && "Notification" in window && "serviceWorker" in navigator;
    }

    async #prepare() {
        this.#button.hidden = !this.#canNotify || Notification.permission !== "default";
        if (!this.isOn || this.#worker)
            return;
        // A phone's browser notifies by a worker alone. Its address is the only one that may be one.
        const rule = { createScriptURL: () => "/worker.js" };
        const policy = window.trustedTypes?.createPolicy("velmo-worker", rule) ?? rule;
        this.#worker = await navigator.serviceWorker.register(policy.createScriptURL("/worker.js"));
    }

    #notify(session) {
        this.#worker?.showNotification(session.name, {
            body: attentionText(session), tag: session.id, icon: "/icon-192.png", renotify: true,
        });
    }
}
