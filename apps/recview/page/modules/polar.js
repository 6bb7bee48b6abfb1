// The bearings of the visible time span around the station: direction is the azimuth, distance the level or the quality.
import { line } from './axes.js';
import { bearingsOf } from './bearings.js';
import { element, labelledChoice } from './dom.js';
import * as text from './text.js';
import { colour, onChange } from './theme.js';

const reach = 12; // pixels around a point that still mean it

export function create(container, model, server) {
    new Polar(container, model, bearingsOf(model, server));
}

class Polar {
    constructor(container, model, bearings) {
        this.model = model;
        this.bearings = bearings;
        this.points = [];
        const redraw = () => this.draw();
        this.azimuth = labelledChoice('Azimuth', [['true', 'from true north'], ['relative', 'from the antenna']], redraw);
        this.radius = labelledChoice('Distance', [['level', 'level'], ['quality', 'quality']], redraw);
        this.canvas = element('canvas', { tabIndex: 0, className: 'polar', role: 'img' });
        this.note = element('p', { className: 'note' });
        container.replaceChildren(element('div', { className: 'choices' }, this.azimuth.label, this.radius.label),
            this.canvas, this.note);
        this.canvas.addEventListener('click', (event) => this.click(event));
        this.canvas.addEventListener('keydown', (event) => this.key(event));
        new ResizeObserver(redraw).observe(this.canvas);
        onChange(redraw);
        bearings.listen(redraw);
    }

    /** The bearings that have an azimuth as it is asked for; a station without a heading has no true ones. */
    shown() {
        const name = this.azimuth.value === 'true' ? 'trueAzimuth' : 'azimuth';
        return this.bearings.data.bearings.filter((bearing) => typeof bearing[name] === 'number')
            .map((bearing) => ({ bearing, degrees: bearing[name], value: bearing[this.radius.value] }));
    }

    /** What the middle and the edge stand for. */
    limits(shown) {
        if (this.radius.value === 'quality') {
            return [0, 100];
        }
        const levels = shown.map((point) => point.value).filter((value) => typeof value === 'number');
        if (levels.length === 0) {
            return [-120, 0];
        }
        const lowest = levels.reduce((a, b) => Math.min(a, b));
        const highest = levels.reduce((a, b) => Math.max(a, b));
        return [Math.floor(lowest / 10) * 10 - 10, Math.ceil(highest / 10) * 10];
    }

    draw() {
        const width = this.canvas.clientWidth;
        if (width < 40) {
            return;
        }
        const scale = window.devicePixelRatio || 1;
        const height = Math.min(width, 420);
        this.canvas.style.height = `${height}px`;
        this.canvas.width = Math.round(width * scale);
        this.canvas.height = Math.round(height * scale);
        const context = this.canvas.getContext('2d');
        context.setTransform(scale, 0, 0, scale, 0, 0);
        const shown = this.shown();
        const face = { x: width / 2, y: height / 2, radius: Math.min(width, height) / 2 - 24, limits: this.limits(shown) };
        this.drawFace(context, face);
        this.drawBearings(context, face, shown);
        this.tell(shown);
    }

    drawFace(context, face) {
        context.strokeStyle = colour('line');
        context.fillStyle = colour('dim');
        context.font = '11px sans-serif';
        context.textAlign = 'center';
        context.textBaseline = 'middle';
        context.lineWidth = 1;
        for (let degrees = 0; degrees < 360; degrees += 30) {
            const [x, y] = onFace(face, degrees, 1);
            const [textX, textY] = onFace(face, degrees, 1 + 13 / face.radius);
            line(context, face.x, face.y, x, y);
            context.fillText(String(degrees), textX, textY);
        }
        const unit = this.radius.value === 'level' ? ' dB' : '';
        for (let ring = 1; ring <= 4; ++ring) {
            context.beginPath();
            context.arc(face.x, face.y, face.radius * ring / 4, 0, 2 * Math.PI);
            context.stroke();
            const value = face.limits[0] + (face.limits[1] - face.limits[0]) * ring / 4;
            context.fillText(`${Number(value.toFixed(1))}${ring === 4 ? unit : ''}`, face.x + face.radius * ring / 4 - 14,
                face.y - 7);
        }
    }

    drawBearings(context, face, shown) {
        const strong = this.bearings.inForce();
        this.points = shown.map(({ bearing, degrees, value }) => {
            const part = typeof value === 'number' ? (value - face.limits[0]) / (face.limits[1] - face.limits[0]) : 1;
            const [x, y] = onFace(face, degrees, Math.max(0, Math.min(1, part)));
            return { bearing, x, y };
        });
        context.globalAlpha = 0.35;
        for (const { bearing, x, y } of this.points) {
            context.fillStyle = this.bearings.colourOf(bearing);
            context.fillRect(x - 1.5, y - 1.5, 3, 3);
        }
        context.globalAlpha = 1;
        context.lineWidth = 2;
        for (const { bearing, x, y } of this.points.filter((point) => strong.has(point.bearing))) {
            context.strokeStyle = context.fillStyle = this.bearings.colourOf(bearing);
            line(context, face.x, face.y, x, y);
            context.beginPath();
            context.arc(x, y, bearing.hz === this.model.get().hz ? 6 : 4, 0, 2 * Math.PI);
            context.fill();
        }
    }

    /** The same in words, for those who do not see the picture. */
    tell(shown) {
        const all = this.bearings.data.bearings.length;
        const strong = [...this.bearings.inForce()].sort((a, b) => a.hz - b.hz);
        const name = this.azimuth.value === 'true' ? 'trueAzimuth' : 'azimuth';
        const words = strong.filter((bearing) => typeof bearing[name] === 'number').slice(0, 8)
            .map((bearing) => `${text.frequency(bearing.hz)} from ${bearing[name].toFixed(1)}°`);
        this.canvas.setAttribute('aria-label',
            `${shown.length} bearings. At the cursor: ${words.join(', ') || 'none'}. Left and right go through them.`);
        this.note.textContent = this.bearings.error || (all > 0 && shown.length === 0
            ? 'The recording does not tell where the antenna points, so there are no azimuths from true north.' : '');
    }

    click(event) {
        const box = this.canvas.getBoundingClientRect();
        const at = { x: event.clientX - box.left, y: event.clientY - box.top };
        let nearest = null;
        let least = reach;
        for (const point of this.points) {
            const distance = Math.hypot(point.x - at.x, point.y - at.y);
            // Of those at one place the one in force is meant.
            if (distance < least || (distance === least && this.bearings.inForce().has(point.bearing))) {
                least = distance;
                nearest = point.bearing;
            }
        }
        if (nearest !== null) {
            this.bearings.choose(nearest);
        }
    }

    key(event) {
        const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
        if (step === undefined || event.ctrlKey || event.altKey || event.metaKey) {
            return;
        }
        event.preventDefault();
        event.stopPropagation();
        const list = this.shown().map((point) => point.bearing).sort((a, b) => a.ms - b.ms || a.hz - b.hz);
        const { at, hz } = this.model.get();
        const after = list.findIndex((bearing) => bearing.ms > at || (bearing.ms === at && bearing.hz >= (hz ?? 0)));
        const here = after < 0 ? list.length : after;
        const exact = list[here]?.ms === at && list[here]?.hz === hz;
        const next = list[step < 0 ? here - 1 : here + (exact ? 1 : 0)];
        if (next) {
            this.bearings.choose(next);
        }
    }
}

/** Degrees clockwise from the top. */
function onFace(face, degrees, part) {
    const angle = degrees * Math.PI / 180;
    return [face.x + Math.sin(angle) * part * face.radius, face.y - Math.cos(angle) * part * face.radius];
}
