// Wheel, pointer and fingers on the waterfall.
import * as model from './model.js';
import * as navigate from './navigate.js';
import * as axes from './axes.js';
import * as overlay from './overlay.js';

const clickSlack = 4;

/** Listens on the surface over the waterfall. @param {HTMLElement} surface @param {() => object} box the plot in CSS pixels */
export function create(surface, box) {
    const hands = new Map();
    let drag = null;

    const place = (event) => {
        const rectangle = surface.getBoundingClientRect();
        return { x: event.clientX - rectangle.left, y: event.clientY - rectangle.top };
    };
    surface.addEventListener('wheel', (event) => wheel(event, place(event), box()), { passive: false });
    surface.addEventListener('dblclick', (event) => {
        const at = meaning(place(event), box());
        zoomBoth(0.5, at);
    });
    surface.addEventListener('pointerdown', (event) => {
        if (event.button !== 0) {
            return;
        }
        surface.setPointerCapture(event.pointerId);
        hands.set(event.pointerId, place(event));
        drag = { ...snapshot(hands), start: place(event), select: event.shiftKey, moved: hands.size > 1 };
    });
    surface.addEventListener('pointermove', (event) => {
        const at = place(event);
        if (hands.has(event.pointerId)) {
            hands.set(event.pointerId, at);
            drag = moved(drag, hands, at, box());
        } else {
            hover(at, box());
        }
    });
    const up = (event) => {
        if (!hands.delete(event.pointerId)) {
            return;
        }
        finish(drag, hands, place(event), box(), event.type === 'pointercancel');
        drag = hands.size > 0 ? { ...snapshot(hands), start: drag.start, select: false, moved: true } : null;
    };
    surface.addEventListener('pointerup', up);
    surface.addEventListener('pointercancel', up);
    surface.addEventListener('pointerleave', () => overlay.point(null));
}

/** Moment and frequency at a place. */
function meaning({ x, y }, box) {
    const { low, high } = model.get();
    return { ms: axes.xToTime(x), hz: high - (y - box.y) / box.height * (high - low) };
}

function hover(at, box) {
    const inside = at.x >= box.x && at.x <= box.x + box.width && at.y >= box.y && at.y <= box.y + box.height;
    overlay.point(inside ? meaning(at, box) : null);
}

function zoomBoth(factor, { ms, hz }) {
    navigate.zoomTime(factor, ms);
    navigate.zoomFrequency(factor, hz);
}

/** Time; with shift or over the frequencies frequency; with ctrl, as pinching does, both. Sideways: moves. */
function wheel(event, at, box) {
    event.preventDefault();
    const unit = event.deltaMode === 0 ? 1 : event.deltaMode === 1 ? 24 : 400;
    const [dx, dy] = event.shiftKey && event.deltaY === 0 ? [0, event.deltaX] : [event.deltaX, event.deltaY];
    const { ms, hz } = meaning(at, box);
    if (!event.shiftKey && !event.ctrlKey && Math.abs(dx) > Math.abs(dy)) {
        navigate.pan(dx * unit / box.width);
        return;
    }
    const factor = Math.exp(Math.max(-240, Math.min(240, dy * unit)) * (event.ctrlKey ? 0.006 : 0.0022));
    if (event.ctrlKey) {
        zoomBoth(factor, { ms, hz });
    } else if (event.shiftKey || at.x < box.x) {
        navigate.zoomFrequency(factor, hz);
    } else {
        navigate.zoomTime(factor, ms);
    }
}

/** What a drag begins with: the view, and where the fingers are. */
function snapshot(hands) {
    const { from, to, low, high } = model.get();
    return { view: { from, to, low, high }, hands: [...hands.values()] };
}

function moved(drag, hands, at, box) {
    const far = Math.hypot(at.x - drag.start.x, at.y - drag.start.y) > clickSlack;
    const next = { ...drag, moved: drag.moved || far };
    if (!next.moved) {
        return next;
    }
    if (hands.size >= 2) {
        pinch(next, [...hands.values()], box);
    } else if (next.select) {
        overlay.select(corners(next.start, at, box));
    } else {
        shift(next, at, box);
    }
    return next;
}

function corners(one, other, box) {
    const x = (value) => Math.max(box.x, Math.min(box.x + box.width, value));
    const y = (value) => Math.max(box.y, Math.min(box.y + box.height, value));
    const [x1, x2] = [x(one.x), x(other.x)].sort((a, b) => a - b);
    const [y1, y2] = [y(one.y), y(other.y)].sort((a, b) => a - b);
    return { x1, y1, x2, y2 };
}

function shift({ view, hands }, at, box) {
    const ms = (hands[0].x - at.x) / box.width * (view.to - view.from);
    const hz = (at.y - hands[0].y) / box.height * (view.high - view.low);
    navigate.show({ from: view.from + ms, to: view.to + ms, low: view.low + hz, high: view.high + hz });
}

/** Two fingers hold what was under them: along each axis, unless they are close together along it. */
function pinch({ view, hands }, now, box) {
    const along = (axis, size, first, last, sign) => {
        const [a, b] = [hands[0][axis], hands[1][axis]];
        const [c, d] = [now[0][axis], now[1][axis]];
        const origin = axis === 'x' ? box.x : box.y;
        const factor = Math.abs(b - a) > 30 && Math.abs(d - c) > 15 ? Math.abs(b - a) / Math.abs(d - c) : 1;
        const span = (last - first) * factor;
        const middleWas = ((a + b) / 2 - origin) / size;
        const middleIs = ((c + d) / 2 - origin) / size;
        const held = sign > 0 ? first + middleWas * (last - first) : last - middleWas * (last - first);
        const begin = sign > 0 ? held - middleIs * span : held - (1 - middleIs) * span;
        return [begin, begin + span];
    };
    const [from, to] = along('x', box.width, view.from, view.to, 1);
    const [low, high] = along('y', box.height, view.low, view.high, -1);
    navigate.show({ from, to, low, high });
}

function finish(drag, hands, at, box, cancelled) {
    overlay.select(null);
    if (cancelled || hands.size > 0) {
        return;
    }
    if (drag.select && drag.moved) {
        zoomTo(corners(drag.start, at, box), box);
    } else if (!drag.moved && at.x >= box.x && at.x <= box.x + box.width && at.y >= box.y && at.y <= box.y + box.height) {
        const { ms, hz } = meaning(at, box);
        model.set({ at: ms, hz: model.get().type === null ? null : hz });
    }
}

/** Zooms to a box; one that is flat in a direction keeps this direction as it is. */
function zoomTo({ x1, y1, x2, y2 }, box) {
    const first = meaning({ x: x1, y: y2 }, box);
    const last = meaning({ x: x2, y: y1 }, box);
    navigate.show({
        ...(x2 - x1 > clickSlack ? { from: first.ms, to: last.ms } : {}),
        ...(y2 - y1 > clickSlack ? { low: first.hz, high: last.hz } : {}),
    }, 'jump');
}
