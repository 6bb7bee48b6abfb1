// The map: coastlines, where the station was, its lines of bearing, and the fixes that they make.
import * as text from './text.js';
import { bearingsOf } from './bearings.js';
import { button, element, labelledChoice } from './dom.js';
import { Ground, lineOfBearing } from './mapground.js';
import { colour, onChange } from './theme.js';

const lengths = [['edge', 'to the edge'], ['5', '5 km'], ['10', '10 km'], ['20', '20 km'], ['50', '50 km'],
    ['100', '100 km'], ['500', '500 km']];
const legendRows = 12;

// The libraries that come with the page and are no modules: each is loaded when the map needs it first.
const loading = new Map();

/** Loads a script of the page's libraries once; fails with a sentence. */
function script(name) {
    if (!loading.has(name)) {
        loading.set(name, new Promise((resolve, reject) => {
            const onerror = () => reject(new Error(`The page's library ${name} could not be loaded.`));
            document.head.append(element('script', { src: `/vendor/${name}`, onload: resolve, onerror }));
        }));
    }
    return loading.get(name);
}

export function create(container, model, server) {
    new BearingMap(container, model, server);
}

class BearingMap {
    constructor(container, model, server) {
        this.container = container;
        this.model = model;
        this.bearings = bearingsOf(model, server);
        this.state = 'asleep';
        this.fitted = null; // the recording that was fitted into the map
        this.drawn = null; // the data that is drawn
        this.build();
        onChange(() => this.recolour());
        this.bearings.listen(() => this.update());
        // A map needs a place with a size, so it begins when its panel is shown.
        new ResizeObserver(() => this.resized()).observe(this.place);
    }

    build() {
        const again = () => this.state === 'awake' && this.drawData();
        this.colour = labelledChoice('Colour', [['channel', 'by channel'], ['level', 'by level']], again);
        this.length = labelledChoice('Lines', lengths, again);
        this.place = element('div', { className: 'map', ariaLabel: 'Map: arrows move it, plus and minus zoom' });
        this.legend = element('ul', { className: 'legend' });
        this.note = element('p', { className: 'note', role: 'status' });
        this.container.replaceChildren(element('div', { className: 'choices' }, this.colour.label, this.length.label,
            button('Show all', () => this.fit())), this.place, this.legend, this.note);
        this.place.addEventListener('keydown', (event) => event.stopPropagation());
    }

    resized() {
        if (this.state === 'awake') {
            this.leaflet.invalidateSize({ animate: false });
        }
        this.update();
    }

    async start() {
        this.state = 'starting';
        try {
            await Promise.all([script('leaflet.js'), script('topojson-client.js')]);
        } catch (error) {
            this.note.textContent = error.message;
            return;
        }
        this.leaflet = L.map(this.place, { preferCanvas: true, attributionControl: false, zoomSnap: 0.25, maxZoom: 20,
            fadeAnimation: false, zoomAnimation: false }).setView([30, 0], 2);
        L.control.scale({ maxWidth: 160, imperial: false }).addTo(this.leaflet);
        this.ground = new Ground(this.leaflet);
        for (const name of ['faint', 'fixes', 'track', 'strong', 'station']) {
            this[name] = L.layerGroup().addTo(this.leaflet);
        }
        this.leaflet.on('moveend', () => this.length.value === 'edge' && this.drawData());
        this.state = 'awake';
        this.update();
        await this.ground.load().catch((error) => { this.note.textContent = `The coastlines could not be loaded: ${error.message}`; });
    }

    /** Takes data and cursor over, where anybody sees it. */
    update() {
        const { recording } = this.model.get();
        if (this.place.clientWidth === 0 || !recording) {
            return;
        }
        if (this.state !== 'awake') {
            this.tell();
            if (this.state === 'asleep' && recording.hasBearings) {
                this.start();
            }
            return;
        }
        if (this.drawn !== this.bearings.data) {
            this.drawn = this.bearings.data;
            this.drawData();
            if (this.fitted !== recording.id && this.drawn.positions.length > 0) {
                this.fitted = recording.id;
                this.fit();
            }
        }
        this.drawCursor();
    }

    recolour() {
        if (this.state === 'awake') {
            this.ground.draw();
            this.drawData();
        }
    }

    /** Everything but what the cursor changes. */
    drawData() {
        this.faint.clearLayers();
        this.reach = this.length.value === 'edge' ? this.edgeDistance() : Number(this.length.value);
        const all = this.bearings.data.bearings;
        // Of very many lines each is paler, so that where they meet still shows.
        const opacity = Math.max(0.06, Math.min(0.4, 60 / all.length));
        for (const bearing of all) {
            this.addLine(this.faint, bearing, { weight: 1, opacity });
        }
        this.drawTrack(this.bearings.data.positions);
        this.drawFixes(this.bearings.data.fixes);
        this.drawLegend();
        this.drawCursor();
    }

    /** As long as what the map shows is wide, in km. */
    edgeDistance() {
        const bounds = this.leaflet.getBounds();
        return Math.min(10000, bounds.getNorthWest().distanceTo(bounds.getSouthEast()) / 1000);
    }

    addLine(layer, bearing, style) {
        if (typeof bearing.trueAzimuth !== 'number' || typeof bearing.lat !== 'number') {
            return;
        }
        L.polyline(lineOfBearing(bearing.lat, bearing.lon, bearing.trueAzimuth, this.reach),
            { color: this.colourOf(bearing), noClip: false, ...style })
            .on('click', (event) => {
                L.DomEvent.stop(event);
                this.bearings.choose(bearing);
            }).addTo(layer);
    }

    colourOf(bearing) {
        return this.colour.value === 'level' ? this.bearings.levelColour(bearing) : this.bearings.colourOf(bearing);
    }

    drawTrack(positions) {
        this.track.clearLayers();
        L.polyline(positions.map((position) => [position.lat, position.lon]), { color: colour('text'), weight: 2,
            interactive: false }).addTo(this.track);
    }

    drawFixes(fixes) {
        this.fixes.clearLayers();
        for (const fix of fixes) {
            const own = this.bearings.colourOf(fix);
            const words = element('span', {}, `${text.frequency(fix.hz)}: fix of ${fix.bearings} bearings, `
                + `${fix.lat.toFixed(5)}, ${fix.lon.toFixed(5)}`);
            L.polygon(fix.ellipse ?? [], { color: own, weight: 2, fillOpacity: 0.15, interactive: false })
                .addTo(this.fixes);
            L.circleMarker([fix.lat, fix.lon], { color: own, fillColor: own, fillOpacity: 1, radius: 4 })
                .bindTooltip(words).on('click', () => this.model.set({ hz: fix.hz })).addTo(this.fixes);
        }
    }

    /** The station at the cursor and the lines in force there. */
    drawCursor() {
        this.tell();
        this.strong.clearLayers();
        this.station.clearLayers();
        const hz = this.model.get().hz;
        for (const bearing of this.bearings.inForce()) {
            this.addLine(this.strong, bearing, { weight: bearing.hz === hz ? 4 : 2, opacity: 1 });
        }
        const position = this.bearings.positionAtCursor();
        if (position) {
            L.circleMarker([position.lat, position.lon], { radius: 6, weight: 2, color: colour('panel'),
                fillColor: colour('text'), fillOpacity: 1, interactive: false }).addTo(this.station);
        }
    }

    drawLegend() {
        const channels = this.bearings.channels;
        const rows = this.colour.value === 'level' ? [] : channels.slice(0, legendRows).map((hz) => {
            const swatch = element('span', { className: 'swatch' });
            swatch.style.background = this.bearings.colourOf({ hz });
            return element('li', {}, button([swatch, text.frequency(hz)], () => this.model.set({ hz })));
        });
        if (this.colour.value === 'level' && this.bearings.levelSpan) {
            const [lowest, highest] = this.bearings.levelSpan;
            rows.push(...[0, 0.25, 0.5, 0.75, 1].map((part) => {
                const swatch = element('span', { className: 'swatch' });
                swatch.style.background = this.bearings.levelColour({ level: lowest + part * (highest - lowest) });
                return element('li', {}, swatch, `${(lowest + part * (highest - lowest)).toFixed(0)} dB`);
            }));
        } else if (channels.length > legendRows) {
            rows.push(element('li', {}, `and ${channels.length - legendRows} more`));
        }
        this.legend.replaceChildren(...rows);
    }

    tell() {
        const { bearings, positions, leftOut } = this.bearings.data;
        const lines = bearings.filter((bearing) => typeof bearing.trueAzimuth === 'number' && typeof bearing.lat === 'number');
        const texts = [this.bearings.error];
        if (this.model.get().recording?.hasBearings === false) {
            texts.push('This recording has no bearings.');
        }
        if (leftOut > 0) {
            texts.push(`${leftOut} more bearings are left out: look at a shorter time for all of them.`);
        }
        if (bearings.length > 0 && lines.length === 0) {
            texts.push(positions.length === 0 ? 'The recording does not tell where the station was: no lines on the map.'
                : 'The recording does not tell where the antenna points: no lines on the map.');
        }
        const position = this.bearings.positionAtCursor();
        if (position) {
            texts.push(`Station: ${position.lat.toFixed(5)}, ${position.lon.toFixed(5)} (${text.moment(position.ms, this.model.get().utc)}).`);
        }
        this.note.textContent = texts.filter((sentence) => sentence).join(' ');
    }

    /** Shows the track and the fixes, or 20 km around a station that stands still. */
    fit() {
        const { positions, fixes } = this.bearings.data;
        const points = [...positions, ...fixes].map((point) => L.latLng(point.lat, point.lon));
        if (this.state !== 'awake' || points.length === 0) {
            return;
        }
        const bounds = L.latLngBounds(points);
        this.leaflet.fitBounds(bounds.extend(bounds.getCenter().toBounds(2000)).pad(0.2), { animate: false });
    }
}
