// Colours of levels: maps whose brightness grows evenly, which colour-blind people can read too.
const stops = {
    viridis: '440154 482475 414487 355f8d 2a788e 21918c 22a884 44bf70 7ad151 bddf26 fde725',
    cividis: '00224e 123570 3b496c 575d6d 707173 8a8678 a59c74 c3b369 e1cc55 fee838',
    inferno: '000004 160b39 420a68 6a176e 932667 bc3754 dd513a f37819 fca50a f6d746 fcffa4',
    grey: '000000 ffffff',
};

/** The maps' names and titles. */
export const maps = [['viridis', 'Viridis'], ['cividis', 'Cividis'], ['inferno', 'Inferno'], ['grey', 'Grey']];

/** What was not measured: hatched, because some maps have greys of their own. */
const missing = [[98, 103, 109], [116, 121, 127]];
const tables = new Map();

function table(name) {
    const colours = stops[name].split(' ').map((hex) => [0, 2, 4].map((at) => parseInt(hex.slice(at, at + 2), 16)));
    return Array.from({ length: 256 }, (_, index) => {
        const place = index / 255 * (colours.length - 1);
        const before = Math.min(Math.floor(place), colours.length - 2);
        return colours[before].map((part, at) => Math.round(part + (colours[before + 1][at] - part) * (place - before)));
    });
}

/** 256 colours [red, green, blue], from the lowest level to the highest. */
export function colours(name) {
    if (!tables.has(name)) {
        tables.set(name, table(name));
    }
    return tables.get(name);
}

let tile;

/** Fills a box with what stands where nothing was measured. @param {CanvasRenderingContext2D} context */
export function fillMissing(context, x, y, width, height) {
    tile ??= hatched();
    context.fillStyle = context.createPattern(tile, 'repeat');
    context.fillRect(x, y, width, height);
}

function hatched() {
    const size = 8;
    const made = new OffscreenCanvas(size, size);
    const image = new ImageData(size, size);
    for (let at = 0; at < size * size; at++) {
        const line = (at % size + Math.floor(at / size)) % size < 2;
        image.data.set([...missing[line ? 1 : 0], 255], at * 4);
    }
    made.getContext('2d').putImageData(image, 0, 0);
    return made;
}

/** [red, green, blue] of a level on a scale. */
export function colourOf(name, level, low, high) {
    return colours(name)[Math.max(0, Math.min(255, Math.floor((level - low) / (high - low) * 256)))];
}

/** The words of pixels (red first in memory) for 256 steps. */
function words(name) {
    return Uint32Array.from(colours(name), ([red, green, blue]) => 0xff000000 | blue << 16 | green << 8 | red);
}

/** Fills pixels with the colours of levels; what was not measured is left clear. @param {Uint32Array} pixels @param {Float32Array} levels */
export function paint(pixels, levels, name, low, high) {
    const colour = words(name);
    const scale = 256 / (high - low);
    for (let at = 0; at < levels.length; at++) {
        const level = levels[at];
        if (level !== level) { // NaN
            pixels[at] = 0;
        } else {
            const index = (level - low) * scale;
            pixels[at] = colour[index < 0 ? 0 : index > 255 ? 255 : index | 0];
        }
    }
}
