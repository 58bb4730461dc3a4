// Brings the page to the front when its notification is chosen. Caches nothing.
self.addEventListener("notificationclick", (event) => {
    event.notification.close();
    event.waitUntil((async () => {
        const [page] = await self.clients.matchAll({ type: "window" });
        return page ? page.focus() : self.clients.openWindow("/");
    })());
});
