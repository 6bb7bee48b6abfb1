// Lines on the globe, as exact as a screen shows them: the earth as a ball.
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
export function graticuleStep(span, wanted) {
    return steps.find((step) => span / step >= wanted) ?? steps.at(-1);
}

/** 50.5 and "N" "S" as 50°30′N; seconds only where the step needs them. */
export function degreesText(value, step, positive, negative) {
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
