// What lies under the bearings on the map: coastlines, which come with the page, and a graticule. No tiles, no server.
// And lines on the globe, as exact as a screen shows them: the earth as a ball.
import { element } from './dom.js';
import { colour } from './theme.js';

const radius = 6371.0088; // km
const toRadians = Math.PI / 180;

/** The point in a direction (degrees from true north) and distance (km); longitudes go on past 180. */
function pointFrom(lat, lon, degrees, distance) {
    const angle = distance / radius;
    const from = lat * toRadians;
    const turn = degrees * toRadians;
    const sine = Math.sin(from) * Math.cos(angle) + Math.cos(from) * Math.sin(angle) * Math.cos(turn);
    const aside = Math.atan2(Math.sin(turn) * Math.sin(angle) * Math.cos(from), Math.cos(angle) - Math.sin(from) * sine);
    return [Math.asin(Math.max(-1, Math.min(1, sine))) / toRadians, lon + aside / toRadians];
}

/** A line of bearing as points that follow the great circle. */
export function lineOfBearing(lat, lon, degrees, distance) {
    const pieces = distance > 200 ? 16 : 2;
    const line = [[lat, lon]];
    for (let piece = 1; piece <= pieces; ++piece) {
        line.push(pointFrom(lat, lon, degrees, distance * piece / pieces));
    }
    return line;
}

// Degrees, then minutes and seconds of them.
const steps = [30, 20, 10, 5, 2, 1, 1 / 2, 1 / 3, 1 / 6, 1 / 12, 1 / 30, 1 / 60, 1 / 120, 1 / 180, 1 / 360, 1 / 720,
    1 / 1800, 1 / 3600];

/** The distance of a graticule's lines in degrees, so that a span has about as many as wanted. */
function graticuleStep(span, wanted) {
    return steps.find((step) => span / step >= wanted) ?? steps.at(-1);
}

/** 50.5 and "N" "S" as 50°30′N; seconds only where the step needs them. */
function degreesText(value, step, positive, negative) {
    const size = Math.round(Math.abs(value) * 3600);
    const parts = [`${Math.floor(size / 3600)}°`];
    if (step < 1) {
        parts.push(`${String(Math.floor(size / 60) % 60).padStart(2, '0')}′`);
    }
    if (step < 1 / 60) {
        parts.push(`${String(size % 60).padStart(2, '0')}″`);
    }
    return parts.join('') + (size === 0 ? '' : value > 0 ? positive : negative);
}

export class Ground {
    constructor(map) {
        this.map = map;
        // A pane of its own keeps it below all that is clicked, however late it comes.
        const pane = map.createPane('ground');
        pane.style.zIndex = 250;
        pane.style.pointerEvents = 'none';
        this.style = { pane: 'ground', renderer: L.canvas({ pane: 'ground' }), interactive: false, weight: 1 };
        this.land = L.layerGroup().addTo(map);
        this.lines = L.layerGroup().addTo(map);
        this.shape = null;
        map.on('moveend', () => this.drawGraticule());
        this.draw();
    }

    /** Reads the land of the earth; throws an Error with a sentence. */
    async load() {
        const answer = await fetch('/vendor/land-110m.json');
        if (!answer.ok) {
            throw new Error(`the server answered ${answer.status}.`);
        }
        const topology = await answer.json();
        const land = topojson.feature(topology, topology.objects.land);
        this.shape = land.features.flatMap(({ geometry }) => geometry.coordinates.flatMap(flat));
        this.draw();
    }

    /** With the colours of now. */
    draw() {
        this.land.clearLayers();
        if (this.shape) {
            L.polygon(this.shape, { ...this.style, color: colour('dim'), fillColor: colour('land'), fillOpacity: 1 }).addTo(this.land);
        }
        this.drawGraticule();
    }

    /** Lines of latitude and longitude that suit what is seen, each with its degrees at the edge. */
    drawGraticule() {
        this.lines.clearLayers();
        const bounds = this.map.getBounds();
        const [south, north] = [Math.max(-85, bounds.getSouth()), Math.min(85, bounds.getNorth())];
        const [west, east] = [bounds.getWest(), bounds.getEast()];
        const step = graticuleStep(Math.min(east - west, 360), Math.max(2, this.map.getSize().x / 130));
        for (let count = Math.ceil(west / step); count * step <= east; ++count) {
            const lon = count * step;
            const round = ((lon + 180) % 360 + 360) % 360 - 180;
            this.addLine([[south, lon], [north, lon]], degreesText(round, step, 'E', 'W'), [south, lon]);
        }
        for (let count = Math.ceil(south / step); count * step <= north; ++count) {
            const lat = count * step;
            this.addLine([[lat, west], [lat, east]], degreesText(lat, step, 'N', 'S'), [lat, west]);
        }
    }

    addLine(points, words, place) {
        L.polyline(points, { ...this.style, color: colour('line') }).addTo(this.lines);
        L.marker(place, { pane: 'ground', interactive: false, keyboard: false, icon: L.divIcon({ className: 'degrees',
            iconSize: null, html: element('span', {}, words) }) }).addTo(this.lines);
    }
}

/** A polygon of the globe as one or more of the map: what crosses 180 degrees goes on beyond, there and on the other side. */
function flat(polygon) {
    const rings = polygon.map((ring) => goingOn(ring));
    const longitudes = rings[0].map(([, lon]) => lon);
    const shifts = [0];
    if (longitudes.some((lon) => lon > 180)) {
        shifts.push(-360);
    }
    if (longitudes.some((lon) => lon < -180)) {
        shifts.push(360);
    }
    return shifts.map((shift) => rings.map((ring) => ring.map(([lat, lon]) => [lat, lon + shift])));
}

/** A ring without leaps of longitude; one around the south pole is closed there. */
function goingOn(ring) {
    let turns = 0;
    const points = ring.map(([lon, lat], at) => {
        const leap = at === 0 ? 0 : lon - ring[at - 1][0];
        turns += leap > 180 ? -360 : leap < -180 ? 360 : 0;
        return [lat, lon + turns];
    });
    if (turns !== 0) {
        points.push([-89, points.at(-1)[1]], [-89, points[0][1]]);
    }
    return points;
}
