// Fingers on the terminal: one scrolls, with momentum, or selects after a long press; two change
// the size of the letters.

const longPress = 500; // milliseconds
const slop = 10; // pixels that a finger may move while it rests
const friction = 0.95; // of the speed that is left after a frame

const distance = (touches) =>
    Math.hypot(touches[0].clientX - touches[1].clientX, touches[0].clientY - touches[1].clientY);

/**
 * `actions`: `scroll(pixels, x, y)`, `zoom(factor)` since the fingers came down, `tap()`,
 * `beginSelection(x, y)`, `extendSelection(x, y)`, `endSelection()`.
 */
export function watchFingers(element, actions) {
    let mode = null; // "rest", "scroll", "select" or "pinch"
    let start = null;
    let last = null;
    let speed = 0; // pixels a millisecond
    let press = null;
    let momentum = null;
    let startDistance = 0;

    const stopMomentum = () => cancelAnimationFrame(momentum);

    element.addEventListener("touchstart", (event) => {
        stopMomentum();
        clearTimeout(press);
        if (event.touches.length === 2) {
            mode = "pinch";
            startDistance = distance(event.touches);
            actions.beginZoom();
        } else if (event.touches.length === 1) {
            const { clientX: x, clientY: y } = event.touches[0];
            start = last = { x, y, time: event.timeStamp };
            speed = 0;
            mode = "rest";
            press = setTimeout(() => {
                mode = "select";
                actions.beginSelection(x, y);
            }, longPress);
        }
    }, { passive: true });

    element.addEventListener("touchmove", (event) => {
        event.preventDefault();
        if (mode === "pinch" && event.touches.length === 2)
            return actions.zoom(distance(event.touches) / startDistance);
        const { clientX: x, clientY: y } = event.touches[0];
        if (mode === "select")
            return actions.extendSelection(x, y);
        if (mode === "rest" && Math.hypot(x - start.x, y - start.y) > slop) {
            clearTimeout(press);
            mode = "scroll";
        }
        if (mode !== "scroll")
            return;
        const passed = Math.max(event.timeStamp - last.time, 1);
        speed = 0.6 * ((last.y - y) / passed) + 0.4 * speed;
        actions.scroll(last.y - y, x, y);
        last = { x, y, time: event.timeStamp };
    }, { passive: false });

    const glide = () => {
        let time = performance.now();
        const step = (now) => {
            actions.scroll(speed * (now - time), last.x, last.y);
            speed *= friction ** ((now - time) / 16);
            time = now;
            if (Math.abs(speed) > 0.02)
                momentum = requestAnimationFrame(step);
        };
        momentum = requestAnimationFrame(step);
    };

    element.addEventListener("touchend", (event) => {
        clearTimeout(press);
        // The browser's own mouse events would move the focus and click into the program.
        event.preventDefault();
        if (mode === "rest")
            actions.tap();
        else if (mode === "select")
            actions.endSelection();
        else if (mode === "scroll" && event.timeStamp - last.time < 50)
            glide();
        mode = null;
    }, { passive: false });

    element.addEventListener("touchcancel", () => {
        clearTimeout(press);
        mode = null;
    });
}
